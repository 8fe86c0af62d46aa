// kelp/http.h - requests to the platform's REST services, over verified TLS only.
//
//     UFHTTPMSGMGR::CHttpMsgOper oper;
//     UFHTTPMSGMGR::s_HttpMsgReq req;
//     UFHTTPMSGMGR::s_HttpMsgRsp rsp;
//     req.lstHeaders.push_back({"Accept", "application/json"});
//     const int code = oper.SendHttpMsg_Get(ns_kelpsdk_wrap::GetIRBaseURL() + "/rest/x", req, rsp);
//     if (code == 0 && rsp.lStatusCode == 200) Use(rsp.strRspBody);
//
// A CHttpMsgOper is cheap: make one for each request. Connections and TLS sessions are kept
// beneath the objects, for all threads of the process: a request goes out on a connection
// that an earlier one has left, whichever object or thread that was.
//
// The server must hold a certificate for the host in the URL, issued below the installation's
// CA; the client shows the installation's certificate. There is no way to switch that off, no
// plain http, no proxy, and no redirect is followed: the caller gets the 302. Paths and limits
// stand in OSS_ROOT/etc/kelp.json (docs/http.md).
//
// Thread rule: thread-safe, with one thread at a time for each record. A child of a fork
// begins with connections of its own.
#pragma once

#include <list>
#include <string>

#include "kelp/export.h"

namespace UFHTTPMSGMGR {

/// A header of a request.
struct s_HttpHeader {
    std::string strName;
    std::string strValue;
};

/// What is sent.
struct s_HttpMsgReq {
    int iKeepAlive = 1;  ///< 1: the connection may serve later requests; 0: it is closed
    std::string strReqBody;
    std::list<s_HttpHeader> lstHeaders;
};

/// What came back: after a failure 0 and nothing.
struct s_HttpMsgRsp {
    long lStatusCode = 0;    ///< the HTTP status
    std::string strRspBody;  ///< unpacked, should it have come compressed
};

/// How a request ends, besides 0. Whichever HTTP status came back, the exchange succeeded.
/// Until HTTP_ERR_TIMEOUT no octet of the request was sent.
enum HttpMsgCode : int {
    HTTP_ERR_ARGUMENT = 0x43520001,         ///< URL, header or time-out: see the operations
    HTTP_ERR_SETTINGS = 0x43520002,         ///< OSS_ROOT or etc/kelp.json
    HTTP_ERR_CREDENTIALS = 0x43520003,      ///< CA, certificate or key: unreadable or unusable
    HTTP_ERR_RESOLVE = 0x43520004,          ///< the host's name has no address
    HTTP_ERR_CONNECT = 0x43520005,          ///< nobody listens there, or it cannot be reached
    HTTP_ERR_CONNECT_TIMEOUT = 0x43520006,  ///< no connection with TLS came about in time
    HTTP_ERR_TLS = 0x43520007,              ///< TLS was refused, broken off, or too old
    HTTP_ERR_CERT_EXPIRED = 0x43520008,     ///< of the server's certificate, as the next four
    HTTP_ERR_CERT_NOT_YET_VALID = 0x43520009,
    HTTP_ERR_CERT_UNKNOWN_CA = 0x4352000A,  ///< not issued below the installation's CA
    HTTP_ERR_CERT_WRONG_HOST = 0x4352000B,  ///< for another host
    HTTP_ERR_CERT_REFUSED = 0x4352000C,     ///< anything else
    HTTP_ERR_TIMEOUT = 0x43520010,          ///< the whole exchange took too long
    HTTP_ERR_STALLED = 0x43520011,          ///< next to nothing came or went for too long
    HTTP_ERR_CLIENT_REFUSED = 0x43520012,   ///< the server refuses this client's certificate
    HTTP_ERR_SEND = 0x43520013,             ///< the request could not be sent whole
    HTTP_ERR_NO_ANSWER = 0x43520014,        ///< the server closed instead of answering; whether
                                            ///< it acted on the request is not known
    HTTP_ERR_CUT = 0x43520015,              ///< the connection ended within the answer, or the
                                            ///< answer does not say where it ends
    HTTP_ERR_TOO_LARGE = 0x43520016,        ///< the answer is larger than the limit
    HTTP_ERR_MALFORMED = 0x43520017,        ///< the answer is no HTTP, or wrongly compressed
    HTTP_ERR_NO_MEMORY = 0x43520018,
    HTTP_ERR_OTHER = 0x43520019,  ///< none of these; the log has the reason
};

class KELP_API CHttpMsgOper {
  public:
    static constexpr int kTimeout = 60;

    /// For the platform's gateway and services.
    CHttpMsgOper() = default;
    /// For a channel with TLS files of its own, such as "internal", the queue's. A channel
    /// that is not configured has the platform's.
    explicit CHttpMsgOper(const std::string& channel) : m_channel(channel) {}

    /// Sends a request and waits for the whole answer, at most `timeout_s` seconds.
    ///
    /// `url` is "https://HOST[:PORT][/PATH][?QUERY]" and is sent as it is, nothing is escaped:
    /// blanks and control characters are refused, and so is a user in it. Headers that say how
    /// the message travels (Host, Connection, Content-Length, Transfer-Encoding, TE, Trailer,
    /// Upgrade, Expect, Accept-Encoding) are refused too: they are set here. Without a header
    /// "Content-Type" a body is "application/json". `timeout_s` is from 1 to 86400.
    ///
    /// Result: 0 with `rsp` filled, whatever the status; otherwise one of HttpMsgCode, `rsp`
    /// is empty, and an error in the log names the code, the URL without its query, and the
    /// reason. Neither headers nor bodies are ever logged. Does not throw.
    ///
    /// A kept connection may turn out to be closed by the server. If no octet of an answer
    /// came, a GET is sent once more on a new connection. A POST or PUT is sent once more
    /// only if no octet of it had left; otherwise it ends with HTTP_ERR_NO_ANSWER. A
    /// connection that was closed before the request began is not used at all.
    ///
    /// A GET has no body: `req.strReqBody` is not sent.
    int SendHttpMsg_Get(const std::string& url, const s_HttpMsgReq& req, s_HttpMsgRsp& rsp,
                        int timeout_s = kTimeout) noexcept;
    int SendHttpMsg_Post(const std::string& url, const s_HttpMsgReq& req, s_HttpMsgRsp& rsp,
                         int timeout_s = kTimeout) noexcept;
    int SendHttpMsg_Put(const std::string& url, const s_HttpMsgReq& req, s_HttpMsgRsp& rsp,
                        int timeout_s = kTimeout) noexcept;

  private:
    std::string m_channel;
};

}  // namespace UFHTTPMSGMGR
