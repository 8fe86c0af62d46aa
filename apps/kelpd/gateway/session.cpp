#include "kelpd/gateway/session.h"

#include <sys/socket.h>

#include <algorithm>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <cerrno>

#include "kelpd/gateway/access_log.h"

namespace kelpd {
namespace {

constexpr std::chrono::milliseconds kLinger(2000);
constexpr std::chrono::milliseconds kHandshakeWhenStopping(1000);
// A peer that goes on sending behind a refused request is heard out this far.
constexpr std::size_t kMostDiscarded = std::size_t{4} << 20;
constexpr std::string_view kContinueLine = "HTTP/1.1 100 Continue\r\n\r\n";
// A peer that sends requests without a pause leaves its thread to others after so many steps;
// an answered request takes two.
constexpr int kStepsInATurn = 32;
// A large answer's room is given back.
constexpr std::size_t kKeptRoom = 65536;

}  // namespace

Session::Session(IoThread& thread, Service& service, Socket socket, std::string peer,
                 Admission::Ticket ticket, Admission::Verdict verdict)
    : thread_(thread),
      service_(service),
      socket_(std::move(socket)),
      peer_(std::move(peer)),
      ticket_(std::move(ticket)),
      busy_(verdict == Admission::Verdict::kAnswerBusy),
      channel_(service.tls != nullptr ? service.tls->Accept(socket_.native_handle())
                                      : MakePlainChannel(socket_.native_handle())),
      reader_(service.limits) {
    socket_.non_blocking(true);
}

void Session::Start() {
    thread_.Add(shared_from_this());
    Enter(Phase::kHandshake);
    Pump();
}

void Session::Enter(Phase phase) {
    phase_ = phase;
    const Limits& limits = service_.limits;
    const auto now = Clock::now();
    switch (phase) {
        case Phase::kHandshake:
            deadline_ = now + limits.handshake;
            break;
        case Phase::kIdle:
            deadline_ = now + limits.idle;
            break;
        case Phase::kHeader:
            deadline_ = now + limits.header;
            break;
        case Phase::kBody:
            deadline_ = now + limits.body;
            break;
        case Phase::kHandling:
            deadline_ = Clock::time_point::max();
            complete_at_ = now;
            break;
        case Phase::kContinue:
        case Phase::kWriting:
            deadline_ = now + limits.write;
            break;
        case Phase::kLingering:
            deadline_ = now + kLinger;
            break;
    }
}

// Goes on until there is something to wait for. An endpoint that answers at once calls back
// from within: then the loop that is running already writes the answer.
void Session::Pump() {
    if (pumping_ || closed_) {
        return;
    }
    pumping_ = true;
    Io io = Io::kDone;
    try {
        for (int steps = 0; io == Io::kDone && !closed_ && steps < kStepsInATurn; ++steps) {
            io = Step();
        }
    } catch (const std::exception& e) {
        service_.faults.Warn(Where() + " is given up: " + e.what());
        Close();
    }
    pumping_ = false;
    if (closed_) {
        return;
    }
    if (io == Io::kDone) {
        boost::asio::post(thread_.context(), [self = shared_from_this()] { self->Pump(); });
    } else if (io == Io::kWantRead || io == Io::kWantWrite) {
        Wait(io);
    }
}

void Session::Wait(Io io) {
    const auto what = io == Io::kWantRead ? Socket::wait_read : Socket::wait_write;
    socket_.async_wait(what, [self = shared_from_this(),
                              number = ++wait_number_](const boost::system::error_code& error) {
        if (!error && number == self->wait_number_) {
            self->ready_ = true;
            self->Pump();
        }
    });
}

// kDone: go on; kEnd: somebody else will.
Io Session::Step() {
    switch (phase_) {
        case Phase::kHandshake:
            return StepHandshake();
        case Phase::kIdle:
        case Phase::kHeader:
        case Phase::kBody:
            return StepReading();
        case Phase::kContinue:
        case Phase::kWriting:
            return StepWriting();
        case Phase::kLingering:
            return StepLingering();
        case Phase::kHandling:
            break;
    }
    return Io::kEnd;
}

Io Session::StepHandshake() {
    const Io io = channel_->Handshake();
    if (io == Io::kDone) {
        client_ = channel_->PeerName();
        Enter(Phase::kIdle);
    } else if (io == Io::kFailed || io == Io::kEnd) {
        service_.metrics.Count(Event::kHandshakeFailed);
        service_.faults.Warn("handshake with " + peer_ + " failed: " + channel_->why());
        Close();
    }
    return io;
}

Io Session::StepReading() {
    if (!ready_ && !channel_->HasPending()) {
        EndIfStopping();
        return Io::kWantRead;
    }
    // Whether more is there is left to the wait that follows: it costs less than asking in
    // vain after every request.
    ready_ = false;
    auto& scratch = thread_.scratch();
    const Channel::Done done = channel_->Read(scratch.data(), scratch.size());
    switch (done.io) {
        case Io::kDone:
            ready_ = done.count == scratch.size();
            Consider(reader_.Feed({scratch.data(), done.count}));
            break;
        case Io::kEnd:
        case Io::kFailed:
            if (phase_ != Phase::kIdle) {
                service_.faults.Warn(Where() + " ended in the middle of a request");
            }
            EndQuietly();
            break;
        default:
            EndIfStopping();  // a part of a record, or none
            break;
    }
    return done.io;
}

void Session::Consider(RequestReader::State state) {
    if (state == RequestReader::State::kRefused) {
        service_.metrics.Count(Event::kMalformed);
        service_.faults.Warn(Where() + ": refused a request: " + reader_.refusal().reason);
        return Refuse(reader_.refusal().status, reader_.refusal().reason);
    }
    if (busy_ && reader_.header_complete()) {
        return Refuse(503, "too many connections");
    }
    if (state == RequestReader::State::kComplete) {
        return Dispatch();
    }
    if (!reader_.begun()) {
        if (phase_ != Phase::kIdle) {
            Enter(Phase::kIdle);
        }
    } else if (!reader_.header_complete()) {
        if (phase_ != Phase::kHeader) {
            Enter(Phase::kHeader);
        }
    } else if (reader_.TakeExpectation()) {
        out_ = kContinueLine;
        written_ = 0;
        Enter(Phase::kContinue);
    } else if (phase_ != Phase::kBody) {
        Enter(Phase::kBody);
    }
}

void Session::Dispatch() {
    Enter(Phase::kHandling);
    Request& request = reader_.request();
    request.client = client_;
    if (!ParseTarget(request.raw_target, request.target)) {
        return Refuse(400, "malformed path or query");
    }
    const Router::Found found = service_.router.Find(request);
    if (found.endpoint == nullptr) {
        Response response = Response::Error(
            found.status, found.status == 404 ? "no such resource" : "method not allowed here");
        if (!found.allow.empty()) {
            response.headers.emplace_back("Allow", found.allow);
        }
        return Answer(response, request.keep_alive);
    }
    try {
        found.endpoint->handler(request, Responder(weak_from_this()));
    } catch (const std::exception& e) {
        // The responder went with the exception, and has answered already.
        service_.faults.Warn(Where() + ": " + std::string(found.endpoint->path) + ": " + e.what());
    }
}

void Session::TakeAnswer(Response response) {
    boost::asio::dispatch(thread_.context(),
                          [self = shared_from_this(), answer = std::move(response)] {
                              if (!self->closed_ && self->phase_ == Phase::kHandling) {
                                  self->Answer(answer, self->reader_.request().keep_alive);
                                  self->Pump();
                              }
                          });
}

void Session::Refuse(int status, std::string_view reason) {
    if (phase_ != Phase::kHandling) {
        complete_at_ = Clock::now();
    }
    Answer(Response::Error(status, reason), false);
}

void Session::Answer(const Response& response, bool keep_alive) {
    keep_alive_ = keep_alive && !service_.stopping;
    status_ = response.status;
    body_octets_ = response.body ? response.body->size() : 0;
    const bool head = reader_.request().method == "HEAD";
    out_.clear();
    written_ = 0;
    Render(response, HttpDate(), keep_alive_, head ? BodyIs::kLeftOut : BodyIs::kSent, out_);
    Enter(Phase::kWriting);
}

Io Session::StepWriting() {
    const Channel::Done done = channel_->Write(out_.data() + written_, out_.size() - written_);
    if (done.io == Io::kFailed || done.io == Io::kEnd) {
        service_.faults.Warn(Where() + " ended before it had its answer");
        Close();
        return Io::kFailed;
    }
    written_ += done.count;
    if (done.io == Io::kDone && written_ == out_.size()) {
        if (phase_ == Phase::kContinue) {
            Enter(Phase::kBody);
        } else {
            Written();
        }
    }
    return done.io;
}

void Session::Written() {
    const auto took =
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - complete_at_).count();
    const auto microseconds = static_cast<std::uint64_t>(took);
    service_.metrics.CountAnswer(status_, microseconds, body_octets_);
    if (service_.access_log) {
        const Request& request = reader_.request();
        LogAccess({peer_, client_, request.method, request.raw_target, status_, body_octets_,
                   microseconds});
    }
    out_.clear();
    if (out_.capacity() > kKeptRoom) {
        std::string().swap(out_);
    }
    if (!keep_alive_) {
        return Enter(Phase::kLingering);
    }
    Enter(Phase::kIdle);
    Consider(reader_.Next());
}

Io Session::StepLingering() {
    if (!ended_writing_) {
        const Io io = channel_->EndWriting();
        if (io == Io::kWantRead || io == Io::kWantWrite) {
            return io;
        }
        ended_writing_ = true;
    }
    auto& scratch = thread_.scratch();
    const ssize_t count =
        ::recv(socket_.native_handle(), scratch.data(), scratch.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Io::kWantRead;
    }
    discarded_ += count > 0 ? static_cast<std::size_t>(count) : 0;
    if (count <= 0 || discarded_ > kMostDiscarded) {
        Close();
    }
    return Io::kDone;
}

void Session::Stop() {
    if (phase_ == Phase::kHandshake) {
        // The client may have sent its request already, in its view.
        deadline_ = std::min(deadline_, Clock::now() + kHandshakeWhenStopping);
    }
    if (phase_ == Phase::kIdle) {
        // What has come meanwhile is still answered; reading ends a session that has nothing.
        ++wait_number_;
        boost::system::error_code ignored;
        socket_.cancel(ignored);
        ready_ = true;
        Pump();
    }
}

void Session::Cut() {
    Close();
}

void Session::CheckDeadline(Clock::time_point now) {
    if (now >= deadline_) {
        Expire();
    }
}

void Session::Expire() {
    switch (phase_) {
        case Phase::kHandshake:
            service_.metrics.Count(Event::kHandshakeTimeout);
            service_.faults.Warn("no handshake from " + peer_ + " in time");
            return Close();
        case Phase::kIdle:
            service_.metrics.Count(Event::kIdleTimeout);
            return EndQuietly();
        case Phase::kHeader:
        case Phase::kBody:
            service_.metrics.Count(phase_ == Phase::kHeader ? Event::kHeaderTimeout
                                                            : Event::kBodyTimeout);
            service_.faults.Warn(Where() + ": no whole request in time");
            ++wait_number_;
            Refuse(408, "the request took too long");
            return Pump();
        case Phase::kContinue:
        case Phase::kWriting:
            service_.metrics.Count(Event::kWriteTimeout);
            service_.faults.Warn(Where() + " did not take its answer in time");
            return Close();
        case Phase::kHandling:
        case Phase::kLingering:
            return Close();
    }
}

void Session::EndIfStopping() {
    if (phase_ == Phase::kIdle && service_.stopping) {
        EndQuietly();
    }
}

// The peer waits for no answer: it is told of the end if that is possible at once.
void Session::EndQuietly() {
    channel_->EndWriting();
    Close();
}

// The object goes when its caller lets go of it: everybody who enters a session holds it.
void Session::Close() {
    if (closed_) {
        return;
    }
    closed_ = true;
    boost::system::error_code ignored;
    socket_.close(ignored);
    ticket_ = Admission::Ticket();
    thread_.Remove(this);
}

std::string Session::Where() const {
    return "connection of " + peer_ + (client_.empty() ? "" : " (" + client_ + ")");
}

}  // namespace kelpd
