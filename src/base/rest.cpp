#include "base/rest.h"

#include <utility>

namespace FrameUtil {

RestAnswer Exchange(const RestRequest& request) {
    constexpr int kSeconds = 60;
    using Oper = UFHTTPMSGMGR::CHttpMsgOper;
    Oper oper = request.channel.empty() ? Oper() : Oper(request.channel);
    UFHTTPMSGMGR::s_HttpMsgRsp rsp;
    RestAnswer answer;
    switch (request.method) {
        case RestMethod::kGet:
            answer.result = oper.SendHttpMsg_Get(request.url, request.message, rsp, kSeconds);
            break;
        case RestMethod::kPost:
            answer.result = oper.SendHttpMsg_Post(request.url, request.message, rsp, kSeconds);
            break;
        case RestMethod::kPut:
            answer.result = oper.SendHttpMsg_Put(request.url, request.message, rsp, kSeconds);
            break;
    }
    answer.status = static_cast<int>(rsp.lStatusCode);  // three digits
    answer.body = std::move(rsp.strRspBody);
    return answer;
}

}  // namespace FrameUtil
