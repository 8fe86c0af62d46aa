// The databases that the configuration names.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "kelp/settings.h"
#include "support/captured_log.h"
#include "support/installation_root.h"

namespace {

using namespace KELPcommonWrap;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using Info = std::map<std::string, std::string>;

int Read(const std::string& name, Info& info) {
    return SysConfigure().getDBServerInfoByDBName(name, info);
}

TEST(Databases, GiveAllTheirMembers) {
    const InstallationRoot root;
    root.Configure(R"({
        "bus": {"frameLimit": 1000},
        "databases": {
            "MCDB": {"type": "postgresql", "url": "postgresql://db1:5432/mcdb?sslmode=require",
                     "lib": "libpq.so.5", "serviceName": "mcdb", "user": "nemgr",
                     "password": "a\"b\\c\/d\u00e9\ud83d\ude80Å\n", "adminUser": "",
                     "adminPassword": "secret", "note": "kept too"},
            "other": {"type": 7}
        }
    })");
    Info info = {{"before", "is gone"}};
    EXPECT_EQ(Read("MCDB", info), 0);
    EXPECT_THAT(info, ElementsAre(Pair("adminPassword", "secret"), Pair("adminUser", ""),
                                  Pair("lib", "libpq.so.5"), Pair("note", "kept too"),
                                  Pair("password", "a\"b\\c/dé\xF0\x9F\x9A\x80Å\n"),
                                  Pair("serviceName", "mcdb"), Pair("type", "postgresql"),
                                  Pair("url", "postgresql://db1:5432/mcdb?sslmode=require"),
                                  Pair("user", "nemgr")));
    EXPECT_EQ(Read("other", info), 0);
    EXPECT_THAT(info, ElementsAre(Pair("type", "7")));
}

// What is wrong is named with the file, the line and the database, never with a value.
TEST(Databases, SayWhatIsWrong) {
    const struct {
        const char* name;
        std::string text;
        int code;
        const char* place;
    } cases[] = {
        {"unknown name", "{\"databases\": {}}", SYSCONF_ERR_NO_DATABASE, "kelp.json: "},
        {"no databases", "{}", SYSCONF_ERR_NO_DATABASE, "kelp.json: "},
        {"databases are a list", "{\n\"databases\": []}", SYSCONF_ERR_FORMAT, "kelp.json:2: "},
        {"database is a text", "{\"databases\": {\n\n\"X\": \"hunter2\"}}", SYSCONF_ERR_FORMAT,
         "kelp.json:3: "},
        {"password is a number", "{\"databases\": {\"X\": {\n\"password\": 4711}}}",
         SYSCONF_ERR_FORMAT, "kelp.json:2: \"password\" is no text"},
        {"member is a list", "{\"databases\": {\"X\": {\n\n\"lib\": [\"hunter2\"]}}}",
         SYSCONF_ERR_FORMAT, "kelp.json:3: \"lib\" is no text"},
        {"member is a fraction", "{\"databases\": {\"X\": {\"type\": 1.5}}}", SYSCONF_ERR_FORMAT,
         "kelp.json:1: "},
        {"credentials in the URL",
         "{\"databases\": {\"X\": {\"url\": \"postgresql://u:hunter2@h/d\"}}}", SYSCONF_ERR_FORMAT,
         "kelp.json:1: \"url\" holds credentials"},
        {"password in the URL's query",
         "{\"databases\": {\"X\": {\"url\": \"postgresql://h/d?password=hunter2\"}}}",
         SYSCONF_ERR_FORMAT, "kelp.json:1: \"url\" holds credentials"},
        {"empty", "", SYSCONF_ERR_FORMAT, "kelp.json:"},
        {"a list", "[]", SYSCONF_ERR_FORMAT, "kelp.json:"},
        {"text behind it", "{}\n{}", SYSCONF_ERR_FORMAT, "kelp.json:2"},
        {"trailing comma", "{\n\"a\": 1,\n}", SYSCONF_ERR_FORMAT, "kelp.json:3"},
        {"doubled name", "{\"a\": 1,\n\"a\": 2}", SYSCONF_ERR_FORMAT, "kelp.json:2"},
        {"comment", "{\n// hunter2\n}", SYSCONF_ERR_FORMAT, "kelp.json:2: "},
        {"password without quotes", "{\"databases\": {\"X\": {\n\"password\": hunter2}}}",
         SYSCONF_ERR_FORMAT, "kelp.json:2"},
        {"text without end", "{\"a\": \"hunter2", SYSCONF_ERR_FORMAT, "kelp.json:1: "},
        {"bad escape", "{\n\n\"a\": \"\\x\"}", SYSCONF_ERR_FORMAT, "kelp.json:3: "},
        {"half a surrogate pair", "{\"a\": \"\\ud83d\"}", SYSCONF_ERR_FORMAT, "kelp.json:1: "},
        {"zero character", "{\"a\": \"\\u0000\"}", SYSCONF_ERR_FORMAT, "kelp.json:1: "},
        {"control character", "{\"a\": \"\x01\"}", SYSCONF_ERR_FORMAT, "kelp.json:1: "},
        {"no UTF-8", "{\"a\": \"\xFF\"}", SYSCONF_ERR_FORMAT, "kelp.json:1: "},
        {"nested deeply", "{\"a\": " + std::string(2000, '[') + std::string(2000, ']') + "}",
         SYSCONF_ERR_FORMAT, "kelp.json:"},
        {"too large", "{\"a\": \"" + std::string(1 << 20, 'x') + "\"}", SYSCONF_ERR_FORMAT,
         "kelp.json: larger than 1 MiB"},
    };
    const InstallationRoot root;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        root.Configure(c.text);
        const CapturedLog log;
        Info info = {{"kept", "as it was"}};
        EXPECT_EQ(Read("X", info), c.code);
        EXPECT_THAT(info, ElementsAre(Pair("kept", "as it was")));
        EXPECT_THAT(log.Texts(), ElementsAre(AllOf(HasSubstr("[settings] database X: "),
                                                   HasSubstr(c.place), Not(HasSubstr("hunter2")))));
    }
}

TEST(Databases, WithoutAFileOrARoot) {
    Info info;
    {
        const InstallationRoot root;
        const CapturedLog log;
        EXPECT_EQ(Read("MCDB", info), SYSCONF_ERR_FILE);
        EXPECT_TRUE(log.Contains("kelp.json: No such file"));
        ASSERT_EQ(::mkfifo(root.ConfigurationPath().c_str(), 0600), 0);
        EXPECT_EQ(Read("MCDB", info), SYSCONF_ERR_FORMAT);
        EXPECT_TRUE(log.Contains("kelp.json: no regular file"));
    }
    const InstallationRoot restored;
    ::unsetenv("OSS_ROOT");
    const CapturedLog log;
    EXPECT_EQ(Read("MCDB", info), SYSCONF_ERR_NO_ROOT);
    EXPECT_THAT(log.Texts(), ElementsAre("[settings] database MCDB: OSS_ROOT is not set: run "
                                         "'kelpd init DIR' and export what it prints"));
}

// Passwords in a file that others can read are known to others: nothing is read from it.
TEST(Databases, WithPasswordsMustBeTheOwners) {
    const InstallationRoot root;
    const std::string with = R"({"databases": {"A": {"user": "u"}, "B": {"password": "hunter2"}}})";
    const std::string without = R"({"databases": {"A": {"user": "u", "password": ""}}})";
    const struct {
        const std::string& text;
        mode_t mode;
        int code;
    } cases[] = {
        {with, 0600, 0},
        {with, 0640, 0},
        {with, 0644, SYSCONF_ERR_PERMISSION},
        {with, 0620, SYSCONF_ERR_PERMISSION},
        {with, 0602, SYSCONF_ERR_PERMISSION},
        {without, 0644, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        root.Configure(c.text, c.mode);
        Info info;
        EXPECT_EQ(Read("A", info), c.code);
    }
}

}  // namespace
