// Each way in which an exchange fails has its code, leaves nothing in the answer, and is
// logged with its reason.
#include <chrono>
#include <string>

#include "unit/http/fixture.h"

namespace {

using namespace UFHTTPMSGMGR;

struct Row {
    const char* line;
    const char* path;
    int code;
    const char* reason;  // what the log line holds
    int timeout_s = 20;
};

class HttpFailure : public HttpTest {
  protected:
    void ExpectFailure(const Row& row) {
        const std::string url = TheServer().Url(row.line, row.path);
        const CapturedLog log;
        m_rsp.lStatusCode = 200;
        m_rsp.strRspBody = "from before";
        EXPECT_EQ(Get(url + "?token=QUERYSECRET", row.timeout_s), row.code) << row.line << row.path;
        EXPECT_EQ(m_rsp.lStatusCode, 0) << row.line << row.path;
        EXPECT_EQ(m_rsp.strRspBody, "") << row.line << row.path;
        ASSERT_EQ(log.Entries().size(), 1U) << row.line << row.path;
        const auto entry = log.Entries()[0];
        EXPECT_EQ(entry.level, kelp::log::Level::kError);
        EXPECT_EQ(entry.code, static_cast<unsigned>(row.code));
        EXPECT_THAT(entry.text, testing::StartsWith("[http] GET " + url + ": ")) << row.path;
        EXPECT_THAT(entry.text, testing::HasSubstr(row.reason)) << row.line << row.path;
        EXPECT_THAT(entry.text, testing::Not(testing::HasSubstr("SECRET")));
    }
};

// What stands behind each of these is that the request, and the token in it, stays here.
TEST_F(HttpFailure, BeforeAnythingIsSent) {
    const Installation installation(TheServer().Settings());
    m_req.lstHeaders.push_back({"X-Auth-Token", "HEADERSECRET"});
    const Row rows[] = {
        {"expired", "/body", HTTP_ERR_CERT_EXPIRED, "has expired"},
        {"early", "/body", HTTP_ERR_CERT_NOT_YET_VALID, "not yet valid"},
        {"wrong_host", "/body", HTTP_ERR_CERT_WRONG_HOST, "for another host"},
        {"other_ca", "/body", HTTP_ERR_CERT_UNKNOWN_CA, "not of the installation's CA"},
        {"alone", "/body", HTTP_ERR_CERT_UNKNOWN_CA, "signed by itself"},
        {"old", "/body", HTTP_ERR_TLS, "TLS was not agreed on"},
        {"slammed", "/body", HTTP_ERR_TLS, "TLS was not agreed on"},
    };
    for (const Row& row : rows) {
        const int before = TheServer().Count(row.line).requests;
        ExpectFailure(row);
        EXPECT_EQ(TheServer().Count(row.line).requests, before) << row.line;
    }
}

TEST_F(HttpFailure, WithinTheExchange) {
    const Installation installation(TheServer().Settings(kSmall));
    m_req.lstHeaders.push_back({"X-Auth-Token", "HEADERSECRET"});
    m_req.strReqBody = "BODYSECRET";
    const Row rows[] = {
        {"good", "/close", HTTP_ERR_NO_ANSWER, "closed without an answer"},
        {"good", "/tear", HTTP_ERR_NO_ANSWER, "closed without an answer"},
        {"good", "/reset", HTTP_ERR_NO_ANSWER, "closed without an answer"},
        {"good", "/cut", HTTP_ERR_CUT, "the answer was cut"},
        {"good", "/cut-chunk", HTTP_ERR_CUT, "the answer was cut"},
        {"good", "/cut-header", HTTP_ERR_CUT, "the answer was cut"},
        {"good", "/to-the-end", HTTP_ERR_CUT, "does not say where it ends"},
        {"good", "/identity", HTTP_ERR_CUT, "does not say where it ends"},
        {"good", "/to-the-end-torn", HTTP_ERR_CUT, "does not say where it ends"},
        {"good", "/endless", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/endless-header", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/endless-interim", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/long", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/bomb", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/size/1048577", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/chunks/1048577", HTTP_ERR_TOO_LARGE, "larger than the limit"},
        {"good", "/negative", HTTP_ERR_MALFORMED, "the answer"},
        {"good", "/no-http", HTTP_ERR_MALFORMED, "the answer is no HTTP"},
        {"good", "/bad-chunk", HTTP_ERR_MALFORMED, "the answer"},
        {"good", "/bad-gzip", HTTP_ERR_MALFORMED, "the answer"},
        {"good", "/unknown-coding", HTTP_ERR_MALFORMED, "the answer"},
    };
    for (const Row& row : rows) {
        ExpectFailure(row);
    }
}

// A server that agrees to nothing, and one that goes on with next to nothing.
TEST_F(HttpFailure, TooSlow) {
    const Installation installation(TheServer().Settings(kShort));
    const int before = TheServer().Count("silent").requests;
    ExpectFailure({"silent", "/body", HTTP_ERR_CONNECT_TIMEOUT, "no connection in time"});
    EXPECT_EQ(TheServer().Count("silent").requests, before);
    ExpectFailure({"good", "/drip", HTTP_ERR_STALLED, "next to nothing was transferred"});
}

// The caller's time-out comes before the limit on speed if it is the shorter one.
TEST_F(HttpFailure, TimeOut) {
    const Installation installation(TheServer().Settings());
    ExpectFailure({"good", "/hang", HTTP_ERR_TIMEOUT, "the time-out has passed", 1});
    ExpectFailure({"good", "/drip", HTTP_ERR_TIMEOUT, "the time-out has passed", 1});
    ExpectFailure({"silent", "/", HTTP_ERR_CONNECT_TIMEOUT, "no connection in time", 1});
}

// A deadline comes neither early nor late. A busy machine may be late with one, so the best of
// some counts.
TEST_F(HttpFailure, InTime) {
    using Clock = std::chrono::steady_clock;
    using std::chrono::milliseconds;
    const struct {
        const char* settings;
        const char* line;
        const char* path;
        int timeout_s;
        milliseconds expected;
    } rows[] = {
        {kShort, "silent", "/", 20, milliseconds(700)},
        {kShort, "good", "/hang", 20, milliseconds(1000)},
        {"", "good", "/hang", 1, milliseconds(1000)},
        {"", "good", "/drip", 1, milliseconds(1000)},
    };
    for (const auto& row : rows) {
        const Installation installation(TheServer().Settings(row.settings));
        auto took = milliseconds::max();
        for (int i = 0; i < 5 && took > row.expected + milliseconds(1000); ++i) {
            const Clock::time_point began = Clock::now();
            EXPECT_NE(Get(TheServer().Url(row.line, row.path), row.timeout_s), 0) << row.path;
            took = std::chrono::duration_cast<milliseconds>(Clock::now() - began);
            EXPECT_GE(took.count(), row.expected.count() - 50) << row.line << row.path;
        }
        EXPECT_LE(took.count(), row.expected.count() + 1000) << row.line << row.path;
    }
}

TEST_F(HttpFailure, NobodyThere) {
    const Installation installation(TheServer().Settings());
    EXPECT_EQ(Get("https://127.0.0.1:1/"), HTTP_ERR_CONNECT);
    EXPECT_EQ(Get("https://no-such-host.invalid/"), HTTP_ERR_RESOLVE);
}

// The server may say so within the handshake, or, with TLS 1.3, in place of an answer.
TEST_F(HttpFailure, ClientIsRefused) {
    {
        const Installation installation(TheServer().Settings());
        EXPECT_EQ(Get(TheServer().Url("mutual", "/body")), 0);
        EXPECT_EQ(Get(TheServer().Url("mutual12", "/body")), 0);
        EXPECT_EQ(m_rsp.strRspBody, "{}");
        ExpectFailure({"strangers", "/body", HTTP_ERR_CLIENT_REFUSED, "refuses this client's"});
    }
    {
        const Installation installation(TheServer().Settings("", "ca.crt", "other_client"));
        ExpectFailure({"mutual", "/body", HTTP_ERR_CLIENT_REFUSED, "refuses this client's"});
        ExpectFailure({"mutual12", "/body", HTTP_ERR_CLIENT_REFUSED, "refuses this client's"});
    }
    // With a certificate of "" the client shows none.
    const Installation installation(TheServer().Settings("", "ca.crt", ""));
    EXPECT_EQ(Get(Good("/body")), 0);
    ExpectFailure({"mutual", "/body", HTTP_ERR_CLIENT_REFUSED, "refuses this client's"});
}

// Whatever is wrong with the installation's own files, nobody is even connected to.
TEST_F(HttpFailure, Credentials) {
    const Installation files;
    const auto write = [&](const char* name, const std::string& text) {
        std::ofstream(files.Path(name)) << text;
        return files.Path(name);
    };
    const std::string empty = write("empty", "");
    const std::string garbage = write("garbage", "no certificate");
    const std::string ca = TheServer().File("ca.crt");
    const std::string crt = TheServer().File("client.crt");
    const std::string key = TheServer().File("client.key");
    struct Bad {
        const char* name;
        std::string ca, certificate, key;
        int code;
        std::string reason;
    };
    const Bad rows[] = {
        {"no CA file", "/no/ca.crt", crt, key, HTTP_ERR_CREDENTIALS, "\"/no/ca.crt\": No such"},
        {"empty CA", empty, crt, key, HTTP_ERR_CREDENTIALS, "\"" + empty + "\": empty"},
        {"a folder", "/tmp", crt, key, HTTP_ERR_CREDENTIALS, "\"/tmp\": empty, or no regular"},
        {"no CA named", "", crt, key, HTTP_ERR_CREDENTIALS, "path is empty"},
        {"garbage CA", garbage, crt, key, HTTP_ERR_CREDENTIALS, "CA file cannot be used"},
        {"no key file", ca, crt, "/no/client.key", HTTP_ERR_CREDENTIALS, "/no/client.key"},
        {"no certificate file", ca, "/no/client.crt", key, HTTP_ERR_CREDENTIALS, "/no/client.crt"},
        {"garbage key", ca, crt, garbage, HTTP_ERR_CREDENTIALS, "certificate or key"},
        {"garbage certificate", ca, garbage, key, HTTP_ERR_CREDENTIALS, "certificate or key"},
        {"another one's key", ca, crt, TheServer().File("server.key"), HTTP_ERR_CREDENTIALS,
         "certificate or key"},
        // A certificate that stands in the CA file by mistake does not vouch for itself.
        {"leaf as CA", TheServer().File("server.crt"), crt, key, HTTP_ERR_CERT_UNKNOWN_CA,
         "not of the installation's CA"},
    };
    for (const Bad& row : rows) {
        const Installation installation("{\"tls\": {\"ca\": \"" + row.ca +
                                        "\", \"certificate\": \"" + row.certificate +
                                        "\", \"key\": \"" + row.key + "\"}}");
        const int before = TheServer().Count("good").requests;
        const CapturedLog log;
        EXPECT_EQ(Get(Good("/body")), row.code) << row.name;
        ASSERT_EQ(log.Texts().size(), 1U) << row.name;
        EXPECT_THAT(log.Texts()[0], testing::HasSubstr(row.reason)) << row.name;
        EXPECT_EQ(TheServer().Count("good").requests, before) << row.name;
    }
}

TEST_F(HttpFailure, Settings) {
    struct Bad {
        const char* settings;
        const char* reason;
    };
    const Bad rows[] = {
        {"{", "malformed JSON"},
        {R"({"tls": {"ca": 17}})", "kelp.json:1: \"ca\" is no path"},
        {R"({"http": {"responseLimitBytes": 0}})", "is no integer from 1 to 1073741824"},
        {R"({"http": {"responseLimitBytes": "64"}})", "is no integer from 1 to 1073741824"},
        {R"({"http": {"responseLimitBytes": 99999999999999999999}})", "is no integer from 1"},
        {R"({"http": {"connectTimeoutMs": -1}})", "is no integer from 1 to 3600000"},
        {R"({"http": {"lowSpeedSeconds": 1.5}})", "is no integer from 1 to 3600"},
    };
    for (const Bad& row : rows) {
        const Installation installation(row.settings);
        const CapturedLog log;
        EXPECT_EQ(Get(Good("/body")), HTTP_ERR_SETTINGS) << row.settings;
        ASSERT_EQ(log.Texts().size(), 1U) << row.settings;
        EXPECT_THAT(log.Texts()[0], testing::HasSubstr(row.reason)) << row.settings;
    }
    const Installation installation;
    ::unsetenv("OSS_ROOT");
    const CapturedLog log;
    EXPECT_EQ(Get(Good("/body")), HTTP_ERR_SETTINGS);
    EXPECT_TRUE(log.Contains("OSS_ROOT is not set"));
}

}  // namespace
