// kelpd/gateway/metrics.h - what has happened since the daemon started, counted.
//
// thread-safe
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpd {

enum class Event : std::size_t {
    kAccepted,
    kBusy,
    kDropped,
    kHandshakeFailed,
    kHandshakeTimeout,
    kHeaderTimeout,
    kBodyTimeout,
    kWriteTimeout,
    kIdleTimeout,
    kMalformed,
    kNoDescriptors,
    kEvents,  // how many there are
};

class Metrics {
  public:
    void Count(Event event) {
        events_[static_cast<std::size_t>(event)].fetch_add(1, std::memory_order_relaxed);
    }
    /// An answer of that status, `microseconds` after its request was complete.
    void CountAnswer(int status, std::uint64_t microseconds, std::size_t octets);

    std::uint64_t Of(Event event) const {
        return events_[static_cast<std::size_t>(event)].load(std::memory_order_relaxed);
    }
    /// The Prometheus text format; `open`: connections there are.
    std::string Render(std::size_t open) const;

  private:
    using Counter = std::atomic<std::uint64_t>;
    static constexpr std::array<std::uint64_t, 8> kBounds = {50,   100,   250,    1000,
                                                             5000, 25000, 100000, 1000000};

    std::array<Counter, static_cast<std::size_t>(Event::kEvents)> events_{};
    std::array<Counter, 6> answers_{};  // by the status's first digit
    std::array<Counter, kBounds.size() + 1> durations_{};
    Counter microseconds_{0};
    Counter octets_{0};
};

}  // namespace kelpd
