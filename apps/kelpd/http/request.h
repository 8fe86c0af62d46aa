// kelpd/http/request.h - one request, as the endpoints see it.
//
// The views are valid until the request is answered.
//
// one thread
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kelpd/http/target.h"

namespace kelpd {

struct Request {
    std::string_view method;
    std::string_view raw_target;  ///< as it came
    Target target;                ///< decoded
    std::vector<std::pair<std::string_view, std::string_view>> headers;
    std::vector<std::pair<std::string_view, std::string>> path_values;  ///< of "{name}" segments
    std::string body;
    std::string_view client;  ///< common name of the client's certificate; empty without one
    bool keep_alive = false;

    /// The value of a header, by its name in any case; "" when it is not there.
    std::string_view Header(std::string_view name) const;
    /// The value of a "{name}" segment of the endpoint's path; "" when it has none.
    std::string_view PathValue(std::string_view name) const;
    /// The first value of a query parameter, or null.
    const std::string* Query(std::string_view name) const;
};

bool EqualIgnoringCase(std::string_view left, std::string_view right);

}  // namespace kelpd
