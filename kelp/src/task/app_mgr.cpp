// Design notes. `mutex` guards the pointer to the process's core; the core guards itself.
// Who uses the core shares it, so a call that comes while Destroy() runs finds a core that
// refuses, not one that is gone. The object behind Instance() has no state of its own.

#include <algorithm>
#include <atomic>
#include <vector>

#include "kelp/log.h"
#include "message/identity.h"
#include "task/core.h"
#include "task/manager.h"

namespace {

const LocationInfo kWhere("KelpAppMgr", "", 0);

struct Process {
    kelp::Mutex mutex;
    std::shared_ptr<kelp::task::Core> core KELP_GUARDED_BY(mutex);
    std::vector<KelpTaskMgr*> owned KELP_GUARDED_BY(mutex);
    std::vector<KelpTaskMgr*> abandoned KELP_GUARDED_BY(mutex);  // until their threads end
    std::atomic<bool> initialized{false};
};

Process& TheProcess() {
    static auto* const process = new Process;  // outlives whatever static object asks late
    return *process;
}

}  // namespace

std::shared_ptr<kelp::task::Core> kelp::task::CurrentCore() {
    Process& process = TheProcess();
    MutexLock lock(process.mutex);
    return process.core;
}

KelpAppOptions KelpAppOptions::FromEnvironment() {
    const kelp::message::Identity found = kelp::message::IdentityFromEnvironment();
    KelpAppOptions options;
    options.procId = found.proc_id;
    options.procHandle = found.proc_handle != 0 ? found.proc_handle : options.procHandle;
    options.deskId = found.desk_id;
    return options;
}

bool KelpAppMgr::Initialize(const KelpAppOptions& options) {
    Process& process = TheProcess();
    kelp::MutexLock lock(process.mutex);
    if (process.core != nullptr) {
        LogProcess::Error(0, "[KelpAppMgr] the process is initialised already", kWhere);
        return false;
    }
    auto core = std::make_shared<kelp::task::Core>(options);
    std::string why;
    if (!core->Start(why)) {
        LogProcess::Error(0, "[KelpAppMgr] not initialised: " + why, kWhere);
        return false;
    }
    kelp::message::SetIdentity({options.procId, options.procHandle, options.deskId});
    process.core = std::move(core);
    process.initialized.store(true);
    return true;
}

bool KelpAppMgr::IsInitialized() noexcept {
    return TheProcess().initialized.load();
}

KelpAppMgr* KelpAppMgr::Instance() noexcept {
    static KelpAppMgr instance;  // without state: outlives static objects that use it
    return &instance;
}

void KelpAppMgr::Destroy() {
    Process& process = TheProcess();
    process.initialized.store(false);
    std::shared_ptr<kelp::task::Core> core;
    {
        kelp::MutexLock lock(process.mutex);
        core.swap(process.core);
    }
    if (core == nullptr) {
        return;
    }
    core->Stop();
    std::vector<KelpTaskMgr*> ending;
    {
        kelp::MutexLock lock(process.mutex);
        ending.swap(process.owned);
        ending.insert(ending.end(), process.abandoned.begin(), process.abandoned.end());
        process.abandoned.clear();
    }
    // Without the lock: tasks that go with their manager may use what is left of the process.
    for (KelpTaskMgr* mgr : ending) {
        if (!mgr->state_->started()) {
            continue;  // it was never initialised and stays its maker's
        }
        if (mgr->state_->FinishStop(0)) {
            delete mgr;
        } else {
            // A thread was left behind and looks at it: until a later call.
            kelp::MutexLock lock(process.mutex);
            process.abandoned.push_back(mgr);
        }
    }
}

void kelp::task::ForgetManager(const KelpTaskMgr* mgr) {
    Process& process = TheProcess();
    MutexLock lock(process.mutex);
    std::erase(process.owned, mgr);
}

bool KelpAppMgr::TMInsertTaskMgr(KelpTaskMgr* mgr, bool owned) {
    const auto core = kelp::task::CurrentCore();
    if (mgr == nullptr || mgr->state_ == nullptr || core == nullptr ||
        &mgr->state_->core() != core.get() || !core->AddManager(mgr->state_)) {
        LogProcess::Error(0,
                          "[KelpAppMgr] a task manager was not inserted: its identifier is 0 "
                          "or taken, or nothing is initialised",
                          kWhere);
        return false;
    }
    if (owned) {
        Process& process = TheProcess();
        kelp::MutexLock lock(process.mutex);
        process.owned.push_back(mgr);
    }
    return true;
}

int KelpAppMgr::SendMSG(CmdMSG* msg) {
    kelp::message::MsgPtr taken(msg);
    const auto core = kelp::task::CurrentCore();
    return msg != nullptr && core != nullptr && core->Send(std::move(taken)) == KELP_MSG_OK ? 1 : 0;
}

int KelpAppMgr::KelpSendSynMsgToMDP(CmdMSG* msg, CmdMSG*& reply, int timeoutSeconds) {
    kelp::message::MsgPtr taken(msg);
    kelp::message::MsgPtr answer;
    const auto core = kelp::task::CurrentCore();
    std::uint32_t code = KELP_MSG_STOPPED;
    if (msg == nullptr) {
        code = KELP_MSG_SEND_FAILED;
    } else if (core != nullptr) {
        code = core->outside().Call(std::move(taken), answer, timeoutSeconds);
    }
    const bool answered = code == KELP_MSG_OK;
    const bool succeeded = answered && answer->errorCode == 0;
    reply = answered ? answer.release() : kelp::message::ErrorSlot(code);
    return succeeded ? 1 : 0;
}
