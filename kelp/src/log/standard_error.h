// Standard error, the log's last resort: written to without stdio, so that it works
// before, after and beside everything else, in signal handlers too.
#pragma once

#include <string_view>

namespace kelp::log {

// Writes all of `bytes` to a descriptor, as far as the system takes them. True when it
// took all. Async-signal-safe; keeps errno.
bool WriteAll(int descriptor, std::string_view bytes) noexcept;

// A line about the log itself: "kelp log: " and the parts, on standard error.
void Complain(std::string_view what, std::string_view about = {},
              std::string_view why = {}) noexcept;

}  // namespace kelp::log
