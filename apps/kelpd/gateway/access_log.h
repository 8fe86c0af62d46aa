// kelpd/gateway/access_log.h - a line of the log for each answer.
//
//     access peer=127.0.0.1 client="kelp client" method=GET path=/rest/x status=200 octets=42
//     us=85
//
// thread-safe
#pragma once

#include <cstdint>
#include <string_view>

namespace kelpd {

struct Access {
    std::string_view peer;
    std::string_view client;
    std::string_view method;
    std::string_view target;  ///< logged without its query, which may hold what is secret
    int status = 0;
    std::size_t octets = 0;  ///< of the answer's body
    std::uint64_t microseconds = 0;
};

void LogAccess(const Access& access);

}  // namespace kelpd
