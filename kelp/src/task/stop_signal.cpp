// Design notes. The handler only writes to an eventfd, which is safe in a handler; the
// descriptor is published before the handlers are installed and withdrawn after they are
// gone.

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include "base/unique_fd.h"
#include "kelp/task.h"

namespace {

constinit std::atomic<int> g_stop_fd{-1};

extern "C" void KelpOnStopSignal(int number) {
    const int saved = errno;
    const auto count = static_cast<std::uint64_t>(number);
    [[maybe_unused]] const ssize_t written = ::write(g_stop_fd.load(), &count, sizeof count);
    errno = saved;
}

}  // namespace

int KelpAppMgr::WaitForStopSignal(void (*ready)()) {
    const kelp::base::UniqueFd stop(::eventfd(0, EFD_CLOEXEC));
    g_stop_fd.store(stop.get());
    struct sigaction wanted {};
    wanted.sa_handler = KelpOnStopSignal;
    sigemptyset(&wanted.sa_mask);
    struct sigaction on_interrupt {};
    struct sigaction on_terminate {};
    ::sigaction(SIGINT, &wanted, &on_interrupt);
    ::sigaction(SIGTERM, &wanted, &on_terminate);
    if (ready != nullptr) {
        ready();
    }
    std::uint64_t count = 0;
    while (::read(stop.get(), &count, sizeof count) < 0 && errno == EINTR) {
    }
    ::sigaction(SIGINT, &on_interrupt, nullptr);
    ::sigaction(SIGTERM, &on_terminate, nullptr);
    g_stop_fd.store(-1);
    return count == SIGINT ? SIGINT : SIGTERM;
}
