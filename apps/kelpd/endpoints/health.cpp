#include "kelpd/endpoints/endpoints.h"

namespace kelpd {

Handler Health(const std::atomic<bool>& stopping) {
    return [&stopping](const Request& /*request*/, Responder responder) {
        responder.Send(stopping ? Response::Text(503, "stopping\n") : Response::Text(200, "ok\n"));
    };
}

}  // namespace kelpd
