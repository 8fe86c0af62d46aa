#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "kelp/settings.h"
#include "support/captured_log.h"
#include "support/installation.h"

namespace {

using ns_kelpsdk_wrap::GetIRBaseURL;
using testing::ElementsAre;

// The gateway's address is given without slashes at its end; what is no https address is none.
TEST(Gateway, BaseUrl) {
    struct Row {
        const char* name;
        const char* settings;
        const char* url;
    };
    const Row rows[] = {
        {"host and port", R"({"gateway": {"baseUrl": "https://127.0.0.1:8443"}})",
         "https://127.0.0.1:8443"},
        {"slashes", R"({"gateway": {"baseUrl": "https://gw//"}})", "https://gw"},
        {"below a path", R"({"gateway": {"baseUrl": "https://gw/rest/"}})", "https://gw/rest"},
        {"escapes", R"({"gateway": {"baseUrl": "https:\/\/g\u0077"}})", "https://gw"},
        {"bare http", R"({"gateway": {"baseUrl": "http://gw"}})", ""},
        {"no host", R"({"gateway": {"baseUrl": "https://"}})", ""},
        {"query", R"({"gateway": {"baseUrl": "https://gw?x=1"}})", ""},
        {"user", R"({"gateway": {"baseUrl": "https://me:pw@gw"}})", ""},
        {"blank", R"({"gateway": {"baseUrl": "https://g w"}})", ""},
        {"number", R"({"gateway": {"baseUrl": 17}})", ""},
        {"list", R"({"gateway": {"baseUrl": ["https://gw"]}})", ""},
        {"gateway is a text", R"({"gateway": "https://gw"})", ""},
        {"no gateway", R"({})", ""},
    };
    for (const Row& row : rows) {
        const Installation installation(row.settings);
        const CapturedLog log;
        EXPECT_EQ(GetIRBaseURL(), row.url) << row.name;
        EXPECT_EQ(log.Texts(kelp::log::Level::kWarn).size(), *row.url == '\0' ? 1U : 0U)
            << row.name;
    }
}

// A warning names the file, the line and what is wrong, and never the address: it may hold
// a password.
TEST(Gateway, WarningNamesFileAndLine) {
    const Installation installation("{\n \"gateway\":\n {\"baseUrl\": \"https://me:pw@gw\"}}");
    const CapturedLog log;
    EXPECT_EQ(GetIRBaseURL(), "");
    EXPECT_THAT(log.Texts(), ElementsAre("[settings] there is no gateway: " + installation.File() +
                                         ":3: \"baseUrl\" is no \"https://HOST:PORT\""));
}

TEST(Gateway, WithoutARootOrAFile) {
    {
        const Installation installation;
        const CapturedLog log;
        EXPECT_EQ(GetIRBaseURL(), "");
        EXPECT_THAT(log.Texts(), ElementsAre("[settings] there is no gateway: " +
                                             installation.File() + ": No such file or directory"));
    }
    const Installation installation;
    const std::string missing = installation.Path("missing");
    ::setenv("OSS_ROOT", missing.c_str(), 1);
    {
        const CapturedLog log;
        EXPECT_EQ(GetIRBaseURL(), "");
        EXPECT_THAT(log.Texts(),
                    ElementsAre("[settings] there is no gateway: " + missing +
                                ": No such file or directory: run 'kelpd init DIR' to make an "
                                "installation root"));
    }
    ::unsetenv("OSS_ROOT");
    const CapturedLog log;
    EXPECT_EQ(GetIRBaseURL(), "");
    EXPECT_THAT(log.Texts(), ElementsAre("[settings] there is no gateway: OSS_ROOT is not set: run "
                                         "'kelpd init DIR' and export what it prints"));
}

// A changed file counts from the next call on, and so does a mended one.
TEST(Gateway, FollowsTheFile) {
    Installation installation(R"({"gateway": {"baseUrl": "https://one"}})");
    EXPECT_EQ(GetIRBaseURL(), "https://one");
    EXPECT_EQ(GetIRBaseURL(), "https://one");
    installation.Configure(R"({"gateway": {"baseUrl": "https://two"}})");
    EXPECT_EQ(GetIRBaseURL(), "https://two");
    installation.Configure("{");
    EXPECT_EQ(GetIRBaseURL(), "");
    installation.Configure(R"({"gateway": {"baseUrl": "https://six"}})");
    EXPECT_EQ(GetIRBaseURL(), "https://six");
}

}  // namespace
