// kelpd/gateway/router.h - which endpoint a request is for.
//
//     Router router({{"GET", "/mq/topics/{topic}", handler}, ...});
//     const Router::Found found = router.Find(request);
//     // found.endpoint, or found.status 404 or 405 and found.allow
//
// An endpoint that answers GET answers HEAD as well. A path segment of a request matches the
// same text or "{name}"; the first endpoint of the list that matches is it.
//
// immutable
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kelpd/gateway/responder.h"
#include "kelpd/http/request.h"

namespace kelpd {

/// May throw: the request is then answered with 500. Runs on a thread that serves many
/// connections, so it returns soon and answers later what takes time.
using Handler = std::function<void(const Request&, Responder)>;

struct Endpoint {
    std::string_view method;
    std::string_view path;
    Handler handler;
};

class Router {
  public:
    struct Found {
        const Endpoint* endpoint = nullptr;
        int status = 200;
        std::string allow;  ///< for 405
    };

    explicit Router(std::vector<Endpoint> endpoints);

    /// Fills request.path_values when an endpoint is found.
    Found Find(Request& request) const;

  private:
    struct Route {
        Endpoint endpoint;
        std::vector<std::string_view> segments;
    };

    std::vector<Route> routes_;
};

}  // namespace kelpd
