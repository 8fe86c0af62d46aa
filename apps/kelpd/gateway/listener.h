// kelpd/gateway/listener.h - accepts connections and hands them to the threads in turn.
//
// one thread: the one that runs its context.
#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kelpd/gateway/io_thread.h"
#include "kelpd/gateway/service.h"

namespace kelpd {

using Threads = std::vector<std::unique_ptr<IoThread>>;

template <typename Protocol>
class Listener {
  public:
    using Acceptor = typename Protocol::acceptor;

    /// `acceptor` listens already; its context runs on one thread.
    Listener(Acceptor acceptor, Threads& threads, Service& service);

    void Start() { Accept(); }
    /// No connection is accepted afterwards.
    void Close();

  private:
    void Accept();
    void Accepted(const boost::system::error_code& error, typename Protocol::socket socket);
    void PauseThenAccept();

    Acceptor acceptor_;
    boost::asio::steady_timer pause_;
    Threads& threads_;
    Service& service_;
    std::size_t next_ = 0;
};

extern template class Listener<boost::asio::ip::tcp>;
extern template class Listener<boost::asio::local::stream_protocol>;

}  // namespace kelpd
