// Time of the calling thread on its CPU: what other processes do meanwhile is left out as
// far as it can be.
#pragma once

#include <ctime>

namespace bench {

inline double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace bench
