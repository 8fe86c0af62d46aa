// Time on a CPU: what other processes do meanwhile is left out as far as it can be.
#pragma once

#include <ctime>

namespace bench {

inline double SecondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double ThreadSeconds() {
    return SecondsOf(CLOCK_THREAD_CPUTIME_ID);
}

}  // namespace bench
