#include <ace/OS_NS_stdlib.h>
#include <ace/Thread_Manager.h>

#include <memory>

#include "base/singleton.h"
#include "frameutil/log.h"
#include "frameutil/platform.h"
#include "frameutil/start.h"

namespace FrameUtil {

namespace {

// A server without its workers would accept commands and answer none of them.
[[noreturn]] void EndProcess(std::unique_ptr<KelpGnlTaskMgr> manager) {
    Trace("Initialize frame task manager fail!\n");
    KelpAppMgr::Destroy();
    manager.reset();
    ACE_OS::exit(1);
    __builtin_unreachable();
}

}  // namespace

constinit std::atomic<CFrameTaskMgr*> CFrameTaskMgr::m_pInstance{nullptr};

CFrameTaskMgr::CFrameTaskMgr() {
    const int threads = GetFrameTaskMgrMaxThreadNum(0);
    KelpAppMgr* const app = KelpAppMgr::Instance();
    auto manager =
        std::make_unique<KelpGnlTaskMgr>(app, ACE_Thread_Manager::instance(), kId, threads);
    if (!manager->Initialize() || !app->TMInsertTaskMgr(manager.get(), true)) {
        EndProcess(std::move(manager));
    }
    m_pTaskMgr = manager.release();
}

CFrameTaskMgr* CFrameTaskMgr::Instance() {
    return Singleton<CFrameTaskMgr>::Instance(m_pInstance);
}

void CFrameTaskMgr::Destroy() {
    Singleton<CFrameTaskMgr>::Destroy(m_pInstance);
}

}  // namespace FrameUtil
