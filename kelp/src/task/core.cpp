#include "task/core.h"

#include <algorithm>
#include <new>
#include <thread>

#include "kelp/log.h"
#include "task/manager.h"

namespace kelp::task {
namespace {

const LocationInfo kWhere("task", "", 0);
constexpr std::int64_t kFlush = base::kSecond;

message::BusOptions BusOptionsOf(const KelpAppOptions& options) {
    message::BusOptions bus;
    bus.identity = {options.procId, options.procHandle, options.deskId};
    bus.listen = options.procId != 0;
    bus.run_dir = message::ChooseRunDir(options.runDir);
    bus.limits = {options.maxFrameOctets, options.sendQueueOctets};
    bus.max_connections = options.maxConnections;
    bus.frame_deadline_ns = options.frameDeadlineMs * base::kMillisecond;
    return bus;
}

const char* Describe(std::uint32_t code) {
    switch (code) {
        case KELP_MSG_NO_COMMAND:
            return "nobody registered it";
        case KELP_MSG_NO_TASK:
            return "its task manager or task is not here";
        case KELP_MSG_QUEUE_FULL:
            return "the queue is full";
        case KELP_MSG_NO_PEER:
            return "it is addressed to another process";
        default:
            return "the process stops";
    }
}

}  // namespace

Core::Core(const KelpAppOptions& options)
    : options_(options),
      clock_(options.monotonicNs),
      timers_(clock_),
      bus_(BusOptionsOf(options), *this, timers_),
      outside_(bus_, clock_),
      managers_(256) {}

bool ExpectsAnswer(const CmdMSG& request) {
    return (request.flags & KELP_MSG_REPLY) == 0 &&
           (request.serial != 0 || request.srcTaskMgr != 0);
}

bool Core::AddManager(const std::shared_ptr<Manager>& manager) {
    MutexLock lock(mutex_);
    std::shared_ptr<Manager>& place = managers_[manager->id()];
    if (manager->id() == 0 || place != nullptr || stopping_.load()) {
        return false;
    }
    place = manager;
    return true;
}

void Core::RemoveManager(const Manager* manager) {
    std::shared_ptr<Manager> last;
    MutexLock lock(mutex_);
    std::shared_ptr<Manager>& place = managers_[manager->id()];
    if (place.get() == manager) {
        last = std::move(place);
        place.reset();
    }
}

std::shared_ptr<Manager> Core::FindManager(std::uint8_t id) {
    MutexLock lock(mutex_);
    return managers_[id];
}

std::vector<std::shared_ptr<Manager>> Core::AllManagers() {
    std::vector<std::shared_ptr<Manager>> all;
    MutexLock lock(mutex_);
    std::copy_if(managers_.begin(), managers_.end(), std::back_inserter(all),
                 [](const auto& manager) { return manager != nullptr; });
    return all;
}

std::uint32_t Core::Send(message::MsgPtr msg) noexcept {
    try {
        return bus_.Send(std::move(msg));
    } catch (const std::bad_alloc&) {
        return KELP_MSG_NO_MEMORY;
    }
}

void Core::Refuse(const CmdMSG& request, std::uint32_t code) noexcept {
    if (!ExpectsAnswer(request)) {
        return;
    }
    message::MsgPtr answer(KelpMsgAllocAnswer(&request, 0));
    if (answer != nullptr) {
        answer->errorCode = code;
        Send(std::move(answer));
    }
}

void Core::Deliver(message::MsgPtr msg) noexcept {
    try {
        Dispatch(std::move(msg));
    } catch (const std::bad_alloc&) {
        LogProcess::Error(KELP_MSG_NO_MEMORY, "[task] a message was dropped: no memory", kWhere);
    }
}

void Core::Dispatch(message::MsgPtr msg) {
    if ((msg->flags & KELP_MSG_REPLY) != 0) {
        const bool taken = msg->dstTaskMgr == 0 ? outside_.TakeAnswer(msg) : [&] {
            const std::shared_ptr<Manager> manager = FindManager(msg->dstTaskMgr);
            return manager != nullptr && manager->PutMessage(msg) == KELP_MSG_OK;
        }();
        if (!taken) {
            LogProcess::Debug("[task] an answer that nobody waits for was dropped, command " +
                                  std::to_string(msg->cmdCode) + ", serial " +
                                  std::to_string(msg->serial),
                              kWhere);
        }
        return;
    }
    std::uint32_t code = KELP_MSG_NO_TASK;
    if (stopping_.load()) {
        code = KELP_MSG_STOPPED;
    } else if (msg->dstProcId != options_.procId ||
               (msg->dstProcHandle != 0 && msg->dstProcHandle != options_.procHandle)) {
        code = KELP_MSG_NO_PEER;
    } else if (msg->dstTaskId != 0) {
        if (const std::shared_ptr<Manager> manager = FindManager(msg->dstTaskMgr)) {
            code = manager->PutMessage(msg);
        }
    } else if (const KelpTaskRegister* found = KelpTaskCreator::Instance()->Find(msg->cmdCode)) {
        if (const std::shared_ptr<Manager> manager = FindManager(found->taskMgrId)) {
            code = manager->PutRequest(msg, found);
        }
    } else {
        code = KELP_MSG_NO_COMMAND;
    }
    if (code != KELP_MSG_OK) {
        log_.Warn("[task] command " + std::to_string(msg->cmdCode) + " from process " +
                  std::to_string(msg->srcProcId) + "." + std::to_string(msg->srcProcHandle) +
                  " was refused: " + Describe(code));
        Refuse(*msg, code);
    }
}

void Core::Stop() {
    stopping_.store(true);
    const std::int64_t until = base::SystemMonotonicNs() + options_.shutdownMs * base::kMillisecond;
    outside_.Stop();
    events_.Clear();
    bus_.StopAccepting();
    for (const std::shared_ptr<Manager>& manager : AllManagers()) {
        manager->BeginStop();
    }
    for (const std::shared_ptr<Manager>& manager : AllManagers()) {
        manager->FinishStop(until);
    }
    timers_.Stop();
    bus_.Stop(kFlush);
    MutexLock lock(mutex_);
    managers_.assign(256, nullptr);
}

std::string Core::Report() {
    std::string text = bus_.Report();
    for (const std::shared_ptr<Manager>& manager : AllManagers()) {
        text += manager->Report();
    }
    return text;
}

}  // namespace kelp::task
