#include "task/manager.h"

#include <ace/Thread_Manager.h>
#include <cxxabi.h>

#include <algorithm>

#include "kelp/log.h"
#include "message/current.h"
#include "task/execute.h"

namespace kelp::task {
namespace {

const LocationInfo kWhere("task", "", 0);
constexpr std::uint16_t kFirstDynamicId = 0x1000;  // those below are static numbers
constexpr int kMostThreads = 1000;

thread_local KelpTask* t_current_task = nullptr;

ACE_THR_FUNC_RETURN WorkerMain(void* argument) {
    const std::unique_ptr<std::shared_ptr<Manager>> manager(
        static_cast<std::shared_ptr<Manager>*>(argument));
    (*manager)->Work();
    return nullptr;
}

thread_local const Manager* t_worker_of = nullptr;

}  // namespace

CurrentTaskScope::CurrentTaskScope(KelpTask* task) noexcept : outer_(t_current_task) {
    t_current_task = task;
}
CurrentTaskScope::~CurrentTaskScope() {
    t_current_task = outer_;
}

TaskState::TaskState(KelpTask* task, KelpTaskMgr* mgr, std::shared_ptr<Manager> shared,
                     const char* label)
    : self(task),
      shell(mgr),
      manager(std::move(shared)),
      name(label == nullptr ? "" : label),
      arrival(manager->core().bus().poller()) {}

void TaskState::OnTimer(long timer) noexcept {
    manager->PutTimer(*this, timer);
}

Manager::Manager(std::shared_ptr<Core> core, KelpTaskMgr* shell, ACE_Thread_Manager* threads,
                 std::uint8_t id, int thread_count)
    : core_(std::move(core)),
      shell_(shell),
      threads_(threads != nullptr ? threads : ACE_Thread_Manager::instance()),
      id_(id),
      thread_count_(thread_count),
      idle_(core_->bus().poller()) {}

Manager::~Manager() = default;

// ---- workers

/// A worker's place among the workers, given back however the thread ends: a handler may
/// end it, and the pool must not shrink for that.
class Manager::Presence {
  public:
    explicit Presence(Manager& manager) : manager_(manager) { t_worker_of = &manager; }
    ~Presence() {
        t_worker_of = nullptr;
        manager_.WorkerGone(orderly_);
    }
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;
    void SetOrderly() { orderly_ = true; }

  private:
    Manager& manager_;
    bool orderly_ = false;
};

bool Manager::SpawnWorker() {
    auto argument = std::make_unique<std::shared_ptr<Manager>>(shared_from_this());
    int group = -1;
    {
        MutexLock lock(mutex_);
        group = group_;
        ++workers_;
    }
    group = threads_->spawn(&WorkerMain, argument.get(), THR_NEW_LWP | THR_JOINABLE, nullptr,
                            nullptr, ACE_DEFAULT_THREAD_PRIORITY, group);
    MutexLock lock(mutex_);
    if (group == -1) {
        --workers_;
        return false;
    }
    group_ = group;
    static_cast<void>(argument.release());  // the thread's now
    return true;
}

bool Manager::Start() {
    {
        MutexLock lock(mutex_);
        if (start_tried_ || stopping_) {
            return false;
        }
        start_tried_ = true;
    }
    if (id_ == 0 || thread_count_ < 1 || thread_count_ > kMostThreads) {
        LogProcess::Error(0,
                          "[task] task manager " + std::to_string(id_) + " cannot have " +
                              std::to_string(thread_count_) + " threads",
                          kWhere);
        return false;
    }
    for (int i = 0; i < thread_count_; ++i) {
        if (!SpawnWorker()) {
            LogProcess::Error(0,
                              "[task] task manager " + std::to_string(id_) + " could start only " +
                                  std::to_string(i) + " of " + std::to_string(thread_count_) +
                                  " threads",
                              kWhere);
            BeginStop();
            FinishStop(base::SystemMonotonicNs() + base::kSecond);
            return false;
        }
    }
    MutexLock lock(mutex_);
    started_ = true;
    return true;
}

bool Manager::started() {
    MutexLock lock(mutex_);
    return started_;
}

void Manager::WorkerGone(bool orderly) noexcept {
    bool replace = false;
    {
        MutexLock lock(mutex_);
        --workers_;
        replace = !orderly && !stopping_;
        if (!orderly) {
            --busy_;
        }
        worker_gone_.NotifyAll();
    }
    if (!replace) {
        return;
    }
    try {
        if (SpawnWorker()) {
            LogProcess::Warn("[task] a handler ended its worker thread in task manager " +
                                 std::to_string(id_) + "; a new one took its place",
                             kWhere);
            return;
        }
    } catch (const std::bad_alloc&) {
    }
    LogProcess::Error(0, "[task] task manager " + std::to_string(id_) + " lost a worker thread",
                      kWhere);
}

void Manager::Work() {
    Presence presence(*this);
    mutex_.Lock();
    for (;;) {
        if (!work_.empty()) {
            const Item item = work_.PopFront();
            if (item.task == nullptr) {
                --waiting_;
                waiting_octets_ -=
                    item.request != nullptr ? message::MessageOctets(item.request) : 0;
            }
            if (!work_.empty()) {
                idle_.WakeOne();
            }
            ++busy_;
            mutex_.Unlock();
            Run(item);
            mutex_.Lock();
            --busy_;
        } else if (stopping_) {
            break;
        } else {
            idle_.Wait(mutex_, core_->clock().Slice(base::kNever, 0));
        }
    }
    mutex_.Unlock();
    presence.SetOrderly();
}

void Manager::Run(Item item) {
    if (item.event != nullptr) {
        const std::unique_ptr<EventDelivery> event(item.event);
        core_->events().Run(*event);
    } else if (item.task != nullptr) {
        RunTurn(*item.task);
    } else {
        RunRequest(message::MsgPtr(item.request), *item.registration);
    }
}

void Manager::RunRequest(message::MsgPtr msg, const KelpTaskRegister& registration) {
    KelpGnlTask* task = nullptr;
    try {
        task = registration.taskCreator != nullptr ? registration.taskCreator(shell_)
                                                   : new KelpGnlTask(shell_);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        LogProcess::Error(
            KELP_MSG_NO_MEMORY,
            "[task] the task factory of command " + std::to_string(msg->cmdCode) + " threw",
            kWhere);
    }
    if (task == nullptr || task->state_ == nullptr || task->state_->manager.get() != this) {
        LogProcess::Error(KELP_MSG_NO_MEMORY,
                          "[task] no task for command " + std::to_string(msg->cmdCode), kWhere);
        delete task;
        core_->Refuse(*msg, KELP_MSG_NO_MEMORY);
        return;
    }
    TaskState& state = *task->state_;
    {
        MutexLock lock(mutex_);
        state.running = true;
    }
    // The turn ends however the handler ends.
    struct Turn {
        Manager& manager;
        TaskState& state;
        ~Turn() { manager.EndTurn(state); }
    } turn{*this, state};
    CurrentTaskScope current(task);
    ExecuteCommand(*core_, *task, std::move(msg), registration, true);
}

void Manager::RunTurn(TaskState& task) {
    CmdMSG* taken = nullptr;
    long timer = 0;
    {
        MutexLock lock(mutex_);
        task.in_queue = false;
        if (task.running) {
            return;  // it was being run already; the end of that turn looks again
        }
        task.running = true;
        if (!task.fired.empty()) {
            timer = task.fired.PopFront();
        } else if (!task.messages.empty()) {
            taken = task.messages.PopFront();
        }
    }
    struct Turn {
        Manager& manager;
        TaskState& state;
        ~Turn() { manager.EndTurn(state); }
    } turn{*this, task};
    CurrentTaskScope current(task.self);
    message::MsgPtr msg(taken);
    RunTask(*core_, *task.self, std::move(msg), timer);
}

void Manager::EndTurn(TaskState& task) {
    {
        MutexLock lock(mutex_);
        task.running = false;
        if (task.in_queue) {
            return;
        }
        if (!stopping_ && (!task.messages.empty() || !task.fired.empty())) {
            MakeReady(task);
            return;
        }
        if (task.is_static) {
            return;
        }
        if (task.state.load() == KELP_TASK_WAITING && !stopping_) {
            if (task.id == 0) {
                task.id = FreeId();
                if (task.id != 0) {
                    tasks_[task.id] = &task;
                }
            }
            if (task.id != 0) {
                return;
            }
        }
    }
    Detach(task);
    delete task.self;
}

// ---- work from outside

bool Manager::QueueTakes(std::size_t octets) const {
    const KelpAppOptions& options = core_->options();
    return waiting_ < options.requestQueueLimit &&
           (waiting_ == 0 || waiting_octets_ + octets <= 4 * options.maxFrameOctets);
}

std::uint32_t Manager::PutRequest(message::MsgPtr& msg, const KelpTaskRegister* registration) {
    const std::size_t octets = message::MessageOctets(msg.get());
    MutexLock lock(mutex_);
    if (stopping_) {
        return KELP_MSG_STOPPED;
    }
    if (!QueueTakes(octets)) {
        return KELP_MSG_QUEUE_FULL;
    }
    work_.PushBack({msg.get(), registration, nullptr, nullptr});
    static_cast<void>(msg.release());  // NOLINT(bugprone-unused-return-value)
    ++waiting_;
    waiting_octets_ += octets;
    idle_.WakeOne();
    return KELP_MSG_OK;
}

bool Manager::PutEvent(std::unique_ptr<EventDelivery> event) {
    MutexLock lock(mutex_);
    if (stopping_ || !QueueTakes(0)) {
        return false;
    }
    work_.PushBack({nullptr, nullptr, nullptr, event.get()});
    static_cast<void>(event.release());
    ++waiting_;
    idle_.WakeOne();
    return true;
}

std::uint32_t Manager::PutMessage(message::MsgPtr& msg) {
    MutexLock lock(mutex_);
    const auto found = tasks_.find(msg->dstTaskId);
    if (found == tasks_.end()) {
        return KELP_MSG_NO_TASK;
    }
    if (stopping_) {
        return KELP_MSG_STOPPED;
    }
    TaskState& task = *found->second;
    // Requests of others never take the room that answers to this task's own need.
    const std::size_t limit = core_->options().taskQueueLimit;
    const bool is_answer = (msg->flags & KELP_MSG_REPLY) != 0;
    if (task.messages.size() >= (is_answer ? 2 * limit : limit)) {
        return KELP_MSG_QUEUE_FULL;
    }
    task.messages.PushBack(msg.get());
    static_cast<void>(msg.release());
    if (task.receiving) {
        task.arrival.WakeOne();
    } else {
        MakeReady(task);
    }
    return KELP_MSG_OK;
}

void Manager::PutTimer(TaskState& task, long timer) {
    MutexLock lock(mutex_);
    if (task.gone || stopping_) {
        return;
    }
    for (std::size_t i = 0; i < task.fired.size(); ++i) {
        if (task.fired[i] == timer) {
            return;  // the task has not come to the last one yet
        }
    }
    try {
        task.fired.PushBack(timer);
        MakeReady(task);
    } catch (const std::bad_alloc&) {
        return;  // it fires again
    }
}

void Manager::MakeReady(TaskState& task) {
    if (!task.running && !task.in_queue && !task.gone) {
        work_.PushBack({nullptr, nullptr, &task, nullptr});
        task.in_queue = true;
        idle_.WakeOne();
    }
}

// ---- what tasks ask for

std::uint16_t Manager::FreeId() {
    if (tasks_.size() >= 0x10000 - kFirstDynamicId) {
        return 0;
    }
    do {
        last_id_ = last_id_ < kFirstDynamicId || last_id_ == 0xFFFF
                       ? kFirstDynamicId
                       : static_cast<std::uint16_t>(last_id_ + 1);
    } while (tasks_.count(last_id_) != 0);
    return last_id_;
}

std::uint16_t Manager::Identify(TaskState& task) {
    MutexLock lock(mutex_);
    if (task.id == 0 && !task.gone) {
        task.id = FreeId();
        if (task.id != 0) {
            tasks_[task.id] = &task;
        }
    }
    return task.id;
}

bool Manager::AddStatic(TaskState& task, std::uint16_t number) {
    MutexLock lock(mutex_);
    if (number == 0 || number >= kFirstDynamicId || stopping_ || task.is_static ||
        tasks_.count(number) != 0) {
        return false;
    }
    if (task.id != 0) {
        tasks_.erase(task.id);
    }
    task.id = number;
    task.is_static = true;
    tasks_[number] = &task;
    return true;
}

std::uint32_t Manager::Receive(TaskState& task, CmdMSG*& msg, int seconds) {
    const base::Clock& clock = core_->clock();
    const std::int64_t deadline = clock.After(std::max<std::int64_t>(seconds, 0) * base::kSecond);
    MutexLock lock(mutex_);
    for (;;) {
        if (!task.messages.empty()) {
            msg = task.messages.PopFront();
            return KELP_MSG_OK;
        }
        if (stopping_) {
            return KELP_MSG_STOPPED;
        }
        const std::int64_t now = clock.Now();
        if (now >= deadline) {
            return KELP_MSG_TIMEOUT;
        }
        task.receiving = true;
        task.arrival.Wait(mutex_, clock.Slice(deadline, now));
        task.receiving = false;
    }
}

void Manager::PutOwn(TaskState& task, CmdMSG* msg, bool at_head) {
    MutexLock lock(mutex_);
    if (at_head) {
        task.messages.PushFront(msg);
    } else {
        task.messages.PushBack(msg);
    }
    if (task.receiving) {
        task.arrival.WakeOne();
    } else {
        MakeReady(task);
    }
}

void Manager::CancelTimer(TaskState& task, long timer) {
    MutexLock lock(mutex_);
    task.fired.Retain([timer](long fired) { return fired != timer; });
}

void Manager::Detach(TaskState& task) {
    MutexLock lock(mutex_);
    task.gone = true;
    if (task.id != 0) {
        const auto found = tasks_.find(task.id);
        if (found != tasks_.end() && found->second == &task) {
            tasks_.erase(found);
        }
    }
    if (task.in_queue) {
        work_.Retain([&task](const Item& item) { return item.task != &task; });
        task.in_queue = false;
    }
    while (!task.messages.empty()) {
        KelpMsgFree(task.messages.PopFront());
    }
}

bool Manager::stopping() {
    MutexLock lock(mutex_);
    return stopping_;
}

// ---- the end

void Manager::BeginStop() {
    base::Ring<Item> refused;
    {
        MutexLock lock(mutex_);
        stopping_ = true;
        // Turns of tasks stay: a worker runs each once more, and ends the tasks with it.
        work_.Retain([&refused](const Item& item) {
            if (item.task == nullptr) {
                refused.PushBack(item);
            }
            return item.task != nullptr;
        });
        waiting_ = 0;
        waiting_octets_ = 0;
        idle_.WakeAll();
        for (const auto& [id, task] : tasks_) {
            task->arrival.WakeAll();
        }
    }
    while (!refused.empty()) {
        const Item item = refused.PopFront();
        if (item.request != nullptr) {
            const message::MsgPtr request(item.request);
            core_->Refuse(*request, KELP_MSG_STOPPED);
        }
        delete item.event;
    }
}

bool Manager::FinishStop(std::int64_t until_ns) {
    const int self = t_worker_of == this ? 1 : 0;
    int group = -1;
    {
        MutexLock lock(mutex_);
        if (finished_) {
            return true;
        }
        while (workers_ > self && base::SystemMonotonicNs() < until_ns) {
            idle_.WakeAll();
            for (const auto& [id, task] : tasks_) {
                task->arrival.WakeAll();
            }
            worker_gone_.WaitUntil(mutex_, base::RealPointAfter(10 * base::kMillisecond));
        }
        if (workers_ > 0) {
            if (workers_ > self && !reported_) {
                reported_ = true;
                LogProcess::Error(KELP_MSG_STOPPED,
                                  "[task] " + std::to_string(workers_ - self) +
                                      " handlers of task manager " + std::to_string(id_) +
                                      " did not return in time; their threads are abandoned",
                                  kWhere);
            }
            return false;
        }
        finished_ = true;
        group = group_;
    }
    if (group != -1) {
        threads_->wait_grp(group);
    }
    // No worker is left: nobody else looks at the tasks.
    for (;;) {
        TaskState* task = nullptr;
        {
            MutexLock lock(mutex_);
            for (const auto& [id, state] : tasks_) {
                if (state->is_static || state->state.load() == KELP_TASK_WAITING) {
                    task = state;
                    break;
                }
            }
            if (task == nullptr && !work_.empty()) {
                task = work_[0].task;
            }
        }
        if (task == nullptr) {
            return true;
        }
        Detach(*task);
        delete task->self;
    }
}

std::string Manager::Report() {
    MutexLock lock(mutex_);
    return "task manager " + std::to_string(id_) + ": " + std::to_string(workers_) + " workers, " +
           std::to_string(busy_) + " busy, " + std::to_string(waiting_) + " requests waiting, " +
           std::to_string(tasks_.size()) + " tasks\n";
}

}  // namespace kelp::task

KelpTask* KelpGetCurrentTask() noexcept {
    return kelp::task::t_current_task;
}
