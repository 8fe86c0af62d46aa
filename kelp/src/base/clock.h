// Monotonic time that a test or a simulation can replace. A deadline is a point on this
// clock; a wait for one goes on in slices: with the system's clock the slice is the whole
// rest, with a replaced one it is a real millisecond, after which the clock is read again.
#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

namespace kelp::base {

inline constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
inline constexpr std::int64_t kMillisecond = 1000000;
inline constexpr std::int64_t kSecond = 1000000000;

inline std::int64_t SystemMonotonicNs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * kSecond + now.tv_nsec;
}

/// For a condition variable's timed wait.
inline std::chrono::steady_clock::time_point RealPointAfter(std::int64_t ns) {
    return std::chrono::steady_clock::now() + std::chrono::nanoseconds(ns);
}

class Clock {
  public:
    using Source = std::int64_t (*)();

    explicit Clock(Source replaced = nullptr) : replaced_(replaced) {}

    std::int64_t Now() const { return replaced_ != nullptr ? replaced_() : SystemMonotonicNs(); }

    /// The point `ns` from now; kNever when that is too far away to be represented.
    std::int64_t After(std::int64_t ns) const {
        const std::int64_t now = Now();
        return ns > kNever - now ? kNever : now + ns;
    }

    /// How long to block, in real nanoseconds, before looking at the clock again;
    /// kNever: until woken.
    std::int64_t Slice(std::int64_t deadline, std::int64_t now) const {
        if (replaced_ != nullptr) {
            return kMillisecond;
        }
        return deadline == kNever ? kNever : std::max<std::int64_t>(deadline - now, 0);
    }

  private:
    Source replaced_;
};

}  // namespace kelp::base
