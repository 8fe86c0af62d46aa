// kelpd/config/limits.h - how much the gateway lets anybody use of it.
//
// immutable
#pragma once

#include <chrono>
#include <cstddef>

namespace kelpd {

struct Limits {
    std::size_t connections = 1024;             ///< served at the same time
    std::size_t connections_per_address = 256;  ///< of them, from one address
    std::size_t header_bytes = 8192;            ///< request line and header lines
    std::size_t header_count = 64;
    std::size_t body_bytes = std::size_t{1} << 20;
    std::chrono::milliseconds handshake{10000};  ///< from accepting to the end of the handshake
    std::chrono::milliseconds header{10000};  ///< from a request's first octet to its header's end
    std::chrono::milliseconds body{30000};    ///< from there to its body's end
    std::chrono::milliseconds write{30000};   ///< for an answer to be taken
    std::chrono::milliseconds idle{60000};    ///< between two requests
    std::chrono::milliseconds stop{8000};     ///< for what runs when the stop signal comes

    bool operator==(const Limits&) const = default;
};

}  // namespace kelpd
