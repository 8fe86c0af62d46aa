// kelpd/gateway/session.h - one connection, from its handshake to its end.
//
// It is always at one of the phases below; every phase but kHandling has a deadline. Its thread
// keeps it until it is closed.
//
// one thread: its IoThread's, except TakeAnswer.
#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <memory>
#include <string>

#include "kelpd/gateway/io_thread.h"
#include "kelpd/gateway/service.h"
#include "kelpd/http/reader.h"

namespace kelpd {

class Session final : public Asker, public std::enable_shared_from_this<Session> {
  public:
    using Socket = boost::asio::generic::stream_protocol::socket;

    /// A connection that was let in by `verdict`, kServe or kAnswerBusy. Nothing happens before
    /// Start.
    Session(IoThread& thread, Service& service, Socket socket, std::string peer,
            Admission::Ticket ticket, Admission::Verdict verdict);

    void Start();
    /// Ends now if no request is under way, else when it is answered.
    void Stop();
    /// Ends now, whatever is under way.
    void Cut();
    void CheckDeadline(IoThread::Clock::time_point now);
    void TakeAnswer(Response response) override;

  private:
    enum class Phase {
        kHandshake,
        kIdle,      // between requests
        kHeader,    // some of a request's header is there
        kBody,      // the header is there
        kContinue,  // telling the client to send its body
        kHandling,  // an endpoint works on it
        kWriting,   // the answer
        kLingering  // waiting for the peer's end, so that it gets the answer before ours
    };
    using Clock = IoThread::Clock;

    void Enter(Phase phase);
    void Pump();
    Io Step();
    Io StepReading();
    Io StepWriting();
    Io StepLingering();
    Io StepHandshake();
    void Wait(Io io);
    void Consider(RequestReader::State state);
    void Dispatch();
    void Refuse(int status, std::string_view reason);
    void Answer(const Response& response, bool keep_alive);
    void Written();
    void Expire();
    void EndIfStopping();
    void EndQuietly();
    void Close();
    std::string Where() const;

    IoThread& thread_;
    Service& service_;
    Socket socket_;
    const std::string peer_;
    Admission::Ticket ticket_;
    const bool busy_;
    std::unique_ptr<Channel> channel_;
    RequestReader reader_;
    std::string client_;
    Phase phase_ = Phase::kHandshake;
    Clock::time_point deadline_;
    Clock::time_point complete_at_;  // when the request was there
    std::string out_;
    std::size_t written_ = 0;
    std::size_t discarded_ = 0;
    std::size_t body_octets_ = 0;
    int status_ = 0;
    unsigned wait_number_ = 0;
    bool ready_ = true;  // the socket may have more than the channel has taken
    bool ended_writing_ = false;
    bool keep_alive_ = false;
    bool pumping_ = false;
    bool closed_ = false;
};

}  // namespace kelpd
