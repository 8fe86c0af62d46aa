#include "platform/pool_lock.h"

#include <sched.h>
#include <time.h>

namespace FrameUtil {

namespace {

constexpr int kLooks = 100;
constexpr int kYields = 20;
constexpr timespec kMoment{0, 50'000};

void Pause() noexcept {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

}  // namespace

void PoolLock::Wait() noexcept {
    for (int turn = 0;; ++turn) {
        // Looking only reads: the holder keeps its cache line for the store that releases.
        if (!m_taken.load(std::memory_order_relaxed) &&
            !m_taken.exchange(true, std::memory_order_acquire)) {
            return;
        }
        if (turn < kLooks) {
            Pause();
        } else if (turn < kLooks + kYields) {
            ::sched_yield();
        } else {
            ::nanosleep(&kMoment, nullptr);
        }
    }
}

}  // namespace FrameUtil
