// Design notes. The object is made under the lock of all singletons, but the process is not
// ended there: exit() runs what the process registered for its end, and that lock is among
// what goes. So a constructor that fails cleans up, throws, and Instance() ends the process
// when the lock is free. Threads that waited for it fail in turn; the first one ends the
// process, since exit() is one thread's.

#include <ace/OS_NS_stdlib.h>
#include <ace/Thread_Manager.h>

#include <memory>
#include <mutex>

#include "base/singleton.h"
#include "frameutil/log.h"
#include "frameutil/platform.h"
#include "frameutil/start.h"

namespace FrameUtil {

namespace {

/// A server without its workers would accept commands and answer none of them.
struct NoWorkers {};

[[noreturn]] void EndProcess() {
    static std::mutex& ending = *new std::mutex;  // never destroyed: held at the very end
    ending.lock();
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
        Trace("Initialize frame task manager fail!\n");
        KelpAppMgr::Destroy();
        manager.reset();
        throw NoWorkers();
    }
    m_pTaskMgr = manager.release();
}

CFrameTaskMgr* CFrameTaskMgr::Instance() {
    try {
        return Singleton<CFrameTaskMgr>::Instance(m_pInstance);
    } catch (const NoWorkers&) {
        EndProcess();
    }
}

void CFrameTaskMgr::Destroy() {
    Singleton<CFrameTaskMgr>::Destroy(m_pInstance);
}

}  // namespace FrameUtil
