#include "kelp/log.h"
#include "kelp/task.h"
#include "task/manager.h"

KelpTaskMgr::KelpTaskMgr(KelpAppMgr* appMgr, ACE_Thread_Manager* threads, unsigned char id,
                         int threadCount) {
    const auto core = appMgr == nullptr ? nullptr : kelp::task::CurrentCore();
    if (core != nullptr) {
        state_ = std::make_shared<kelp::task::Manager>(core, this, threads, id, threadCount);
    }
}

KelpTaskMgr::~KelpTaskMgr() {
    if (state_ == nullptr) {
        return;
    }
    kelp::task::ForgetManager(this);
    kelp::task::Core& core = state_->core();
    core.RemoveManager(state_.get());
    state_->BeginStop();
    state_->FinishStop(kelp::base::SystemMonotonicNs() +
                       core.options().shutdownMs * kelp::base::kMillisecond);
}

bool KelpTaskMgr::Initialize() {
    if (state_ == nullptr) {
        LogProcess::Error(KELP_MSG_STOPPED,
                          "[task] a task manager was made while nothing was initialised",
                          LocationInfo::getLocationUnavailable());
        return false;
    }
    return state_->Start();
}

unsigned char KelpTaskMgr::GetTaskMgrId() const noexcept {
    return state_ == nullptr ? 0 : state_->id();
}

bool KelpTaskMgr::InsertStaticTask(unsigned short number, KelpTask* task) {
    if (state_ == nullptr || task == nullptr || task->state_ == nullptr ||
        task->state_->manager != state_) {
        return false;
    }
    return state_->AddStatic(*task->state_, number);
}

KelpGnlTaskMgr::KelpGnlTaskMgr(KelpAppMgr* appMgr, ACE_Thread_Manager* threads, unsigned char id,
                               int threadCount)
    : KelpTaskMgr(appMgr, threads, id, threadCount) {}

KelpGnlTaskMgr::~KelpGnlTaskMgr() = default;
