#include "message/poller.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/clock.h"

namespace kelp::message {
namespace {

constexpr std::int64_t kTick = base::kMillisecond;
constexpr int kQuietTicks = 20;
constexpr std::int64_t kSoon = base::kMillisecond / 10;
constexpr std::int64_t kLongest = 4 * kSoon;  // what a longer absence counts as

// How long this thread was away from the seat, the last times it came back.
thread_local std::int64_t t_left_at = 0;
thread_local std::int64_t t_usually_away = kLongest;

}  // namespace

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

bool Poller::TakeSeat() {
    if (seat_.load(std::memory_order_relaxed) || closed_.load(std::memory_order_relaxed) ||
        seat_.exchange(true)) {
        return false;
    }
    entries_.fetch_add(1, std::memory_order_relaxed);
    const std::int64_t away = std::min(base::SystemMonotonicNs() - t_left_at, kLongest);
    t_usually_away = (3 * t_usually_away + away) / 4;
    return true;
}

void Poller::LeaveSeat() {
    t_left_at = base::SystemMonotonicNs();
    const bool soon_back = t_usually_away < kSoon;
    promised_.store(soon_back);
    seat_.store(false);
    const Keeper keeper = keeper_.load();
    if (keeper == Keeper::kSleeping || (keeper == Keeper::kTicking && !soon_back)) {
        NotifyKeeper();
    }
}

void Poller::NotifyKeeper() {
    MutexLock lock(keeper_mutex_);
    keeper_called_.NotifyOne();
}

void Poller::Keep() {
    while (!stopped_.load()) {
        if (MayRest()) {
            Rest();
            continue;
        }
        bool woken = false;
        Poll(base::kNever, &woken);
        if (woken && SeatTaken()) {
            Wake();
        }
    }
}

void Poller::Rest() {
    MutexLock lock(keeper_mutex_);
    unsigned entries = entries_.load();
    int quiet_ticks = 0;
    while (!stopped_.load()) {
        keeper_.store(quiet_ticks < kQuietTicks ? Keeper::kTicking : Keeper::kSleeping);
        if (!MayRest()) {
            break;
        }
        if (quiet_ticks < kQuietTicks || !seat_.load()) {
            keeper_called_.WaitUntil(keeper_mutex_, base::RealPointAfter(kTick));
        } else {
            keeper_called_.Wait(keeper_mutex_);
        }
        const bool quiet = entries_.load() == entries;
        entries = entries_.load();
        if (quiet && !seat_.load()) {
            promised_.store(false);  // not kept
        }
        quiet_ticks = quiet && seat_.load() ? quiet_ticks + 1 : 0;
    }
    keeper_.store(Keeper::kWatching);
}

void Poller::StopKeeper() {
    stopped_.store(true);
    NotifyKeeper();
    Wake();
}

}  // namespace kelp::message
