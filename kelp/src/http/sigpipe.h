// TLS writes to a socket whose other end may be gone, and the system then sends SIGPIPE,
// which ends a process that has not asked for anything else. Within this object's life the
// calling thread gets the error instead, and the process's own setting stays as it is.
#pragma once

#include <pthread.h>
#include <signal.h>
#include <time.h>

namespace kelp::http {

class WithoutSigPipe {
  public:
    WithoutSigPipe() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~WithoutSigPipe() {
        // One that was there before is somebody else's to receive.
        sigset_t pending;
        sigpending(&pending);
        if (!was_pending_ && sigismember(&pending, SIGPIPE) == 1) {
            const timespec at_once{};
            sigtimedwait(&pipe_, nullptr, &at_once);
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutSigPipe(const WithoutSigPipe&) = delete;
    WithoutSigPipe& operator=(const WithoutSigPipe&) = delete;

  private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool was_pending_ = false;
};

}  // namespace kelp::http
