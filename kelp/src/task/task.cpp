#include <algorithm>
#include <new>

#include "kelp/log.h"
#include "kelp/task.h"
#include "task/execute.h"
#include "task/manager.h"

using kelp::task::TaskState;

KelpTask::KelpTask(KelpTaskMgr* mgr, const char* name) {
    if (mgr != nullptr && mgr->state_ != nullptr) {
        state_ = std::make_unique<TaskState>(this, mgr, mgr->state_, name);
    }
}

KelpTask::~KelpTask() {
    if (state_ == nullptr) {
        return;
    }
    if (state_->has_timers.load()) {
        state_->manager->core().timers().CancelAll(state_.get());
    }
    state_->manager->Detach(*state_);
}

void KelpTask::KelpTaskMessage(CmdMSG* msg) {
    kelp::message::MsgPtr owned(msg);
    if (msg == nullptr || state_ == nullptr) {
        return;
    }
    kelp::task::Core& core = state_->manager->core();
    if ((msg->flags & KELP_MSG_REPLY) != 0) {
        LogProcess::Debug("[task] an answer that nobody waits for was dropped, command " +
                              std::to_string(msg->cmdCode) + ", serial " +
                              std::to_string(msg->serial),
                          LocationInfo::getLocationUnavailable());
        return;
    }
    const KelpTaskRegister* found = KelpTaskCreator::Instance()->Find(msg->cmdCode);
    if (found == nullptr || dynamic_cast<KelpGnlTask*>(this) == nullptr) {
        core.Refuse(*msg, KELP_MSG_NO_COMMAND);
        return;
    }
    kelp::task::ExecuteCommand(core, *this, std::move(owned), *found, false);
}

void KelpTask::KelpTaskTimeInterval(long) {}

long KelpTask::SetTaskTimeInterval(long interval) {
    constexpr long kLongest = 1L << 32;
    if (interval < 1 || state_ == nullptr || state_->manager->stopping()) {
        return -1;
    }
    state_->has_timers.store(true);
    return state_->manager->core().timers().Arm(state_.get(),
                                                std::min(interval, kLongest) * kelp::base::kSecond);
}

bool KelpTask::DeleteTaskTimeInterval(long timerId) {
    if (state_ == nullptr || !state_->manager->core().timers().Cancel(timerId)) {
        return false;
    }
    state_->manager->CancelTimer(*state_, timerId);
    return true;
}

void KelpTask::SetTaskState(int state) noexcept {
    if (state_ != nullptr) {
        state_->state.store(state);
    }
}

int KelpTask::GetTaskState() const noexcept {
    return state_ == nullptr ? static_cast<int>(KELP_TASK_NEW) : state_->state.load();
}

unsigned short KelpTask::GetTaskId() {
    return state_ == nullptr ? 0 : state_->manager->Identify(*state_);
}

KelpTaskMgr* KelpTask::GetTaskMgr() const noexcept {
    return state_ == nullptr ? nullptr : state_->shell;
}

const char* KelpTask::GetTaskName() const noexcept {
    return state_ == nullptr ? "" : state_->name.c_str();
}

std::uint32_t KelpTask::AllocMsgSn() {
    if (state_ == nullptr || state_->serials.size() >= KELP_TASK_MAX_SERIALS ||
        state_->manager->stopping() || GetTaskId() == 0) {
        return 0;
    }
    const std::uint32_t serial = state_->manager->core().bus().NextSerial();
    state_->serials.push_back(serial);
    return serial;
}

void KelpTask::RevokeMsgSn(std::uint32_t serial) {
    if (state_ != nullptr) {
        std::erase(state_->serials, serial);
    }
}

int KelpTask::KelpCmdSendAnsFrameCB(CmdMSG* msg) {
    kelp::message::MsgPtr owned(msg);
    if (msg == nullptr || state_ == nullptr) {
        return 0;
    }
    const bool expects_answer = (msg->flags & KELP_MSG_REPLY) == 0 && msg->serial != 0;
    // Made while the request is still there to be answered.
    kelp::message::MsgPtr failure(expects_answer ? KelpMsgAllocAnswer(msg, 0) : nullptr);
    const std::uint32_t code = state_->manager->core().Send(std::move(owned));
    if (code != KELP_MSG_OK && failure != nullptr) {
        failure->errorCode = code;
        try {
            state_->manager->PutOwn(*state_, failure.get(), false);
            static_cast<void>(failure.release());
        } catch (const std::bad_alloc&) {
            return 0;  // who waits for the answer has the time-out left
        }
    }
    return code == KELP_MSG_OK ? 1 : 0;
}

int KelpTask::KelpSynRecvEx(CmdMSG*& msg, int seconds) {
    std::uint32_t code = KELP_MSG_STOPPED;
    if (state_ != nullptr) {
        GetTaskId();  // what has no identifier is not found by any message
        code = state_->manager->Receive(*state_, msg, seconds);
    }
    if (code != KELP_MSG_OK) {
        msg = kelp::message::ErrorSlot(code);
        return 0;
    }
    return 1;
}

void KelpTask::EnqueueHead(CmdMSG* msg) {
    if (msg == nullptr) {
        return;
    }
    try {
        if (state_ != nullptr) {
            state_->manager->PutOwn(*state_, msg, true);
            return;
        }
    } catch (const std::bad_alloc&) {
        LogProcess::Error(KELP_MSG_NO_MEMORY, "[task] a message was dropped: no memory",
                          LocationInfo::getLocationUnavailable());
    }
    KelpMsgFree(msg);
}

KelpGnlTask::KelpGnlTask(KelpTaskMgr* mgr, const char* name) : KelpTask(mgr, name) {}
KelpGnlTask::~KelpGnlTask() = default;
