// Standard error, the log's last resort: written to without stdio, so that it works
// before, after and beside everything else, in signal handlers too.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace kelp::log {

// Writes all of `bytes` to a descriptor, as far as the system takes them. True when it
// took all. Async-signal-safe; keeps errno.
bool WriteAll(int descriptor, std::string_view bytes) noexcept;

// The lines' way out in pieces that are not too small. Needs no memory but its own.
class StandardError {
  public:
    StandardError() = default;
    ~StandardError() { Flush(); }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    StandardError& operator<<(std::string_view bytes) noexcept;
    void Flush() noexcept;

  private:
    char m_bytes[4096];
    std::size_t m_length = 0;
};

// A line about the log itself: "kelp log: " and the parts, on standard error. What is
// longer than 1000 bytes is cut.
void Complain(std::initializer_list<std::string_view> parts) noexcept;

}  // namespace kelp::log
