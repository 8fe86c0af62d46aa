#include "message/timers.h"

namespace kelp::message {

long TimerThread::Arm(TimerTarget* target, std::int64_t interval_ns) {
    MutexLock lock(mutex_);
    if (stopped_) {
        return -1;
    }
    if (!running_) {
        thread_ = std::thread([this] { Run(); });
        running_ = true;
    }
    const long id = ++last_id_;
    const std::int64_t due = clock_.After(interval_ns);
    timers_.emplace(id, Timer{target, due, interval_ns});
    due_.emplace(due, id);
    changed_.NotifyOne();
    return id;
}

bool TimerThread::Cancel(long id) {
    MutexLock lock(mutex_);
    const auto found = timers_.find(id);
    if (found == timers_.end()) {
        return false;
    }
    due_.erase({found->second.due, id});
    timers_.erase(found);
    return true;
}

void TimerThread::CancelAll(const TimerTarget* target) {
    MutexLock lock(mutex_);
    for (auto at = timers_.begin(); at != timers_.end();) {
        if (at->second.target == target) {
            due_.erase({at->second.due, at->first});
            at = timers_.erase(at);
        } else {
            ++at;
        }
    }
}

void TimerThread::Stop() {
    std::thread ended;
    {
        MutexLock lock(mutex_);
        stopped_ = true;
        timers_.clear();
        due_.clear();
        ended.swap(thread_);
        changed_.NotifyOne();
    }
    if (ended.joinable()) {
        ended.join();
    }
}

void TimerThread::Run() {
    MutexLock lock(mutex_);
    while (!stopped_) {
        const std::int64_t now = clock_.Now();
        if (due_.empty() || due_.begin()->first > now) {
            const std::int64_t next = due_.empty() ? base::kNever : due_.begin()->first;
            const std::int64_t slice = clock_.Slice(next, now);
            if (slice == base::kNever) {
                changed_.Wait(mutex_);
            } else {
                changed_.WaitUntil(mutex_, base::RealPointAfter(slice));
            }
            continue;
        }
        const long id = due_.begin()->second;
        due_.erase(due_.begin());
        Timer& timer = timers_.at(id);
        // Firings that were missed are not made up.
        timer.due += (1 + (now - timer.due) / timer.interval) * timer.interval;
        due_.emplace(timer.due, id);
        timer.target->OnTimer(id);
    }
}

}  // namespace kelp::message
