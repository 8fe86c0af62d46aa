#include "kelpd/endpoints/endpoints.h"

namespace kelpd {

Handler MetricsText(const Metrics& metrics, const Admission& admission) {
    return [&metrics, &admission](const Request& /*request*/, Responder responder) {
        Response response = Response::Text(200, metrics.Render(admission.open()));
        response.content_type = "text/plain; version=0.0.4; charset=utf-8";
        responder.Send(std::move(response));
    };
}

}  // namespace kelpd
