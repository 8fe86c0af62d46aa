// How much empty memory the process's block pools keep.
//
// Design notes. A process that has just built and dropped a large tree is likely to build
// the next one, and fresh pages cost more than filling them; a process that needed much
// once must not hold it for good. So the pools together keep what makes up the highest use
// of the last seconds, and a small amount always. Counters are read and written without a
// lock: a limit that is off by a region for a moment harms nobody.
#pragma once

#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace kelp::memory {

class Retention {
  public:
    static constexpr std::size_t kAlways = std::size_t{64} << 20;
    static constexpr std::int64_t kSeconds = 10;

    /// `now` tells the seconds of a clock that never goes back.
    explicit constexpr Retention(std::int64_t (*now)() noexcept = MonotonicSeconds) noexcept
        : now_(now) {}

    /// `octets` that were not in use are now; `kept` tells whether they were kept empty.
    void Use(std::size_t octets, bool kept) noexcept {
        if (kept) {
            empty_.fetch_sub(octets, kOrder);
        }
        const std::size_t used = used_.fetch_add(octets, kOrder) + octets;
        if (used >= peak_.load(kOrder)) {
            peak_.store(used, kOrder);
            peak_at_.store(now_(), kOrder);
        }
    }

    /// `octets` are in use no more: true if they are to be kept (and count as empty), false
    /// if they are to be given back to the system.
    bool Keep(std::size_t octets) noexcept {
        const std::size_t used = used_.fetch_sub(octets, kOrder) - octets;
        const std::int64_t now = now_();
        if (now - peak_at_.load(kOrder) > kSeconds) {
            peak_.store(used, kOrder);
            peak_at_.store(now, kOrder);
        }
        if (empty_.load(kOrder) + octets > Limit()) {
            return false;
        }
        empty_.fetch_add(octets, kOrder);
        return true;
    }

    /// Whether more is kept than shall be, since the peak is forgotten.
    bool TooMuch() const noexcept { return empty_.load(kOrder) > Limit(); }

    /// `octets` that were kept go back to the system.
    void Drop(std::size_t octets) noexcept { empty_.fetch_sub(octets, kOrder); }

  private:
    static constexpr std::memory_order kOrder = std::memory_order_relaxed;

    static std::int64_t MonotonicSeconds() noexcept {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        return now.tv_sec;
    }

    std::size_t Limit() const noexcept {
        const std::size_t used = used_.load(kOrder);
        const std::size_t peak = peak_.load(kOrder);
        return std::max(kAlways, peak > used ? peak - used : 0);
    }

    std::int64_t (*now_)() noexcept;
    std::atomic<std::size_t> used_{0};   // of regions with a block handed out
    std::atomic<std::size_t> empty_{0};  // of regions that are kept
    std::atomic<std::size_t> peak_{0};   // of used_, while it is remembered
    std::atomic<std::int64_t> peak_at_{0};
};

}  // namespace kelp::memory
