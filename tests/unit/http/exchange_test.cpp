#include <string>

#include "unit/http/fixture.h"

namespace {

using namespace UFHTTPMSGMGR;
using testing::HasSubstr;
using testing::Not;

class HttpExchange : public HttpTest {
  protected:
    HttpExchange() : m_installation(TheServer().Settings(kSmall)) {}

    Installation m_installation;
};

TEST_F(HttpExchange, Methods) {
    struct Row {
        const char* method;
        int (HttpExchange::*send)(const std::string&, int);
        const char* body;
        const char* sent;
    };
    const Row rows[] = {
        {"GET", &HttpExchange::Get, "not sent", "\"body\": \"\""},
        {"POST", &HttpExchange::Post, "{\\x}", "\"body\": \"{\\\\x}\""},
        {"POST", &HttpExchange::Post, "", "\"body\": \"\""},
        {"PUT", &HttpExchange::Put, "p", "\"body\": \"p\""},
        {"PUT", &HttpExchange::Put, "", "\"body\": \"\""},
    };
    for (const Row& row : rows) {
        m_req.strReqBody = row.body;
        ASSERT_EQ((this->*row.send)(Good("/echo?a=b%20c"), 20), 0) << row.method << row.body;
        EXPECT_EQ(m_rsp.lStatusCode, 200);
        const std::string& sent = m_rsp.strRspBody;
        EXPECT_THAT(sent, HasSubstr("\"method\": \"" + std::string(row.method) + "\""));
        EXPECT_THAT(sent, HasSubstr("\"target\": \"/echo?a=b%20c\"")) << row.method;
        EXPECT_THAT(sent, HasSubstr(row.sent)) << row.method << row.body;
        EXPECT_THAT(sent, Not(HasSubstr("Expect"))) << row.method;
        if (*row.method == 'P') {
            const std::string length = std::to_string(std::string(row.body).size());
            EXPECT_THAT(sent, HasSubstr("[\"Content-Length\", \"" + length + "\"]"));
        }
    }
}

TEST_F(HttpExchange, Headers) {
    m_req.strReqBody = "{}";
    m_req.lstHeaders = {{"XX-Forward-Filter", "filter=group,value=mrbservice,policy=prefer"},
                        {"X-Empty", ""},
                        {"X-Blank", "  "},
                        {"X-Twice", "1"},
                        {"X-Twice", "2"}};
    ASSERT_EQ(Post(Good("/echo")), 0);
    for (const char* const sent :
         {R"(["XX-Forward-Filter", "filter=group,value=mrbservice,policy=prefer"])",
          R"(["X-Empty", ""])", R"(["X-Blank", ""])", R"(["X-Twice", "1"], ["X-Twice", "2"])",
          R"(["Content-Type", "application/json"])"}) {
        EXPECT_THAT(m_rsp.strRspBody, HasSubstr(sent));
    }
    // A type that is given is the only one.
    m_req.lstHeaders = {{"content-type", "application/vnd.tindlemq.json.v1+json"}};
    ASSERT_EQ(Post(Good("/echo")), 0);
    EXPECT_THAT(m_rsp.strRspBody, HasSubstr("application/vnd.tindlemq.json.v1+json"));
    EXPECT_THAT(m_rsp.strRspBody, Not(HasSubstr("application/json")));
}

// Every status is an answer, a redirect too: it is followed nowhere, so neither are tokens.
TEST_F(HttpExchange, Statuses) {
    for (const int status : {200, 204, 400, 404, 500, 503}) {
        TheServer().SetStatus(status);
        TheServer().SetBody(status == 204 ? "" : "text");
        EXPECT_EQ(Get(Good("/body")), 0) << status;
        EXPECT_EQ(m_rsp.lStatusCode, status);
        EXPECT_EQ(m_rsp.strRspBody, status == 204 ? "" : "text") << status;
    }
    for (const char* const path : {"/redirect", "/redirect-http", "/redirect-file"}) {
        EXPECT_EQ(Get(Good(path)), 0) << path;
        EXPECT_EQ(m_rsp.lStatusCode, 302) << path;
        EXPECT_EQ(m_rsp.strRspBody, "") << path;
    }
}

TEST_F(HttpExchange, Bodies) {
    for (const char* const path : {"/size/", "/chunks/"}) {
        for (const std::size_t size : {1, 16383, 16384, 16385, 1048575, 1048576}) {
            EXPECT_EQ(Get(Good(path + std::to_string(size))), 0) << path << size;
            EXPECT_EQ(m_rsp.strRspBody, std::string(size, 'x')) << path << size;
        }
    }
    EXPECT_EQ(Get(Good("/gzip")), 0);
    EXPECT_EQ(m_rsp.strRspBody, "unpacked");
    EXPECT_EQ(Get(Good("/no-content")), 0);
    EXPECT_EQ(m_rsp.strRspBody, "");
    const std::string zeros("\0a\0", 3);
    TheServer().SetBody(zeros);
    EXPECT_EQ(Get(Good("/body")), 0);
    EXPECT_EQ(m_rsp.strRspBody, zeros);
}

// Path and query go out as they are, dots and reserved characters included.
TEST_F(HttpExchange, NothingIsEscaped) {
    for (const char* const target : {"/a/../b/./c", "/topics/a//b?max_msgs=2", "/a'b;c,(d)[e]"}) {
        ASSERT_EQ(Get(Good(target)), 0) << target;
        EXPECT_THAT(TheServer().Command("last"),
                    HasSubstr("\"target\": \"" + std::string(target) + "\""));
    }
}

TEST_F(HttpExchange, Refused) {
    struct Row {
        const char* name;
        std::string url;
        s_HttpHeader header;
        int timeout_s;
    };
    const std::string good = Good("/body");
    const s_HttpHeader sound = {"X", "y"};
    const Row rows[] = {
        {"http", "http://127.0.0.1/", sound, 1},
        {"file", "file:///etc/passwd", sound, 1},
        {"relative", "/rest/x", sound, 1},
        {"empty", "", sound, 1},
        {"no host", "https:///x", sound, 1},
        {"no host but a port", "https://:1/x", sound, 1},
        {"user", "https://u:p@127.0.0.1/", sound, 1},
        {"blank", good + "/a b", sound, 1},
        {"line break", good + "\r\nX: y", sound, 1},
        {"zero octet", good + std::string(1, '\0'), sound, 1},
        {"too long", good + std::string(70000, 'x'), sound, 1},
        {"port", "https://127.0.0.1:70000/", sound, 1},
        {"header's name is empty", good, {"", "y"}, 1},
        {"header's name has a colon", good, {"X:", "y"}, 1},
        {"header's name has a line break", good, {"X\nY", "y"}, 1},
        {"header's value has a line break", good, {"X", "y\r\nHost: z"}, 1},
        {"header's value has a zero octet", good, {"X", std::string("y\0z", 3)}, 1},
        {"header is too long", good, {"X", std::string(70000, 'y')}, 1},
        {"length", good, {"content-length", "5"}, 1},
        {"transfer coding", good, {"Transfer-Encoding", "chunked"}, 1},
        {"host", good, {"HOST", "elsewhere"}, 1},
        {"time-out 0", good, sound, 0},
        {"time-out -1", good, sound, -1},
        {"time-out of more than a day", good, sound, 86401},
    };
    const int before = TheServer().Count("good").requests;
    for (const Row& row : rows) {
        m_req.lstHeaders = {row.header};
        const CapturedLog log;
        EXPECT_EQ(Get(row.url, row.timeout_s), HTTP_ERR_ARGUMENT) << row.name;
        EXPECT_EQ(log.Texts(kelp::log::Level::kError).size(), 1U) << row.name;
    }
    m_req.lstHeaders.assign(101, sound);
    EXPECT_EQ(Get(good), HTTP_ERR_ARGUMENT);
    EXPECT_EQ(TheServer().Count("good").requests, before);
}

// A channel may have files of its own; what it does not name is the platform's.
TEST_F(HttpExchange, Channels) {
    const auto get = [&](const char* channel, const char* line) {
        return CHttpMsgOper(channel).SendHttpMsg_Get(TheServer().Url(line, "/body"), m_req, m_rsp);
    };
    EXPECT_EQ(get("internal", "good"), 0);
    const std::string settings = TheServer().Settings();
    const Installation installation(settings.substr(0, settings.size() - 2) +
                                    R"(, "channels": {"internal": {"ca": ")" +
                                    TheServer().File("other_ca.crt") + R"("}}}})");
    EXPECT_EQ(get("internal", "other_ca"), 0);
    EXPECT_EQ(get("internal", "good"), HTTP_ERR_CERT_UNKNOWN_CA);
    EXPECT_EQ(get("external", "good"), 0);
    EXPECT_EQ(get("", "good"), 0);
    EXPECT_EQ(get("", "other_ca"), HTTP_ERR_CERT_UNKNOWN_CA);
}

// The environment does not send requests elsewhere.
TEST_F(HttpExchange, NoProxy) {
    ::setenv("https_proxy", "http://127.0.0.1:1", 1);
    ::setenv("ALL_PROXY", "http://127.0.0.1:1", 1);
    m_req.iKeepAlive = 0;
    EXPECT_EQ(Get(Good("/body")), 0);
    ::unsetenv("https_proxy");
    ::unsetenv("ALL_PROXY");
}

}  // namespace
