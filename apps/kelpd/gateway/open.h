// kelpd/gateway/open.h - the sockets that are listened on.
//
// one thread
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <cstdint>
#include <string>

#include "support/unique_fd.h"

namespace kelpd {

/// Listens on address and port (0: any free one). Throws Refusal (kAddress) with what to do
/// about it; `file` names the setting.
boost::asio::ip::tcp::acceptor ListenTcp(boost::asio::io_context& context,
                                         const std::string& address, std::uint16_t port,
                                         const std::string& file);

/// Listens on a socket of mode 0600 at `path`, in the place of one that a killed process left;
/// the caller holds the lock of the root. Throws Refusal (kAddress), also when something else
/// than a socket is there.
boost::asio::local::stream_protocol::acceptor ListenLocal(boost::asio::io_context& context,
                                                          const std::string& path);

/// The right to serve the root, for as long as the descriptor lives. Throws Refusal (kRunning)
/// when another process has it, kFailed when the file cannot be had.
app::UniqueFd LockRoot(const std::string& run_folder);

}  // namespace kelpd
