// One exchange with a REST service, as all of them here are: a new object of the platform's
// HTTP manager, 60 seconds, a status that fits an int.
//
//     RestRequest request{RestMethod::kGet, base + "/rest/mrb/v1/getrestgroupinfo"};
//     request.message.lstHeaders.push_back({"XX-Forward-Filter", "..."});
//     const RestAnswer answer = Exchange(request);
//     if (!answer.Is(200)) ...
//
// Thread rule: thread-safe, with one thread at a time for each request.
#pragma once

#include <cstdint>
#include <string>

#include "kelp/http.h"

namespace FrameUtil {

enum class RestMethod : std::uint8_t { kGet, kPost, kPut };

struct RestRequest {
    RestMethod method;
    std::string url;
    UFHTTPMSGMGR::s_HttpMsgReq message = {};
    std::string channel = {};  ///< "": the platform's
};

struct RestAnswer {
    int result = 0;  ///< of the HTTP manager, which has logged the reason if it is not 0
    int status = 0;
    std::string body;

    bool Is(int wanted_status) const { return result == 0 && status == wanted_status; }
};

RestAnswer Exchange(const RestRequest& request);

}  // namespace FrameUtil
