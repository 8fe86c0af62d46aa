// kelpd/http/target.h - the path and query of a request.
//
//     Target target;
//     ParseTarget("/mq/topics/a%20b?most=5", target);
//     // segments {"mq", "topics", "a b"}, query {{"most", "5"}}
//
// What is decoded is UTF-8 without control characters. Whatever could mean one thing here
// and another to somebody behind is refused: empty, "." and ".." segments, an encoded slash, a
// backslash, a half escape, a fragment, another host's URL.
//
// thread-compatible
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelpd {

inline constexpr std::size_t kMostSegments = 32;
inline constexpr std::size_t kMostParameters = 64;

struct Target {
    std::vector<std::string> segments;                       ///< none: "/"
    std::vector<std::pair<std::string, std::string>> query;  ///< in their order, doubles kept
};

/// False when `text` is no such target; `target` holds nothing of use then. A trailing slash is
/// an empty segment, hence refused. In the query a plus sign is a blank, and a parameter
/// without "=" has an empty value.
bool ParseTarget(std::string_view text, Target& target);

}  // namespace kelpd
