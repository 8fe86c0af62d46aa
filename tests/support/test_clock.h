// A monotonic clock that a test moves by hand: waits and timers of the platform follow it.
//
//     Platform platform(OnTestClock());
//     g_now += 5'000'000'000;   // five seconds pass
//
// thread-safe.
#pragma once

#include <atomic>
#include <cstdint>

#include "kelp/task.h"

inline std::atomic<std::int64_t> g_now{0};

inline std::int64_t Now() {
    return g_now.load();
}

inline KelpAppOptions OnTestClock() {
    g_now = 1;
    KelpAppOptions options;
    options.monotonicNs = &Now;
    return options;
}
