// What is told about an exchange that failed.
#pragma once

#include <string>
#include <string_view>

#include "http/exchange.h"

namespace kelp::http {

struct Fault {
    int code;            ///< of HttpMsgCode
    const char* reason;  ///< "the server's certificate has expired"
};

/// `words` are the transfer library's about it. REQUIRES: the outcome is a failure.
Fault FaultOf(const Outcome& outcome, std::string_view words);

}  // namespace kelp::http
