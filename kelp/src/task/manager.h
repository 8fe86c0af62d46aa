// A task manager: worker threads, the work that waits for them, and the tasks.
//
// Design notes. `mutex_` guards the queue of work, all tasks of the manager with their
// queues, and the count of workers; nothing of the program's own is called under it. A
// task that has something to do and is not running stands in the queue of work once; while
// it runs, or waits in Receive(), it does not. A task that is to be deleted is taken out
// of every table first, so nobody finds it half destroyed.
//
// Threads keep the manager alive by a reference of their own. Stopping: BeginStop()
// refuses what waits and wakes everybody, FinishStop() waits for the workers and joins
// them; one that does not come back is left behind with the manager's memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "base/mutex.h"
#include "base/ring.h"
#include "kelp/task.h"
#include "message/block.h"
#include "message/timers.h"
#include "message/wait_point.h"
#include "task/core.h"

namespace kelp::task {

class Manager;

/// What a task has beside the program's class. Guarded by the manager's mutex, except
/// where it is said.
struct TaskState final : public message::TimerTarget {
    TaskState(KelpTask* task, KelpTaskMgr* mgr, std::shared_ptr<Manager> shared, const char* label);
    void OnTimer(long timer) noexcept override;

    KelpTask* const self;
    KelpTaskMgr* const shell;
    const std::shared_ptr<Manager> manager;
    const std::string name;
    std::atomic<int> state{KELP_TASK_NEW};
    std::atomic<bool> has_timers{false};
    std::vector<std::uint32_t> serials;  // the worker's that runs the task

    std::uint16_t id = 0;    // 0: not in the manager's table
    bool is_static = false;  // lives until the manager ends
    bool in_queue = false;   // stands in the queue of work
    bool running = false;
    bool receiving = false;  // in Receive()
    bool gone = false;       // being deleted
    base::Ring<CmdMSG*> messages;
    base::Ring<long> fired;
    message::WaitPoint arrival;
};

class Manager : public std::enable_shared_from_this<Manager> {
  public:
    Manager(std::shared_ptr<Core> core, KelpTaskMgr* shell, ACE_Thread_Manager* threads,
            std::uint8_t id, int thread_count);
    ~Manager();

    std::uint8_t id() const { return id_; }
    Core& core() { return *core_; }
    KelpTaskMgr* shell() const { return shell_; }

    bool Start();
    /// Whether Start() succeeded.
    bool started();

    /// Work from outside. KELP_MSG_OK: taken; otherwise why not, the message untouched.
    std::uint32_t PutRequest(message::MsgPtr& msg, const KelpTaskRegister* registration);
    std::uint32_t PutMessage(message::MsgPtr& msg);
    bool PutEvent(std::unique_ptr<EventDelivery> event);
    void PutTimer(TaskState& task, long timer);

    /// What tasks ask for.
    std::uint16_t Identify(TaskState& task);
    bool AddStatic(TaskState& task, std::uint16_t number);
    std::uint32_t Receive(TaskState& task, CmdMSG*& msg, int seconds);
    void PutOwn(TaskState& task, CmdMSG* msg, bool at_head);
    void CancelTimer(TaskState& task, long timer);
    /// Takes the task out of every table.
    void Detach(TaskState& task);
    bool stopping();

    void BeginStop();
    /// True when no worker is left; otherwise it may be called again later.
    bool FinishStop(std::int64_t until_ns);

    /// A worker's life.
    void Work();

    std::string Report();

  private:
    struct Item {
        CmdMSG* request = nullptr;  // with `registration`
        const KelpTaskRegister* registration = nullptr;
        TaskState* task = nullptr;
        EventDelivery* event = nullptr;
    };
    class Presence;

    bool SpawnWorker();
    void WorkerGone(bool orderly) noexcept;
    void Run(Item item);
    void RunRequest(message::MsgPtr msg, const KelpTaskRegister& registration);
    void RunTurn(TaskState& task);
    void EndTurn(TaskState& task);
    void MakeReady(TaskState& task) KELP_REQUIRES(mutex_);
    std::uint16_t FreeId() KELP_REQUIRES(mutex_);
    bool QueueTakes(std::size_t octets) const KELP_REQUIRES(mutex_);

    const std::shared_ptr<Core> core_;
    KelpTaskMgr* const shell_;
    ACE_Thread_Manager* const threads_;
    const std::uint8_t id_;
    const int thread_count_;

    Mutex mutex_;
    message::WaitPoint idle_ KELP_GUARDED_BY(mutex_);
    base::Ring<Item> work_ KELP_GUARDED_BY(mutex_);
    std::size_t waiting_ KELP_GUARDED_BY(mutex_) = 0;  // requests and events in work_
    std::size_t waiting_octets_ KELP_GUARDED_BY(mutex_) = 0;
    std::unordered_map<std::uint16_t, TaskState*> tasks_ KELP_GUARDED_BY(mutex_);
    std::uint16_t last_id_ KELP_GUARDED_BY(mutex_) = 0;
    int workers_ KELP_GUARDED_BY(mutex_) = 0;
    int busy_ KELP_GUARDED_BY(mutex_) = 0;
    int group_ KELP_GUARDED_BY(mutex_) = -1;
    bool start_tried_ KELP_GUARDED_BY(mutex_) = false;
    bool started_ KELP_GUARDED_BY(mutex_) = false;
    bool stopping_ KELP_GUARDED_BY(mutex_) = false;
    bool finished_ KELP_GUARDED_BY(mutex_) = false;
    bool reported_ KELP_GUARDED_BY(mutex_) = false;  // that a worker was left behind
    CondVar worker_gone_;
};

/// The task that the thread runs, while the scope lasts.
class CurrentTaskScope {
  public:
    explicit CurrentTaskScope(KelpTask* task) noexcept;
    ~CurrentTaskScope();
    CurrentTaskScope(const CurrentTaskScope&) = delete;
    CurrentTaskScope& operator=(const CurrentTaskScope&) = delete;

  private:
    KelpTask* const outer_;
};

}  // namespace kelp::task
