// One thread that calls back at points of the monotonic clock.
//
// Design notes. `mutex_` is held while a target is called: when Cancel() returns, the
// target is not being called and will not be. So a target takes only locks that are never
// held around a call of this class, and neither arms nor cancels. The thread starts with
// the first timer and ends with Stop().
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <thread>
#include <utility>

#include "base/clock.h"
#include "base/mutex.h"

namespace kelp::message {

class TimerTarget {
  public:
    virtual void OnTimer(long id) noexcept = 0;

  protected:
    ~TimerTarget() = default;
};

class TimerThread {
  public:
    explicit TimerThread(const base::Clock& clock) : clock_(clock) {}
    ~TimerThread() { Stop(); }
    TimerThread(const TimerThread&) = delete;
    TimerThread& operator=(const TimerThread&) = delete;

    /// Calls `target` every `interval_ns` from now on. The timer's identifier, above 0, or
    /// -1 after Stop().
    long Arm(TimerTarget* target, std::int64_t interval_ns);
    /// False when there is no such timer.
    bool Cancel(long id);
    /// Cancels all timers of a target.
    void CancelAll(const TimerTarget* target);
    /// Ends the thread; no target is called afterwards.
    void Stop();

  private:
    struct Timer {
        TimerTarget* target;
        std::int64_t due;
        std::int64_t interval;
    };

    void Run();

    const base::Clock clock_;
    Mutex mutex_;
    CondVar changed_;
    std::map<long, Timer> timers_ KELP_GUARDED_BY(mutex_);
    std::set<std::pair<std::int64_t, long>> due_ KELP_GUARDED_BY(mutex_);
    long last_id_ KELP_GUARDED_BY(mutex_) = 0;
    bool stopped_ KELP_GUARDED_BY(mutex_) = false;
    bool running_ KELP_GUARDED_BY(mutex_) = false;
    std::thread thread_;  // started under mutex_, joined by the one Stop() that stopped it
};

}  // namespace kelp::message
