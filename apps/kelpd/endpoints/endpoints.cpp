#include "kelpd/endpoints/endpoints.h"

namespace kelpd {

std::vector<Endpoint> GatewayEndpoints(const Config& config) {
    return {
        {"GET", "/rest/mrb/v1/getrestgroupinfo", RestGroups(config.rest_groups_file)},
    };
}

std::vector<Endpoint> HealthEndpoints(const Metrics& metrics, const Admission& admission,
                                      const std::atomic<bool>& stopping) {
    return {
        {"GET", "/healthz", Health(stopping)},
        {"GET", "/metrics", MetricsText(metrics, admission)},
    };
}

}  // namespace kelpd
