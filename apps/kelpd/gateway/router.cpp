#include "kelpd/gateway/router.h"

namespace kelpd {
namespace {

bool IsName(std::string_view segment) {
    return segment.size() > 2 && segment.front() == '{' && segment.back() == '}';
}

bool Matches(const std::vector<std::string_view>& pattern,
             const std::vector<std::string>& segments) {
    if (pattern.size() != segments.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (!IsName(pattern[i]) && pattern[i] != segments[i]) {
            return false;
        }
    }
    return true;
}

bool Answers(const Endpoint& endpoint, std::string_view method) {
    return method == endpoint.method || (method == "HEAD" && endpoint.method == "GET");
}

}  // namespace

Router::Router(std::vector<Endpoint> endpoints) {
    for (Endpoint& endpoint : endpoints) {
        Route& route = routes_.emplace_back();
        route.endpoint = std::move(endpoint);
        // "/" has no segments.
        for (std::string_view rest = route.endpoint.path; rest.size() > 1;) {
            rest.remove_prefix(1);
            const std::size_t slash = rest.find('/');
            route.segments.push_back(rest.substr(0, slash));
            rest = slash == rest.npos ? std::string_view() : rest.substr(slash);
        }
    }
}

Router::Found Router::Find(Request& request) const {
    Found found;
    found.status = 404;
    for (const Route& route : routes_) {
        if (!Matches(route.segments, request.target.segments)) {
            continue;
        }
        if (!Answers(route.endpoint, request.method)) {
            found.status = 405;
            found.allow += found.allow.empty() ? "" : ", ";
            found.allow += route.endpoint.method == "GET" ? "GET, HEAD" : route.endpoint.method;
            continue;
        }
        for (std::size_t i = 0; i < route.segments.size(); ++i) {
            const std::string_view segment = route.segments[i];
            if (IsName(segment)) {
                request.path_values.emplace_back(segment.substr(1, segment.size() - 2),
                                                 request.target.segments[i]);
            }
        }
        return {&route.endpoint, 200, {}};
    }
    return found;
}

}  // namespace kelpd
