// kelp/service_agent.h - the process among the services of the platform.
//
//     KELPsac::KELPInstance::cleanup();   // from here on nobody new finds this process
//     ...                                 // what it was asked already is answered
//     KelpAppMgr::Destroy();
//
// A process that serves is registered with the platform's service agent, which is where
// others look for it. On one node the registration is the process's socket in the run
// directory: KelpAppMgr::Initialize() makes it, and whoever sends to a process type picks
// among the sockets that are there.
//
// thread-safe. Nothing throws.
#pragma once

#include "kelp/export.h"

namespace KELPsac {

class KELPInstance {
  public:
    /// Withdraws the registration: the socket is removed, the process's identity is free
    /// for another one, and processes that are not connected yet get KELP_MSG_NO_PEER or
    /// reach another instance. Connections that are there stay, with their requests and
    /// answers, and so do workers, timers and this process's own calls, until
    /// KelpAppMgr::Destroy(). It is not an error if nothing is registered.
    KELP_API static void cleanup() noexcept;
};

}  // namespace KELPsac
