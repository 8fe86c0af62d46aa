// A mutex, its scope and a condition variable that clang's analysis understands. Timed
// waits are on the monotonic clock: a step of the wall clock neither fires nor stalls them.
#pragma once

#include <pthread.h>
#include <time.h>

#include <cstdint>

#include "base/thread_annotations.h"

namespace kelp::base {

class KELP_CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;
    ~Mutex() { pthread_mutex_destroy(&native_); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() KELP_ACQUIRE() { pthread_mutex_lock(&native_); }
    void Unlock() KELP_RELEASE() { pthread_mutex_unlock(&native_); }
    bool TryLock() KELP_TRY_ACQUIRE(true) { return pthread_mutex_trylock(&native_) == 0; }

  private:
    friend class CondVar;
    pthread_mutex_t native_ = PTHREAD_MUTEX_INITIALIZER;
};

class KELP_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) KELP_ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexLock() KELP_RELEASE() { mutex_.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

class CondVar {
  public:
    CondVar() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&native_, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~CondVar() { pthread_cond_destroy(&native_); }
    CondVar(const CondVar&) = delete;
    CondVar& operator=(const CondVar&) = delete;

    void Wait(Mutex& mutex) KELP_REQUIRES(mutex) { pthread_cond_wait(&native_, &mutex.native_); }

    /// Waits until woken, spuriously too, or until the system's monotonic clock shows
    /// `until_ns`.
    void WaitUntil(Mutex& mutex, std::int64_t until_ns) KELP_REQUIRES(mutex) {
        timespec until;
        until.tv_sec = static_cast<time_t>(until_ns / 1000000000);
        until.tv_nsec = static_cast<long>(until_ns % 1000000000);
        pthread_cond_timedwait(&native_, &mutex.native_, &until);
    }

    void Signal() { pthread_cond_signal(&native_); }
    void Broadcast() { pthread_cond_broadcast(&native_); }

  private:
    pthread_cond_t native_;
};

}  // namespace kelp::base
