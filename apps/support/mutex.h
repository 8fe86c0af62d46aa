// support/mutex.h - a lock that clang's thread-safety analysis knows.
//
//     app::Mutex mutex_;
//     std::size_t open_ APP_GUARDED_BY(mutex_) = 0;
//     ...
//     const app::Lock lock(mutex_);
//     ++open_;
//
// thread-safe
#pragma once

#include <mutex>

#if defined(__clang__)
#define APP_CAPABILITY(name) __attribute__((capability(name)))
#define APP_SCOPED_CAPABILITY __attribute__((scoped_lockable))
#define APP_GUARDED_BY(mutex) __attribute__((guarded_by(mutex)))
#define APP_REQUIRES(mutex) __attribute__((requires_capability(mutex)))
#define APP_ACQUIRE(...) __attribute__((acquire_capability(__VA_ARGS__)))
#define APP_RELEASE(...) __attribute__((release_capability(__VA_ARGS__)))
#else
#define APP_CAPABILITY(name)
#define APP_SCOPED_CAPABILITY
#define APP_GUARDED_BY(mutex)
#define APP_REQUIRES(mutex)
#define APP_ACQUIRE(...)
#define APP_RELEASE(...)
#endif

namespace app {

class APP_CAPABILITY("mutex") Mutex {
  public:
    void Acquire() APP_ACQUIRE() { mutex_.lock(); }
    void Release() APP_RELEASE() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

class APP_SCOPED_CAPABILITY Lock {
  public:
    explicit Lock(Mutex& mutex) APP_ACQUIRE(mutex) : mutex_(mutex) { mutex_.Acquire(); }
    ~Lock() APP_RELEASE() { mutex_.Release(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace app
