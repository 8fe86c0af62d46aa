// The parts of a connection URL. thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelp::db {

// `text` with %xx replaced by the octet; nothing when one is malformed or gives a zero byte.
std::optional<std::string> PercentDecoded(std::string_view text);

// Whether `url` begins with `scheme`.
bool HasScheme(std::string_view url, std::string_view scheme);

// Whether the authority of a URL ("//user:password@host") holds a password, or its query does.
bool HoldsPassword(std::string_view url);

}  // namespace kelp::db
