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
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~WithoutSigPipe() {
        // Where it was blocked before, one may have been pending before: it is not ours to
        // take away, and one more does nothing.
        if (sigismember(&before_, SIGPIPE) == 0) {
            if (may_be_raised_) {
                const timespec at_once{};
                sigtimedwait(&pipe_, nullptr, &at_once);
            }
            pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        }
    }
    /// Every write has succeeded, so there is no signal to take away.
    void NothingBroke() { may_be_raised_ = false; }

    WithoutSigPipe(const WithoutSigPipe&) = delete;
    WithoutSigPipe& operator=(const WithoutSigPipe&) = delete;

  private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool may_be_raised_ = true;
};

}  // namespace kelp::http
