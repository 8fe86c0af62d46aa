// Loading and asking, against a gateway that behaves and one that does not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "frameutil/platform.h"
#include "support/captured_log.h"
#include "support/https_server.h"
#include "support/installation.h"

namespace {

using FrameUtil::GetRestGroupByMRBProcHandle;
using FrameUtil::LoadMRBRestGroup;
using FrameUtil::REST_GROUP_UNAVAILABLE;
using testing::ElementsAre;
using testing::HasSubstr;
using Groups = std::map<int, std::map<int, std::string>>;

constexpr const char* kPath = "/rest/mrb/v1/getrestgroupinfo";
constexpr const char* kBody =
    R"({"groupmap": {"3001": {"0": "a", "1": "b", "2": "c"}, "7": {"4": "d"}}})";

class RestGroup : public testing::Test {
  protected:
    static HttpsServer& Server() {
        static HttpsServer server;
        return server;
    }
    // Every test begins with the same assignment.
    RestGroup() : m_installation(Server().Settings(kLimits)) {
        Server().SetStatus(200);
        Server().SetBody(kBody);
        EXPECT_EQ(LoadMRBRestGroup(), 0);
        m_requests = Server().Count("good").requests;
    }
    int Loads() { return Server().Count("good").requests - m_requests; }
    // What is asked for without a load, since it is there.
    void ExpectTheOldAssignment() {
        const int before = Loads();
        Groups groups;
        EXPECT_EQ(GetRestGroupByMRBProcHandle(7, 4, groups), 0);
        EXPECT_EQ(groups, (Groups{{7, {{4, "d"}}}}));
        EXPECT_EQ(Loads(), before);
    }

    static constexpr const char* kLimits =
        R"(, "http": {"connectTimeoutMs": 500, "responseLimitBytes": 100000, "lowSpeedSeconds": 1})";

    Installation m_installation;
    int m_requests = 0;
};

TEST_F(RestGroup, Load) {
    const CapturedLog log;
    Server().SetBody(R"({"groupmap": {"5": {"0": "x"}}})");
    EXPECT_EQ(LoadMRBRestGroup(), 0);
    EXPECT_THAT(log.Texts(), ElementsAre("[Frame]LoadKelpMRBRestGroup OK: proc size = 1",
                                         "[Frame]LoadMRBRestGroup OK: old proc size = 2",
                                         "[Frame]LoadMRBRestGroup OK: new proc size = 1"));
    const std::string request = Server().Command("last");
    EXPECT_THAT(request,
                HasSubstr("\"method\": \"GET\", \"target\": \"" + std::string(kPath) + "\""));
    EXPECT_THAT(
        request,
        HasSubstr(R"(["XX-Forward-Filter", "filter=group,value=mrbservice,policy=prefer"])"));
}

TEST_F(RestGroup, Asking) {
    struct Row {
        const char* name;
        int process, handle;
        Groups before, after;
        int loads;
    };
    const Groups all = {{3001, {{0, "a"}, {1, "b"}, {2, "c"}}}};
    const Row rows[] = {
        {"one handle", 3001, 1, {}, {{3001, {{1, "b"}}}}, 0},
        {"handle 0: all three", 3001, 0, {}, all, 0},
        {"handle 0 of a process without one", 7, 0, {}, {{7, {{4, "d"}}}}, 0},
        {"beside others", 7, 4, all, {{7, {{4, "d"}}}, {3001, all.at(3001)}}, 0},
        {"what is there is kept",
         3001,
         0,
         {{3001, {{1, "mine"}, {9, "too"}}}},
         {{3001, {{0, "a"}, {1, "mine"}, {2, "c"}, {9, "too"}}}},
         0},
        {"no such handle", 3001, 3, all, all, 1},
        {"no such process", 8, 0, all, all, 1},
        {"process 0", 0, 0, {}, {}, 1},
        {"negative", -1, -1, {}, {}, 1},
    };
    for (const Row& row : rows) {
        const int before = Loads();
        Groups groups = row.before;
        const CapturedLog log;
        EXPECT_EQ(GetRestGroupByMRBProcHandle(row.process, row.handle, groups), 0) << row.name;
        EXPECT_EQ(groups, row.after) << row.name;
        EXPECT_EQ(Loads() - before, row.loads) << row.name;
        EXPECT_EQ(log.Count("[Frame]GetRestGroupByMRBProcHandle: missing " +
                            std::to_string(row.process) + "," + std::to_string(row.handle)),
                  static_cast<std::size_t>(row.loads))
            << row.name;
    }
}

TEST_F(RestGroup, HitIsTraced) {
    const CapturedLog log;
    Groups groups;
    EXPECT_EQ(GetRestGroupByMRBProcHandle(3001, 0, groups), 0);
    EXPECT_THAT(log.Texts(kelp::log::Level::kDebug),
                ElementsAre("[Frame]Got groupnames(3001,0): ", "[Frame]Got groupname: 3001,0,a",
                            "[Frame]Got groupname: 3001,1,b", "[Frame]Got groupname: 3001,2,c"));
    EXPECT_EQ(log.Texts().size(), 4U);
}

// What is missing may have been assigned since the last load.
TEST_F(RestGroup, MissLoadsOnce) {
    Server().SetBody(R"({"groupmap": {"8": {"1": "new"}}})");
    Groups groups;
    const CapturedLog log;
    EXPECT_EQ(GetRestGroupByMRBProcHandle(8, 1, groups), 0);
    EXPECT_EQ(groups, (Groups{{8, {{1, "new"}}}}));
    EXPECT_EQ(Loads(), 1);
    EXPECT_FALSE(log.Contains("missing"));
}

TEST_F(RestGroup, UnusableAnswers) {
    struct Row {
        const char* name;
        int status;
        std::string body;
        std::string text;
    };
    const std::string url = Server().Url("good", kPath);
    const Row rows[] = {
        {"500", 500, kBody, "LoadKelpMRBRestGroup: strURL: " + url + ", lStatusCode:500"},
        {"302", 302, kBody, "LoadKelpMRBRestGroup: strURL: " + url + ", lStatusCode:302"},
        {"204", 204, "", "LoadKelpMRBRestGroup: strURL: " + url + ", lStatusCode:204"},
        {"not JSON", 200, "<html>", "LoadKelpMRBRestGroup: parse json fail: <html>"},
        {"deep", 200, std::string(3000, '['),
         "LoadKelpMRBRestGroup: parse json fail: " + std::string(3000, '[')},
        {"no map", 200, "{}", "LoadKelpMRBRestGroup: invalid json rsp: {}"},
        {"too large", 200, std::string(100001, ' '),
         "LoadKelpMRBRestGroup: strURL: " + url + ", lStatusCode:0"},
    };
    for (const Row& row : rows) {
        Server().SetStatus(row.status);
        Server().SetBody(row.body);
        const CapturedLog log(kelp::log::Level::kError);
        EXPECT_EQ(LoadMRBRestGroup(), REST_GROUP_UNAVAILABLE) << row.name;
        ASSERT_FALSE(log.Entries().empty()) << row.name;
        const auto entry = log.Entries().back();
        EXPECT_EQ(entry.text, row.text) << row.name;
        EXPECT_EQ(entry.code, 0xb00001aU) << row.name;
        EXPECT_EQ(entry.unit + ":" + entry.function, "restgroup:LoadKelpMRBRestGroup") << row.name;
        // A miss gives the load's code, says what is missing, and leaves everything alone.
        Groups groups = {{1, {{1, "x"}}}};
        EXPECT_EQ(GetRestGroupByMRBProcHandle(9, 2, groups), REST_GROUP_UNAVAILABLE) << row.name;
        EXPECT_EQ(groups, (Groups{{1, {{1, "x"}}}})) << row.name;
        ExpectTheOldAssignment();
    }
    const CapturedLog log;
    Groups groups;
    EXPECT_EQ(GetRestGroupByMRBProcHandle(9, 2, groups), REST_GROUP_UNAVAILABLE);
    EXPECT_EQ(log.Texts().back(), "[Frame]GetRestGroupByMRBProcHandle: missing 9,2");
}

// Gateways that do not get as far as an answer; the reason is in the log as well.
TEST_F(RestGroup, UnusableGateways) {
    struct Row {
        const char* name;
        std::string base;
        const char* reason;
    };
    const Row rows[] = {
        {"wrong host", Server().Base("wrong_host"), "for another host"},
        {"expired", Server().Base("expired"), "has expired"},
        {"unknown CA", Server().Base("other_ca"), "not of the installation's CA"},
        {"silent", Server().Base("silent"), "no connection in time"},
        {"closes early", Server().Base("closing"), "closed without an answer"},
        {"nobody there", "https://127.0.0.1:1", "no connection"},
        {"cut", Server().Base("cutting"), "the answer was cut"},
        {"endless body", Server().Base("endless"), "larger than the limit"},
        {"drips", Server().Base("dripping"), "next to nothing was transferred"},
    };
    for (const Row& row : rows) {
        std::string settings = Server().Settings(kLimits);
        const std::string good = Server().Base();
        settings.replace(settings.find(good), good.size(), row.base);
        const Installation installation(settings);
        const CapturedLog log(kelp::log::Level::kError);
        EXPECT_EQ(LoadMRBRestGroup(), REST_GROUP_UNAVAILABLE) << row.name;
        EXPECT_TRUE(log.Contains(row.reason)) << row.name;
        ASSERT_EQ(log.Texts().size(), 2U) << row.name;
        EXPECT_THAT(log.Texts().back(), HasSubstr("LoadKelpMRBRestGroup: strURL: ")) << row.name;
        ExpectTheOldAssignment();
    }
}

TEST_F(RestGroup, WithoutAGateway) {
    const Installation installation("{}");
    const CapturedLog log;
    EXPECT_EQ(LoadMRBRestGroup(), REST_GROUP_UNAVAILABLE);
    EXPECT_TRUE(log.Contains("[settings] there is no gateway"));
    EXPECT_EQ(log.Texts().back(),
              "LoadKelpMRBRestGroup: strURL: " + std::string(kPath) + ", lStatusCode:0");
    ExpectTheOldAssignment();
}

TEST_F(RestGroup, RestartedGateway) {
    ASSERT_EQ(Server().Command("restart good"), "ok");
    EXPECT_EQ(LoadMRBRestGroup(), 0);
    EXPECT_EQ(Loads(), 1);
}

// Readers see one whole assignment or the other while it changes under them.
TEST_F(RestGroup, LoadsAndReadersAtOnce) {
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            while (!stop.load()) {
                Groups groups;
                if (GetRestGroupByMRBProcHandle(3001, 0, groups) != 0 || groups.size() != 1 ||
                    (groups[3001].size() != 3 && groups[3001].size() != 1)) {
                    ++wrong;
                }
            }
        });
    }
    std::thread loader([&] {
        for (int i = 0; i < 20; ++i) {
            wrong += LoadMRBRestGroup() == 0 ? 0 : 1;
        }
    });
    for (int i = 0; i < 20; ++i) {
        Server().SetBody(i % 2 == 0 ? R"({"groupmap": {"3001": {"1": "other"}}})" : kBody);
        wrong += LoadMRBRestGroup() == 0 ? 0 : 1;
    }
    loader.join();
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
