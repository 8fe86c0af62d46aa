// What single members of the gateway's answer become, and what is said about them.
#include "platform/restgroup_body.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captured_log.h"

namespace {

using FrameUtil::ReadRestGroups;
using FrameUtil::RestGroups;
using testing::ElementsAre;

struct Row {
    const char* name;
    std::string body;
    bool taken;
    RestGroups groups;
    std::vector<std::string> errors;  // all with code 0xb00001a, unless they are of JSON
};

std::string Invalid(const std::string& what) {
    return "LoadKelpMRBRestGroup: invalid " + what;
}
std::string BadShape(const std::string& body) {
    return "LoadKelpMRBRestGroup: invalid json rsp: " + body;
}
std::string NoJson(const std::string& body) {
    return "LoadKelpMRBRestGroup: parse json fail: " + body;
}

const std::vector<Row>& Rows() {
    static const std::vector<Row> rows = {
        {"groups",
         R"({"groupmap": {"3001": {"0": "a", "2": "b"}, "7": {"1": "c"}}})",
         true,
         {{7, {{1, "c"}}}, {3001, {{0, "a"}, {2, "b"}}}},
         {}},
        {"none", R"({"groupmap": {}})", true, {}, {}},
        {"process without handles", R"({"groupmap": {"7": {}}})", true, {}, {}},
        {"other members",
         R"({"x": 1, "groupmap": {"7": {"1": "c"}}})",
         true,
         {{7, {{1, "c"}}}},
         {}},
        {"process 0",
         R"({"groupmap": {"0": {"1": "a"}, "7": {"1": "c"}}})",
         true,
         {{7, {{1, "c"}}}},
         {Invalid("procid 0, 0")}},
        {"process below 0",
         R"({"groupmap": {"-3": {"1": "a"}}})",
         true,
         {},
         {Invalid("procid -3, -3")}},
        {"process that is no number",
         R"({"groupmap": {"nemgr": {"1": "a"}, "": {}}})",
         true,
         {},
         {Invalid("procid 0, "), Invalid("procid 0, nemgr")}},
        {"process beyond int",
         R"({"groupmap": {"4294974297": {"1": "a"}}})",
         true,
         {},
         {Invalid("procid -1, 4294974297")}},
        {"process beyond long",
         R"({"groupmap": {"99999999999999999999": {"1": "a"}}})",
         true,
         {},
         {Invalid("procid -1, 99999999999999999999")}},
        {"largest process",
         R"({"groupmap": {"2147483647": {"1": "a"}, "2147483648": {}}})",
         true,
         {{2147483647, {{1, "a"}}}},
         {Invalid("procid -1, 2147483648")}},
        {"number with more behind it",
         R"({"groupmap": {"7x": {" 1 ": "a"}}})",
         true,
         {{7, {{1, "a"}}}},
         {}},
        {"two names of one number",
         R"({"groupmap": {"07": {"1": "a"}, "7": {"2": "b"}}})",
         true,
         {{7, {{1, "a"}, {2, "b"}}}},
         {}},
        {"handle below 0",
         R"({"groupmap": {"7": {"-1": "a", "1": "b"}}})",
         true,
         {{7, {{1, "b"}}}},
         {Invalid("prochandle -1, -1")}},
        {"handle beyond int",
         R"({"groupmap": {"7": {"4294967297": "a"}}})",
         true,
         {},
         {Invalid("prochandle -1, 4294967297")}},
        {"handle that is no number is 0",
         R"({"groupmap": {"7": {"x": "a"}}})",
         true,
         {{7, {{0, "a"}}}},
         {}},
        {"handles are no object",
         R"({"groupmap": {"7": ["a"], "8": "b", "9": null}})",
         true,
         {},
         {}},
        {"group is a number",
         R"({"groupmap": {"7": {"1": 17, "2": null, "3": true}}})",
         true,
         {{7, {{1, "17"}, {2, ""}, {3, "true"}}}},
         {}},
        {"group is a list",
         R"({"groupmap": {"7": {"1": ["a"], "2": "b"}}})",
         true,
         {{7, {{1, ""}, {2, "b"}}}},
         {"json exception:Type is not convertible to string"}},
        {"empty body", "", false, {}, {NoJson("")}},
        {"no JSON", "<html>", false, {}, {NoJson("<html>")}},
        {"not UTF-8",
         "{\"groupmap\": {\"7\": {\"1\": \"\xff\"}}}",
         false,
         {},
         {NoJson("{\"groupmap\": {\"7\": {\"1\": \"\xff\"}}}")}},
        {"a list", "[]", false, {}, {BadShape("[]")}},
        {"a text", "\"x\"", false, {}, {BadShape("\"x\"")}},
        {"null", "null", false, {}, {BadShape("null")}},
        {"no groupmap", "{}", false, {}, {BadShape("{}")}},
        {"groupmap is a list", R"({"groupmap": []})", false, {}, {BadShape(R"({"groupmap": []})")}},
        {"groupmap is null",
         R"({"groupmap": null})",
         false,
         {},
         {BadShape(R"({"groupmap": null})")}},
    };
    return rows;
}

TEST(RestGroupBody, Members) {
    for (const Row& row : Rows()) {
        const CapturedLog log;
        RestGroups groups = {{1, {{1, "from before"}}}};
        EXPECT_EQ(ReadRestGroups(row.body, groups), row.taken) << row.name;
        EXPECT_EQ(groups, row.groups) << row.name;
        EXPECT_EQ(log.Texts(), row.errors) << row.name;
        for (const auto& entry : log.Entries()) {
            EXPECT_EQ(entry.level, kelp::log::Level::kError) << row.name;
            EXPECT_EQ(entry.code, entry.text.starts_with("json") ? 0U : 0xb00001aU) << row.name;
            EXPECT_EQ(entry.unit + ":" + entry.function, "restgroup:LoadKelpMRBRestGroup");
        }
    }
}

TEST(RestGroupBody, DeepAndLongBodiesAreCutInTheLog) {
    for (const std::string& body :
         {std::string(100000, '['), "{\"groupmap\": \"" + std::string(100000, 'x') + "\"}"}) {
        const CapturedLog log;
        RestGroups groups;
        EXPECT_FALSE(ReadRestGroups(body, groups));
        ASSERT_EQ(log.Texts().size(), 1U);
        EXPECT_EQ(log.Texts()[0].size(), 4095U);
    }
}

// A line of the log is written before the next member is read.
TEST(RestGroupBody, ManyInvalidMembers) {
    for (const auto& [count, lines] : {std::pair{100, 100}, {101, 101}, {5000, 101}}) {
        std::string body = "{\"groupmap\": {\"7\": {\"1\": \"a\"}";
        for (int i = 1; i <= count; ++i) {
            body += ", \"-" + std::to_string(i) + "\": {}";
        }
        const CapturedLog log;
        RestGroups groups;
        EXPECT_TRUE(ReadRestGroups(body + "}}", groups));
        EXPECT_EQ(groups.size(), 1U);
        ASSERT_EQ(log.Texts().size(), static_cast<std::size_t>(lines)) << count;
        if (count > 100) {
            EXPECT_EQ(log.Texts().back(), "LoadKelpMRBRestGroup: " + std::to_string(count - 100) +
                                              " more invalid members");
        }
    }
}

}  // namespace
