// The lock of a block pool.
//
//     PoolLock m_lock;
//     ...
//     const PoolGuard guard(m_lock);
//
// Design notes. What it guards takes a dozen instructions, and a standard mutex costs twice
// that: taking one and releasing it are an atomic exchange each. Here taking is one
// exchange and releasing a plain store, which is possible because nobody sleeps on the lock
// to be woken. Who finds it taken looks again for a while, then lets others run, then
// sleeps for moments: the holder may have been suspended, or be fetching a chunk. Sleeping
// lets a holder of lower priority run at last, which yielding alone would not.
//
// A process that has never had a second thread takes no lock at all. The C library says
// so in a variable that changes while the only thread is inside pthread_create, and so
// never between a guard's two ends.
#pragma once

#include <sys/single_threaded.h>

#include <atomic>

#if defined(__clang__)
#define FRAMEUTIL_ANNOTATION(x) __attribute__((x))
#else
#define FRAMEUTIL_ANNOTATION(x)
#endif

namespace FrameUtil {

class FRAMEUTIL_ANNOTATION(capability("mutex")) PoolLock {
  public:
    void Lock() noexcept FRAMEUTIL_ANNOTATION(acquire_capability()) {
        if (m_taken.exchange(true, std::memory_order_acquire)) [[unlikely]] {
            Wait();
        }
    }
    void Unlock() noexcept FRAMEUTIL_ANNOTATION(release_capability()) {
        m_taken.store(false, std::memory_order_release);
    }

  private:
    void Wait() noexcept;

    std::atomic<bool> m_taken{false};
};

/// Holds the lock for its life, if the process has threads.
class FRAMEUTIL_ANNOTATION(scoped_lockable) PoolGuard {
  public:
    explicit PoolGuard(PoolLock& lock) noexcept FRAMEUTIL_ANNOTATION(acquire_capability(lock))
        FRAMEUTIL_ANNOTATION(no_thread_safety_analysis)
        : m_lock(__libc_single_threaded ? nullptr : &lock) {
        if (m_lock != nullptr) {
            m_lock->Lock();
        }
    }
    ~PoolGuard() FRAMEUTIL_ANNOTATION(release_capability())
        FRAMEUTIL_ANNOTATION(no_thread_safety_analysis) {
        if (m_lock != nullptr) {
            m_lock->Unlock();
        }
    }
    PoolGuard(const PoolGuard&) = delete;
    PoolGuard& operator=(const PoolGuard&) = delete;

  private:
    PoolLock* m_lock;
};

}  // namespace FrameUtil
