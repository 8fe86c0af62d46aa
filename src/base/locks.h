// Locks that clang's thread-safety analysis understands: members say which lock guards
// them, and a path that forgets the lock does not compile.
//
//     PlainMutex m_mutex;
//     std::vector<std::string> m_entries FRAMEUTIL_GUARDED_BY(m_mutex);
//     ...
//     const PlainMutexLock lock(m_mutex);
//     m_entries.push_back(line);
//
// thread-safe.
#pragma once

#include <pthread.h>

#include <cerrno>
#include <mutex>

#if defined(__clang__)
#define FRAMEUTIL_LOCK_NOTE(x) __attribute__((x))
#else
#define FRAMEUTIL_LOCK_NOTE(x)
#endif

#define FRAMEUTIL_GUARDED_BY(lock) FRAMEUTIL_LOCK_NOTE(guarded_by(lock))
#define FRAMEUTIL_REQUIRES(lock) FRAMEUTIL_LOCK_NOTE(requires_capability(lock))

namespace FrameUtil {

class FRAMEUTIL_LOCK_NOTE(capability("mutex")) PlainMutex {
  public:
    PlainMutex() = default;
    PlainMutex(const PlainMutex&) = delete;
    PlainMutex& operator=(const PlainMutex&) = delete;

    void Lock() FRAMEUTIL_LOCK_NOTE(acquire_capability()) { m_mutex.lock(); }
    void Unlock() FRAMEUTIL_LOCK_NOTE(release_capability()) { m_mutex.unlock(); }

  private:
    std::mutex m_mutex;
};

class FRAMEUTIL_LOCK_NOTE(scoped_lockable) PlainMutexLock {
  public:
    explicit PlainMutexLock(PlainMutex& mutex) FRAMEUTIL_LOCK_NOTE(acquire_capability(mutex))
        : m_mutex(mutex) {
        m_mutex.Lock();
    }
    ~PlainMutexLock() FRAMEUTIL_LOCK_NOTE(release_capability()) { m_mutex.Unlock(); }
    PlainMutexLock(const PlainMutexLock&) = delete;
    PlainMutexLock& operator=(const PlainMutexLock&) = delete;

  private:
    PlainMutex& m_mutex;
};

/// A reader-writer lock. A writer that waits goes before readers that come later, so readers
/// cannot keep it out; a thread that reads must not ask for it again. The system may refuse
/// it; whose duty it is to go on nevertheless holds it through ReadGuard or WriteGuard.
class FRAMEUTIL_LOCK_NOTE(capability("reader-writer lock")) ReadWriteLock {
  public:
    ReadWriteLock() = default;
    ~ReadWriteLock() { ::pthread_rwlock_destroy(&m_lock); }
    ReadWriteLock(const ReadWriteLock&) = delete;
    ReadWriteLock& operator=(const ReadWriteLock&) = delete;

  private:
    friend class ReadGuard;
    friend class WriteGuard;
    pthread_rwlock_t m_lock = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
};

/// Holds a lock for reading. Should it not be had, errno says why, what follows runs
/// without it, and nothing is unlocked at the end.
class FRAMEUTIL_LOCK_NOTE(scoped_lockable) ReadGuard {
  public:
    explicit ReadGuard(ReadWriteLock& lock) FRAMEUTIL_LOCK_NOTE(acquire_shared_capability(lock))
        : m_lock(lock), m_error(::pthread_rwlock_rdlock(&lock.m_lock)) {
        if (m_error != 0) {
            errno = m_error;
        }
    }
    ~ReadGuard() FRAMEUTIL_LOCK_NOTE(release_capability()) {
        if (m_error == 0) {
            ::pthread_rwlock_unlock(&m_lock.m_lock);
        }
    }
    ReadGuard(const ReadGuard&) = delete;
    ReadGuard& operator=(const ReadGuard&) = delete;

  private:
    ReadWriteLock& m_lock;
    const int m_error;
};

/// Holds a lock for writing, likewise.
class FRAMEUTIL_LOCK_NOTE(scoped_lockable) WriteGuard {
  public:
    explicit WriteGuard(ReadWriteLock& lock) FRAMEUTIL_LOCK_NOTE(acquire_capability(lock))
        : m_lock(lock), m_error(::pthread_rwlock_wrlock(&lock.m_lock)) {
        if (m_error != 0) {
            errno = m_error;
        }
    }
    ~WriteGuard() FRAMEUTIL_LOCK_NOTE(release_capability()) {
        if (m_error == 0) {
            ::pthread_rwlock_unlock(&m_lock.m_lock);
        }
    }
    WriteGuard(const WriteGuard&) = delete;
    WriteGuard& operator=(const WriteGuard&) = delete;

  private:
    ReadWriteLock& m_lock;
    const int m_error;
};

}  // namespace FrameUtil
