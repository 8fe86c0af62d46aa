#include "message/poller.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "base/clock.h"

namespace kelp::message {

bool Poller::Open() {
    set_ = base::UniqueFd(::epoll_create1(EPOLL_CLOEXEC));
    wake_ = base::UniqueFd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    // Edge-triggered: each write is one event, and the count need never be read.
    return set_ && wake_ && Add(wake_.get(), kWake, EPOLLIN);
}

bool Poller::Add(int fd, std::uint64_t id, std::uint32_t events) {
    epoll_event event{};
    event.events = events | EPOLLET;
    event.data.u64 = id;
    return ::epoll_ctl(set_.get(), EPOLL_CTL_ADD, fd, &event) == 0;
}

bool Poller::Change(int fd, std::uint64_t id, std::uint32_t events) {
    epoll_event event{};
    event.events = events | EPOLLET;
    event.data.u64 = id;
    return ::epoll_ctl(set_.get(), EPOLL_CTL_MOD, fd, &event) == 0;
}

void Poller::Remove(int fd) {
    ::epoll_ctl(set_.get(), EPOLL_CTL_DEL, fd, nullptr);
}

void Poller::Wake() {
    const std::uint64_t one = 1;
    // It cannot fail: the count would have to reach 2^64 - 1.
    [[maybe_unused]] const ssize_t written = ::write(wake_.get(), &one, sizeof one);
}

bool Poller::Poll(std::int64_t wait_ns, bool* woken) {
    epoll_event events[kBatch];
    int wait_ms = -1;
    if (wait_ns != base::kNever) {
        const std::int64_t rounded_up = (wait_ns + base::kMillisecond - 1) / base::kMillisecond;
        wait_ms = static_cast<int>(std::min<std::int64_t>(rounded_up, 1 << 30));
    }
    const int count = ::epoll_wait(set_.get(), events, kBatch, wait_ms);
    bool any = false;
    for (int i = 0; i < count; ++i) {
        if (events[i].data.u64 == kWake) {
            if (woken != nullptr) {
                *woken = true;
            }
        } else {
            any = true;
            handler_.OnEvent(events[i].data.u64, events[i].events);
        }
    }
    return any;
}

void Poller::PollFromBus() {
    bool woken = false;
    Poll(base::kNever, &woken);
    if (woken && SeatTaken()) {
        Wake();
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
}

}  // namespace kelp::message
