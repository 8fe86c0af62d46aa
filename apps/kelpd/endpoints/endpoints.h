// kelpd/endpoints/endpoints.h - what the daemon answers to. Each endpoint is a file of its own
// beside this one; its line in endpoints.cpp gives it its method and path.
//
// thread-safe
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "kelpd/config/config.h"
#include "kelpd/gateway/admission.h"
#include "kelpd/gateway/metrics.h"
#include "kelpd/gateway/router.h"

namespace kelpd {

/// Those of the gateway. Throws Refusal (kConfiguration) when a file that one of them serves is
/// malformed.
std::vector<Endpoint> GatewayEndpoints(const Config& config);

/// Those of the local socket. The arguments outlive what is returned.
std::vector<Endpoint> HealthEndpoints(const Metrics& metrics, const Admission& admission,
                                      const std::atomic<bool>& stopping);

/// The REST process groups, {"groupmap": {"<process>": {"<handle>": "<group>"}}}, from
/// `file`, which is read again when it has changed. A file that has become malformed is
/// reported in the log, and what stood there before stays.
Handler RestGroups(const std::string& file);

/// "ok", or status 503 and "stopping".
Handler Health(const std::atomic<bool>& stopping);
/// The counters, for Prometheus.
Handler MetricsText(const Metrics& metrics, const Admission& admission);

}  // namespace kelpd
