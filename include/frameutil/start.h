// frameutil/start.h - the beginning and the end of a process that uses the library.
//
//     int main() {
//         KelpAppOptions options = KelpAppOptions::FromEnvironment();
//         options.procId = 3001;
//         if (!KelpAppMgr::Initialize(options)) return 1;
//         FrameUtil::Init();
//         FrameUtil::QWhiteList::Instance()->Init("/opt/nms/oss/etc/");
//         FrameUtil::ErrorManage::Instance()->InitRes("/opt/nms/oss/res/errors.res");
//         KelpAppMgr::WaitForStopSignal();
//         FrameUtil::DestroyKelp();
//     }
//
// docs/startup.md is the manual.
//
// Thread rule: Init() and DestroyKelp() - one thread, the one that begins and ends the
// process; CFrameTaskMgr is thread-safe, but Destroy().
#pragma once

#include <atomic>

#include "frameutil/export.h"
#include "kelp/task.h"

namespace FrameUtil {

template <class T>
class Singleton;

/// The event that Init() posts. Its parameter is null.
inline constexpr unsigned int FRAME_START_EVENT = 0x1000C;

/// Starts the library. REQUIRES: KelpAppMgr::Initialize() succeeded. In this order: makes
/// the frame task manager (CFrameTaskMgr::Instance(), which ends the process should that
/// fail), loads the REST process groups (LoadMRBRestGroup(); it traces a failure, and
/// groups are then loaded when they are first asked for), and posts FRAME_START_EVENT to
/// whoever subscribed before. Without an event manager it stops after the first step.
/// Throws nothing but std::bad_alloc.
FRAMEUTIL_API void Init();

/// Ends the platform and then what the library made of its own, in this order:
/// KelpDebugMgr::Destroy(), KELPsac::KELPInstance::cleanup(),
/// KELPcommon::TraceClient::Destroy(), LogProcess::Destroy(), KelpAppMgr::Destroy(),
/// CFrameTaskMgr::Destroy(), ErrorManage::Destroy().
///
/// The log's file is closed before handlers have ended, deliberately: what they log from
/// there on goes to standard error. No thread of the platform or the library is left,
/// unless a handler did not return within KelpAppOptions::shutdownMs. It is not an error
/// to call it without Init() or twice; a process may start again afterwards.
FRAMEUTIL_API void DestroyKelp();

/// The library's worker threads: task manager 200 of the platform, with as many threads as
/// GetFrameTaskMgrMaxThreadNum(0) says. Commands that are declared with `useSharedMgr`
/// (frameutil/msg.h) run on them.
class FRAMEUTIL_API CFrameTaskMgr {
  public:
    /// The identifier of the task manager.
    static constexpr unsigned char kId = 200;

    /// The process's object. The first call makes the task manager, starts its threads and
    /// gives it to the application manager, which owns it from then on.
    ///
    /// Should any of that fail - nothing is initialised, the system gives no more threads,
    /// the identifier is taken -, the process cannot serve: a trace "Initialize frame task
    /// manager fail!\n" follows the platform's log line with the reason, the application
    /// manager is destroyed, and the process ends with exit status 1.
    ///
    /// Null only when the lock under which it is made cannot be had. Throws
    /// std::bad_alloc, and the next call tries again.
    static CFrameTaskMgr* Instance();

    /// Forgets the task manager, which is the application manager's: it goes with
    /// KelpAppMgr::Destroy(), and this belongs behind that. It is not an error if there is
    /// none.
    static void Destroy();

    /// The task manager; not to be used after KelpAppMgr::Destroy().
    KelpGnlTaskMgr* GetTaskMgr() const noexcept { return m_pTaskMgr; }

    CFrameTaskMgr(const CFrameTaskMgr&) = delete;
    CFrameTaskMgr& operator=(const CFrameTaskMgr&) = delete;

  private:
    friend class Singleton<CFrameTaskMgr>;

    CFrameTaskMgr();
    ~CFrameTaskMgr() = default;  // the task manager is the application manager's

    static std::atomic<CFrameTaskMgr*> m_pInstance;
    KelpGnlTaskMgr* m_pTaskMgr = nullptr;
};

}  // namespace FrameUtil
