#include "platform/flag.h"

#include <atomic>
#include <cerrno>

#include "frameutil/platform.h"

namespace FrameUtil {

// A system lock, since it is there before any constructor has run.
constinit pthread_rwlock_t g_flag_lock = PTHREAD_RWLOCK_INITIALIZER;

namespace {

constinit std::atomic<unsigned int> g_flags{0};

class ReadLock {
  public:
    ReadLock() noexcept : m_error(::pthread_rwlock_rdlock(&g_flag_lock)) {
        if (m_error != 0) {
            errno = m_error;
        }
    }
    ~ReadLock() {
        if (m_error == 0) {
            ::pthread_rwlock_unlock(&g_flag_lock);
        }
    }
    ReadLock(const ReadLock&) = delete;
    ReadLock& operator=(const ReadLock&) = delete;

  private:
    const int m_error;
};

}  // namespace

void SetFlag(unsigned int flags) noexcept {
    const ReadLock lock;
    g_flags.store(flags, std::memory_order_relaxed);
}

unsigned int GetFlag() noexcept {
    const ReadLock lock;
    return g_flags.load(std::memory_order_relaxed);
}

}  // namespace FrameUtil
