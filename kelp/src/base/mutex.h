// A mutex that clang's thread-safety analysis understands: members say which lock
// guards them, and a path that forgets the lock does not compile.
//
//     Mutex m_mutex;
//     int m_count KELP_GUARDED_BY(m_mutex) = 0;
//     ...
//     MutexLock lock(m_mutex);
//     ++m_count;
//
// thread-safe.
#pragma once

#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define KELP_ANNOTATION(x) __attribute__((x))
#else
#define KELP_ANNOTATION(x)
#endif

#define KELP_CAPABILITY(name) KELP_ANNOTATION(capability(name))
#define KELP_SCOPED_CAPABILITY KELP_ANNOTATION(scoped_lockable)
#define KELP_GUARDED_BY(mutex) KELP_ANNOTATION(guarded_by(mutex))
#define KELP_REQUIRES(...) KELP_ANNOTATION(requires_capability(__VA_ARGS__))
#define KELP_EXCLUDES(...) KELP_ANNOTATION(locks_excluded(__VA_ARGS__))
#define KELP_ACQUIRE(...) KELP_ANNOTATION(acquire_capability(__VA_ARGS__))
#define KELP_RELEASE(...) KELP_ANNOTATION(release_capability(__VA_ARGS__))
#define KELP_ACQUIRED_BEFORE(...) KELP_ANNOTATION(acquired_before(__VA_ARGS__))
// For what the analysis cannot follow, such as locks held across fork().
#define KELP_UNCHECKED_LOCKS KELP_ANNOTATION(no_thread_safety_analysis)

namespace kelp {

class KELP_CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() KELP_ACQUIRE() { m_mutex.lock(); }
    void Unlock() KELP_RELEASE() { m_mutex.unlock(); }

  private:
    friend class CondVar;
    std::mutex m_mutex;
};

class KELP_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) KELP_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~MutexLock() KELP_RELEASE() { m_mutex.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& m_mutex;
};

class CondVar {
  public:
    // Wakes up spuriously, so call it in a loop over the condition.
    void Wait(Mutex& mutex) KELP_REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.m_mutex, std::adopt_lock);
        m_changed.wait(lock);
        lock.release();
    }
    // False when `deadline` (of a monotonic clock) has passed.
    template <typename TimePoint>
    bool WaitUntil(Mutex& mutex, TimePoint deadline) KELP_REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.m_mutex, std::adopt_lock);
        const bool in_time = m_changed.wait_until(lock, deadline) == std::cv_status::no_timeout;
        lock.release();
        return in_time;
    }
    void NotifyOne() { m_changed.notify_one(); }
    void NotifyAll() { m_changed.notify_all(); }

  private:
    std::condition_variable m_changed;
};

}  // namespace kelp
