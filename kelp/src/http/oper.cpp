#include <new>

#include "http/exchange.h"
#include "http/fault.h"
#include "http/options.h"
#include "http/pool.h"
#include "http/request.h"
#include "kelp/http.h"
#include "kelp/log.h"

namespace UFHTTPMSGMGR {
namespace {

using kelp::http::Fault;
using kelp::http::Method;

// A failure on its way to the caller: its code, and in one line what is wrong.
struct Failure {
    int code;
    std::string why;
};

Failure Exchange(const std::string& channel, Method method, const std::string& url,
                 const s_HttpMsgReq& req, s_HttpMsgRsp& rsp, int timeout_s) {
    if (const char* const fault = kelp::http::FaultOf(url, req, timeout_s); fault != nullptr) {
        return {HTTP_ERR_ARGUMENT, fault};
    }
    const auto options = kelp::http::CurrentOptions();
    if (options->code != 0) {
        return {options->code, options->why};
    }
    auto& pool = kelp::http::Pool::Instance();
    auto handle = pool.Take(options, options->ForChannel(channel), kelp::http::AuthorityOf(url));
    const auto outcome = kelp::http::Perform(*handle, method, url, req, timeout_s, rsp);
    if (outcome.Succeeded()) {
        pool.GiveBack(std::move(handle));
        return {0, {}};
    }
    const Fault fault = kelp::http::FaultOf(outcome, handle->error());
    std::string why = fault.reason;
    if (*handle->error() != '\0') {
        why = why + " (" + handle->error() + ")";
    }
    return {fault.code, std::move(why)};
}

void Report(const Failure& failure, Method method, const std::string& url) {
    LogProcess::Error(static_cast<unsigned>(failure.code),
                      std::string("[http] ") + kelp::http::NameOf(method) + ' ' +
                          kelp::http::ShownUrl(url) + ": " + failure.why,
                      LocationInfo("http", "CHttpMsgOper", 0));
}

int Send(const std::string& channel, Method method, const std::string& url, const s_HttpMsgReq& req,
         s_HttpMsgRsp& rsp, int timeout_s) noexcept {
    rsp.lStatusCode = 0;
    rsp.strRspBody.clear();
    try {
        const Failure failure = Exchange(channel, method, url, req, rsp, timeout_s);
        if (failure.code == 0) {
            return 0;
        }
        rsp = s_HttpMsgRsp();
        Report(failure, method, url);
        return failure.code;
    } catch (const std::bad_alloc&) {
        rsp = s_HttpMsgRsp();
        LogProcess::Error(HTTP_ERR_NO_MEMORY, "[http] no memory for a request",
                          LocationInfo("http", "CHttpMsgOper", 0));
        return HTTP_ERR_NO_MEMORY;
    }
}

}  // namespace

int CHttpMsgOper::SendHttpMsg_Get(const std::string& url, const s_HttpMsgReq& req,
                                  s_HttpMsgRsp& rsp, int timeout_s) noexcept {
    return Send(m_channel, Method::kGet, url, req, rsp, timeout_s);
}

int CHttpMsgOper::SendHttpMsg_Post(const std::string& url, const s_HttpMsgReq& req,
                                   s_HttpMsgRsp& rsp, int timeout_s) noexcept {
    return Send(m_channel, Method::kPost, url, req, rsp, timeout_s);
}

int CHttpMsgOper::SendHttpMsg_Put(const std::string& url, const s_HttpMsgReq& req,
                                  s_HttpMsgRsp& rsp, int timeout_s) noexcept {
    return Send(m_channel, Method::kPut, url, req, rsp, timeout_s);
}

}  // namespace UFHTTPMSGMGR
