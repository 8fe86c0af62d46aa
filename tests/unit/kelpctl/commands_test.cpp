#include "kelpctl/commands.h"

#include <gmock/gmock.h>

namespace {

using kelpctl::FindCommand;
using kelpctl::FindTarget;
using kelpctl::ParseCommands;
using kelpctl::Process;
using testing::HasSubstr;

constexpr const char* kFile = R"({"name": "nemgr", "procType": 3001,
    "commands": [{"name": "read", "code": 4294967295, "help": "reads", "arguments": {"e": "x"}},
                 {"name": "write", "code": 2}],
    "results": {"20": "no answer", "-1": "minus one"}})";

Process Nemgr() {
    Process process;
    std::string why;
    EXPECT_TRUE(ParseCommands(kFile, process, why)) << why;
    return process;
}

TEST(CommandsFile, GivesNames) {
    const Process process = Nemgr();
    EXPECT_EQ(process.name, "nemgr");
    EXPECT_EQ(process.proc_type, 3001);
    ASSERT_EQ(process.commands.size(), 2U);
    ASSERT_NE(process.Find("read"), nullptr);
    EXPECT_EQ(process.Find("read")->code, 4294967295U);
    EXPECT_EQ(process.Find("read")->arguments.at(0).first, "e");
    EXPECT_EQ(process.Find(2U)->name, "write");
    EXPECT_EQ(process.Find("nosuch"), nullptr);
    EXPECT_EQ(process.results.at(20), "no answer");
    EXPECT_EQ(process.results.at(-1), "minus one");
}

TEST(CommandsFile, IsRefusedWholeWhenItIsNone) {
    const struct {
        const char* text;
        const char* why;
    } cases[] = {
        {"", "malformed JSON"},
        {"[]", "no object with"},
        {R"({"name":"x","procType":0,"commands":[]})", "no object with"},
        {R"({"name":"x","procType":65536,"commands":[]})", "no object with"},
        {R"({"name":"x","procType":"1","commands":[]})", "no object with"},
        {R"({"name":"","procType":1,"commands":[]})", "no object with"},
        {R"({"name":"x","procType":1,"commands":{}})", "no object with"},
        {R"({"name":"x","procType":1,"commands":[1]})", "a command without"},
        {R"({"name":"x","procType":1,"commands":[{"name":"c"}]})", "a command without"},
        {R"({"name":"x","procType":1,"commands":[{"name":"c","code":4294967296}]})",
         "a command without"},
        {R"({"name":"x","procType":1,"commands":[],"results":[]})", "\"results\" is no object"},
        {R"({"name":"x","procType":1,"commands":[],"results":{"a":"b"}})", "result 'a'"},
        {R"({"name":"x","procType":1,"commands":[],"results":{"1":2}})", "result '1'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Process process;
        std::string why;
        EXPECT_FALSE(ParseCommands(c.text, process, why));
        EXPECT_THAT(why, HasSubstr(c.why));
        EXPECT_EQ(process.name, "");
    }
}

TEST(Targets, AreNamesOrNumbersWithAHandle) {
    const std::vector<Process> known{Nemgr()};
    const struct {
        const char* text;
        int type;  // -1: refused
        int handle;
        bool described;
    } cases[] = {
        {"nemgr", 3001, 0, true},  {"nemgr.2", 3001, 2, true},
        {"3001", 3001, 0, true},   {"3001.65535", 3001, 65535, true},
        {"77", 77, 0, false},      {"65535", 65535, 0, false},
        {"0", -1, 0, false},       {"65536", -1, 0, false},
        {"-1", -1, 0, false},      {"nosuch", -1, 0, false},
        {"", -1, 0, false},        {"nemgr.", -1, 0, false},
        {"nemgr.x", -1, 0, false}, {"nemgr.65536", -1, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        std::string why;
        const auto target = FindTarget(c.text, known, why);
        ASSERT_EQ(target.has_value(), c.type >= 0) << why;
        if (target) {
            EXPECT_EQ(target->proc_type, c.type);
            EXPECT_EQ(target->handle, c.handle);
            EXPECT_EQ(target->process != nullptr, c.described);
        } else {
            EXPECT_NE(why, "");
        }
    }
}

TEST(CommandNames, AreLookedUpInTheirProcess) {
    const std::vector<Process> known{Nemgr()};
    std::string why;
    const auto nemgr = FindTarget("nemgr", known, why);
    const auto other = FindTarget("77", known, why);
    ASSERT_TRUE(nemgr && other);
    EXPECT_EQ(FindCommand("write", *nemgr, why), 2U);
    EXPECT_EQ(FindCommand("12", *nemgr, why), 12U);
    EXPECT_EQ(FindCommand("12", *other, why), 12U);
    EXPECT_EQ(FindCommand("write", *other, why), std::nullopt);
    EXPECT_THAT(why, HasSubstr("unknown command 'write'"));
    EXPECT_EQ(FindCommand("4294967296", *nemgr, why), std::nullopt);
    EXPECT_EQ(FindCommand("-1", *nemgr, why), std::nullopt);
}

}  // namespace
