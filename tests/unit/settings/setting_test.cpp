#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelp/settings.h"
#include "settings/configuration.h"
#include "support/installation.h"

namespace {

using KELPSetting::Setting;
using testing::ElementsAre;

constexpr const char* kSettings = R"({
  "databases": {"MCDB": {"password": "secret"}},
  "settings": {
    "kelp": {"sac": {
      "agents": {"nemgr": {"snmpportrange": "20000-20999"}},
      "services": {
        "trapd": {"svctag": "trapd", "msgProcess": {"executableFile": "trapd"}},
        "nemgr": {"svctag": "nemgr", "msgProcess": {"executableFile": "nemgr"}, "threads": 12},
        "bare": 1
      }}},
    "list": [1, 2], "truth": true, "half": 0.5, "big": 18446744073709551615, "empty": "",
    "bare": {"nothing": {}}, "null": null
  }
})";

TEST(Setting, SubGroups) {
    const Installation installation(kSettings);
    struct Row {
        const char* group;
        int code;
        std::vector<std::string> groups;
    };
    const std::vector<std::string> before = {"as it was"};
    const Row rows[] = {
        {"/kelp/sac/services/", 0, {"/kelp/sac/services/nemgr/", "/kelp/sac/services/trapd/"}},
        {"/kelp/sac/services", 0, {"/kelp/sac/services/nemgr/", "/kelp/sac/services/trapd/"}},
        {"/", 0, {"/kelp/"}},
        {"/bare/", KELPSetting::SETTING_ERR_NOT_FOUND, before},
        {"/kelp/sac/agents/nemgr/", 0, {}},
        {"/kelp/sac/service", KELPSetting::SETTING_ERR_NOT_FOUND, before},
        {"/kelp/sac/services/nemgr/svctag", KELPSetting::SETTING_ERR_NOT_FOUND, before},
        {"kelp", KELPSetting::SETTING_ERR_NOT_FOUND, before},
        {"//kelp", KELPSetting::SETTING_ERR_NOT_FOUND, before},
        {"", KELPSetting::SETTING_ERR_NOT_FOUND, before},
    };
    for (const Row& row : rows) {
        std::vector<std::string> groups = before;
        EXPECT_EQ(Setting::instance()->getGroupSubGroups(row.group, groups), row.code) << row.group;
        EXPECT_EQ(groups, row.groups) << row.group;
    }
}

TEST(Setting, Parameters) {
    const Installation installation(kSettings);
    struct Row {
        const char* param;
        int code;
        const char* value;
    };
    const Row rows[] = {
        {"/kelp/sac/services/nemgr/svctag", 0, "nemgr"},
        {"/kelp/sac/services/trapd/msgProcess/executableFile", 0, "trapd"},
        {"/kelp/sac/services/nemgr/threads", 0, "12"},
        {"/kelp/sac/agents/nemgr/snmpportrange", 0, "20000-20999"},
        {"/big", 0, "18446744073709551615"},
        {"/empty", 0, ""},
        {"/list", KELPSetting::SETTING_ERR_FORMAT, "as it was"},
        {"/truth", KELPSetting::SETTING_ERR_FORMAT, "as it was"},
        {"/half", KELPSetting::SETTING_ERR_FORMAT, "as it was"},
        {"/null", KELPSetting::SETTING_ERR_FORMAT, "as it was"},
        {"/kelp", KELPSetting::SETTING_ERR_NOT_FOUND, "as it was"},
        {"/kelp/sac/services/nemgr/svctag/", KELPSetting::SETTING_ERR_NOT_FOUND, "as it was"},
        {"../databases/MCDB/password", KELPSetting::SETTING_ERR_NOT_FOUND, "as it was"},
        {"", KELPSetting::SETTING_ERR_NOT_FOUND, "as it was"},
    };
    for (const Row& row : rows) {
        std::string value = "as it was";
        EXPECT_EQ(Setting::instance()->getParamValue(row.param, value), row.code) << row.param;
        EXPECT_EQ(value, row.value) << row.param;
    }
}

TEST(Setting, UnusableFile) {
    struct Row {
        const char* name;
        const char* settings;
    };
    const Row rows[] = {
        {"empty", ""},
        {"cut", "{\"settings\": {"},
        {"no object", "[1]"},
        {"doubled name", "{\"a\": 1, \"a\": 2}"},
        {"comment", "{} // and more"},
        {"behind the end", "{} {}"},
        {"name with a slash", "{\"settings\": {\"a/b\": 1}}"},
        {"empty name", "{\"settings\": {\"\": 1}}"},
        {"not UTF-8", "{\"settings\": {\"a\": \"\xff\"}}"},
    };
    for (const Row& row : rows) {
        const Installation installation(row.settings);
        std::string value = "as it was";
        std::vector<std::string> groups = {"as it was"};
        EXPECT_EQ(Setting::instance()->getParamValue("/a", value), KELPSetting::SETTING_ERR_FORMAT)
            << row.name;
        EXPECT_EQ(Setting::instance()->getGroupSubGroups("/", groups),
                  KELPSetting::SETTING_ERR_FORMAT)
            << row.name;
        EXPECT_EQ(value, "as it was") << row.name;
        EXPECT_THAT(groups, ElementsAre("as it was")) << row.name;
        EXPECT_THAT(kelp::settings::Configuration::Current()->Why(),
                    testing::StartsWith(installation.File() + ":"))
            << row.name;
    }
}

TEST(Setting, WithoutARootOrAFile) {
    const Installation installation;
    std::string value;
    EXPECT_EQ(Setting::instance()->getParamValue("/a", value), KELPSetting::SETTING_ERR_FILE);
    ::unsetenv("OSS_ROOT");
    EXPECT_EQ(Setting::instance()->getParamValue("/a", value), KELPSetting::SETTING_ERR_NO_ROOT);
}

// Passwords are not kept in memory for those who ask for other things.
TEST(Configuration, LeavesTheDatabasesOut) {
    const Installation installation(kSettings);
    EXPECT_FALSE(kelp::settings::Configuration::Current()->HasGroup("databases/"));
    EXPECT_TRUE(kelp::settings::Configuration::Current()->HasGroup("settings/kelp/"));
}

TEST(Configuration, DeepAndLargeFiles) {
    std::string deep = "1";
    for (int i = 0; i < 1100; ++i) {
        deep = "{\"a\": " + deep + "}";
    }
    const std::string large = "{\"a\": \"" + std::string(2U << 20U, 'x') + "\"}";
    for (const std::string& settings : {deep, large}) {
        const Installation installation(settings);
        EXPECT_EQ(kelp::settings::Configuration::Current()->GetState(),
                  kelp::settings::Configuration::State::kMalformed);
    }
}

}  // namespace
