// kelpd/gateway/service.h - what the connections of one listener share.
//
// thread-safe
#pragma once

#include <atomic>

#include "kelpd/config/limits.h"
#include "kelpd/gateway/admission.h"
#include "kelpd/gateway/fault_log.h"
#include "kelpd/gateway/metrics.h"
#include "kelpd/gateway/router.h"
#include "kelpd/net/tls_context.h"

namespace kelpd {

struct Service {
    const Limits limits;
    const Router router;
    const TlsContext* const tls;  ///< null: plain
    const bool access_log;
    Metrics& metrics;
    Admission admission;
    FaultLog faults;
    std::atomic<bool> stopping{false};
};

}  // namespace kelpd
