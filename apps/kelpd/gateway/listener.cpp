#include "kelpd/gateway/listener.h"

#include <boost/asio/post.hpp>

#include "kelp/log.h"
#include "kelpd/gateway/session.h"

namespace kelpd {
namespace {

// Without descriptors or memory, accepting fails at once and again: connections wait in the
// kernel's queue meanwhile.
constexpr std::chrono::milliseconds kPause(100);

std::string AddressOf(const boost::asio::ip::tcp::socket& socket) {
    boost::system::error_code error;
    const auto peer = socket.remote_endpoint(error);
    return error ? std::string() : peer.address().to_string();
}

std::string AddressOf(const boost::asio::local::stream_protocol::socket& /*socket*/) {
    return "local";
}

void Prepare(boost::asio::ip::tcp::socket& socket) {
    boost::system::error_code ignored;
    socket.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
}

void Prepare(boost::asio::local::stream_protocol::socket& /*socket*/) {}

}  // namespace

template <typename Protocol>
Listener<Protocol>::Listener(Acceptor acceptor, Threads& threads, Service& service)
    : acceptor_(std::move(acceptor)),
      pause_(acceptor_.get_executor()),
      threads_(threads),
      service_(service) {}

template <typename Protocol>
void Listener<Protocol>::Close() {
    boost::system::error_code ignored;
    acceptor_.close(ignored);
    pause_.cancel();
}

template <typename Protocol>
void Listener<Protocol>::Accept() {
    IoThread& thread = *threads_[next_];
    acceptor_.async_accept(thread.context(), [this](const boost::system::error_code& error,
                                                    typename Protocol::socket socket) {
        if (error == boost::asio::error::operation_aborted || !acceptor_.is_open()) {
            return;
        }
        try {
            Accepted(error, std::move(socket));
        } catch (const std::exception& e) {
            service_.faults.Warn(std::string("a connection is given up: ") + e.what());
            PauseThenAccept();
        }
    });
}

template <typename Protocol>
void Listener<Protocol>::Accepted(const boost::system::error_code& error,
                                  typename Protocol::socket socket) {
    if (error) {
        // Also a peer that was gone before it was accepted.
        if (error != boost::asio::error::connection_aborted) {
            service_.metrics.Count(Event::kNoDescriptors);
            service_.faults.Warn("cannot accept a connection: " + error.message());
            return PauseThenAccept();
        }
        return Accept();
    }
    service_.metrics.Count(Event::kAccepted);
    std::string peer = AddressOf(socket);
    Admission::Ticket ticket;
    const Admission::Verdict verdict = service_.admission.Admit(peer, ticket);
    if (verdict != Admission::Verdict::kServe) {
        const bool drop = verdict == Admission::Verdict::kDrop;
        service_.metrics.Count(drop ? Event::kDropped : Event::kBusy);
        service_.faults.Warn("too many connections: " + peer + (drop ? " dropped" : " refused"));
    }
    if (verdict != Admission::Verdict::kDrop) {
        Prepare(socket);
        IoThread& thread = *threads_[next_];
        next_ = (next_ + 1) % threads_.size();
        boost::asio::post(thread.context(),
                          [&thread, &service = service_, socket = std::move(socket),
                           peer = std::move(peer), ticket = std::move(ticket), verdict]() mutable {
                              std::make_shared<Session>(thread, service, std::move(socket),
                                                        std::move(peer), std::move(ticket), verdict)
                                  ->Start();
                          });
    }
    Accept();
}

template <typename Protocol>
void Listener<Protocol>::PauseThenAccept() {
    pause_.expires_after(kPause);
    pause_.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
            Accept();
        }
    });
}

template class Listener<boost::asio::ip::tcp>;
template class Listener<boost::asio::local::stream_protocol>;

}  // namespace kelpd
