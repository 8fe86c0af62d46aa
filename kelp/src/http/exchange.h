// One request and its answer on one handle.
#pragma once

#include <cstdint>
#include <string>

#include "http/handle.h"
#include "http/request.h"
#include "kelp/http.h"

namespace kelp::http {

/// How an exchange ended: what a code and a reason are made of.
struct Outcome {
    CURLcode result = CURLE_OK;
    long verified = 0;           // the TLS library's verdict on the server's certificate
    int issued = 0;              // how often the request began to be sent
    bool ended_headers = false;  // the answer's header lines came all,
    bool framed = false;         // and they say where its body ends
    bool answered = false;       // an octet of an answer came
    bool too_large = false;      // more than the limit came
    bool no_memory = false;      // the answer could not be kept
    bool not_repeated = false;   // the request would have been sent twice
    bool left = false;           // an octet of the request left, on whichever connection
    bool in_full = false;        // the whole time-out has passed

    /// A connection that ends is no end of an answer: whoever cuts the line can make one.
    bool Succeeded() const { return result == CURLE_OK && ended_headers && framed; }
};

/// Sends and waits. `answer` is filled as far as the exchange came. The handle can be used
/// again if the outcome is a success. Throws std::bad_alloc before anything is sent.
Outcome Perform(Handle& handle, Method method, const std::string& url,
                const UFHTTPMSGMGR::s_HttpMsgReq& request, int timeout_s,
                UFHTTPMSGMGR::s_HttpMsgRsp& answer);

}  // namespace kelp::http
