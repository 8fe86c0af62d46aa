// The server that all tests of this folder ask, and an installation that trusts it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "kelp/http.h"
#include "support/captured_log.h"
#include "support/https_server.h"
#include "support/installation.h"

// Made by the first test that asks; its certificates take openssl a while.
inline HttpsServer& TheServer() {
    static HttpsServer server;
    return server;
}

class HttpTest : public testing::Test {
  public:
    // Limits that let a test reach them, and limits that let it wait for them.
    static constexpr const char* kSmall = R"(, "http": {"responseLimitBytes": 1048576})";
    static constexpr const char* kShort =
        R"(, "http": {"connectTimeoutMs": 700, "lowSpeedSeconds": 1, "lowSpeedBytes": 100})";

    void SetUp() override {
        TheServer().SetStatus(200);
        TheServer().SetBody("{}");
    }

    int Get(const std::string& url, int timeout_s = 20) {
        return UFHTTPMSGMGR::CHttpMsgOper().SendHttpMsg_Get(url, m_req, m_rsp, timeout_s);
    }
    int Post(const std::string& url, int timeout_s = 20) {
        return UFHTTPMSGMGR::CHttpMsgOper().SendHttpMsg_Post(url, m_req, m_rsp, timeout_s);
    }
    int Put(const std::string& url, int timeout_s = 20) {
        return UFHTTPMSGMGR::CHttpMsgOper().SendHttpMsg_Put(url, m_req, m_rsp, timeout_s);
    }
    std::string Good(const std::string& path) { return TheServer().Url("good", path); }

    UFHTTPMSGMGR::s_HttpMsgReq m_req;
    UFHTTPMSGMGR::s_HttpMsgRsp m_rsp;
};
