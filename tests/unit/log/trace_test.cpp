#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "secure/fault.h"
#include "support/captured_log.h"

namespace {

using kelp::log::Level;

LocationInfo& Where() {
    static LocationInfo where("ftpapi.cpp", "Upload", 88);
    return where;
}

// One row a function: how it is called with a text, and what it makes of it.
struct Function {
    const char* name;
    std::function<void(const char*)> call;
    std::string prefix;
    Level level;
    unsigned code;
    std::string failure;
    bool at_where;
};

const std::vector<Function>& Functions() {
    static const std::vector<Function> functions = {
        {"TraceFlow", [](const char* text) { FrameUtil::TraceFlow(Where(), "%s", text); },
         "[Frame],", Level::kInfo, 0, "vsnprintf_s failed at line 47", true},
        {"Trace", [](const char* text) { FrameUtil::Trace("%s", text); }, "[Frame]", Level::kError,
         0, "vsnprintf_s failed at line 72", false},
        {"TraceDebug", [](const char* text) { FrameUtil::TraceDebug("%s", text); }, "[Frame]",
         Level::kDebug, 0, "vsnprintf_s failed at line 89", false},
        {"TraceInfo", [](const char* text) { FrameUtil::TraceInfo("%s", text); }, "[Frame]",
         Level::kInfo, 0, "vsnprintf_s failed at line 106", false},
        {"TraceWarn", [](const char* text) { FrameUtil::TraceWarn("%s", text); }, "[Frame]",
         Level::kWarn, 0, "vsnprintf_s failed at line 123", false},
        {"TraceError", [](const char* text) { FrameUtil::TraceError(0x42000030UL, "%s", text); },
         "[Frame]", Level::kError, 0x42000030U, "vsnprintf_s failed at line 140", false},
    };
    return functions;
}

void ExpectLocation(const CapturedLog::Entry& entry, const Function& function) {
    EXPECT_EQ(entry.unit, function.at_where ? "ftpapi.cpp" : "") << function.name;
    EXPECT_EQ(entry.function, function.at_where ? "Upload" : "") << function.name;
    EXPECT_EQ(entry.line, function.at_where ? 88 : 0) << function.name;
}

void ExpectFailure(const CapturedLog::Entry& entry, const Function& function) {
    EXPECT_EQ(entry.level, Level::kWarn) << function.name;
    EXPECT_EQ(entry.text, function.failure) << function.name;
    ExpectLocation(entry, function);
}

void ExpectRecord(const CapturedLog::Entry& entry, const Function& function,
                  const std::string& text) {
    EXPECT_EQ(entry.level, function.level) << function.name;
    EXPECT_EQ(entry.code, function.code) << function.name;
    EXPECT_EQ(entry.text, function.prefix + text) << function.name;
    ExpectLocation(entry, function);
}

// The marker stands directly in front of the text, with a comma only for TraceFlow.
// A text of up to 4095 characters is one record; a longer one is cut there, and the
// warning and the cut record are both written, the warning first.
TEST(Trace, MarkerLevelCodeAndLocation) {
    const struct {
        std::string text;
        std::string after;
        bool fails;
    } cases[] = {
        {"x", "x", false},
        {"", "", false},
        {std::string(4094, 'a'), std::string(4094, 'a'), false},
        {std::string(4095, 'a'), std::string(4095, 'a'), false},
        {std::string(4096, 'a'), std::string(4095, 'a'), true},
        {std::string(100000, 'a'), std::string(4095, 'a'), true},
    };
    for (const Function& function : Functions()) {
        for (const auto& c : cases) {
            const CapturedLog log;
            function.call(c.text.c_str());
            const auto entries = log.Entries();
            ASSERT_EQ(entries.size(), c.fails ? 2U : 1U) << function.name << c.text.size();
            if (c.fails) {
                ExpectFailure(entries.front(), function);
            }
            ExpectRecord(entries.back(), function, c.after);
        }
    }
}

// A formatting that fails for another reason leaves an empty text: the record is the
// marker alone.
TEST(Trace, FailingFormat) {
    for (const Function& function : Functions()) {
        const CapturedLog log;
        {
            const kelp::secure::FailNth fault(kelp::secure::Routine::kSnprintf, 1);
            function.call("lost");
            EXPECT_TRUE(fault.Fired()) << function.name;
        }
        const auto entries = log.Entries();
        ASSERT_EQ(entries.size(), 2U) << function.name;
        ExpectFailure(entries.front(), function);
        ExpectRecord(entries.back(), function, "");
    }
}

TEST(Trace, NullFormat) {
    const CapturedLog log;
    void (*const trace)(const char*, ...) = FrameUtil::Trace;
    trace(nullptr);
    EXPECT_THAT(log.Texts(), testing::ElementsAre("vsnprintf_s failed at line 72", "[Frame]"));
}

// Only the lower 32 bits of a code are logged.
TEST(Trace, CodesAreCutTo32Bits) {
    const struct {
        unsigned long code;
        unsigned logged;
    } cases[] = {{0, 0},
                 {0xFFFFFFFFUL, 0xFFFFFFFFU},
                 {0x100000000UL, 0},
                 {0x123456789UL, 0x23456789U},
                 {static_cast<unsigned long>(-1), 0xFFFFFFFFU}};
    for (const auto& c : cases) {
        const CapturedLog log;
        FrameUtil::TraceError(c.code, "x");
        ASSERT_EQ(log.Entries().size(), 1U);
        EXPECT_EQ(log.Entries().front().code, c.logged) << c.code;
    }
}

TEST(Trace, FormatsItsArguments) {
    const CapturedLog log;
    FrameUtil::Trace("memset_s failed at line %d errno: %d", 465, 22);
    FrameUtil::TraceInfo("%5.2f|%-4s|%#lx|100%%", 3.14159, "ab", 0x42UL);
    FrameUtil::TraceFlow(Where(), "no arguments");
    FrameUtil::TraceWarn("two\nlines");
    EXPECT_THAT(log.Texts(), testing::ElementsAre("[Frame]memset_s failed at line 465 errno: 22",
                                                  "[Frame] 3.14|ab  |0x42|100%",
                                                  "[Frame],no arguments", "[Frame]two\nlines"));
}

// A zero character ends the text, as it ends every text of C.
TEST(Trace, ZeroCharacterEndsTheText) {
    const CapturedLog log;
    FrameUtil::TraceInfo("a%cb", 0);
    EXPECT_THAT(log.Texts(), testing::ElementsAre("[Frame]a"));
}

// The level is the logger's matter: a sink that asks for everything gets everything.
TEST(Trace, DoesNotFilter) {
    const Level before = kelp::log::GetLevel();
    kelp::log::SetLevel(Level::kOff);
    const CapturedLog log;
    for (const Function& function : Functions()) {
        function.call("x");
    }
    EXPECT_EQ(log.Entries().size(), Functions().size());
    kelp::log::SetLevel(before);
}

TEST(Trace, FromManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    const CapturedLog log;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kRounds; ++i) {
                FrameUtil::TraceDebug("thread %d round %d", t, i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(log.Count("[Frame]thread "), static_cast<std::size_t>(kThreads * kRounds));
    for (int t = 0; t < kThreads; ++t) {
        const std::string last =
            "thread " + std::to_string(t) + " round " + std::to_string(kRounds - 1);
        EXPECT_TRUE(log.Contains(last)) << last;
    }
}

}  // namespace
