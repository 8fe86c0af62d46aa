// What an initialised process consists of: the bus, the timers, the task managers that
// messages can reach, the threads that wait outside any task, the event subscriptions.
//
// Design notes. One Core exists from KelpAppMgr::Initialize() to Destroy(); task managers
// share it, so a thread that is late keeps what it uses. Messages come in through
// Deliver(), on whatever thread read or sent them, and go on to a queue; nothing here
// blocks. Order of locks: timers, then a manager's; `mutex_` and the lock of the outside
// calls are taken alone.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/rate_limit.h"
#include "kelp/task.h"
#include "message/bus.h"
#include "message/timers.h"
#include "task/events.h"
#include "task/outside_calls.h"

namespace kelp::task {

class Manager;

class Core final : public message::MessageSink, public std::enable_shared_from_this<Core> {
  public:
    explicit Core(const KelpAppOptions& options);

    /// False, with `why`, when the process cannot be had on the bus.
    bool Start(std::string& why) { return bus_.Start(why); }
    /// See KELPsac::KELPInstance::cleanup().
    void Withdraw() { bus_.Withdraw(); }
    /// See KelpAppMgr::Destroy().
    void Stop();

    const KelpAppOptions& options() const { return options_; }
    const base::Clock& clock() const { return clock_; }
    message::TimerThread& timers() { return timers_; }
    message::Bus& bus() { return bus_; }
    Events& events() { return events_; }
    OutsideCalls& outside() { return outside_; }

    bool AddManager(const std::shared_ptr<Manager>& manager);
    void RemoveManager(const Manager* manager);
    std::shared_ptr<Manager> FindManager(std::uint8_t id);

    /// Sends a message of this process's; 0 or the error code. Takes it. Never throws.
    std::uint32_t Send(message::MsgPtr msg) noexcept;
    /// Answers a request with an error code and an empty body, if it expects an answer.
    void Refuse(const CmdMSG& request, std::uint32_t code) noexcept;

    void Deliver(message::MsgPtr msg) noexcept override;

    std::string Report();

  private:
    void Dispatch(message::MsgPtr msg);
    std::vector<std::shared_ptr<Manager>> AllManagers();

    const KelpAppOptions options_;
    const base::Clock clock_;
    message::TimerThread timers_;
    message::Bus bus_;
    OutsideCalls outside_;
    Events events_;
    base::LimitedLog log_{"task"};
    std::atomic<bool> stopping_{false};
    Mutex mutex_;
    std::vector<std::shared_ptr<Manager>> managers_ KELP_GUARDED_BY(mutex_);  // 256 places
};

/// The process's core, or null.
std::shared_ptr<Core> CurrentCore();

/// `mgr` is being deleted: it is not the process's to delete any more.
void ForgetManager(const KelpTaskMgr* mgr);

/// Whether a request's sender can be reached with an answer.
bool ExpectsAnswer(const CmdMSG& request);

}  // namespace kelp::task
