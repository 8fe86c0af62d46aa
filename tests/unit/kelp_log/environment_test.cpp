#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "kelp/log.h"

namespace {

using kelp::log::Format;
using kelp::log::Level;
using kelp::log::Options;

constexpr const char* kVariables[] = {"KELP_LOG_LEVEL", "KELP_LOG_FILE", "KELP_LOG_FORMAT",
                                      "KELP_PROC_ID"};

// Leaves the environment as it was.
class LogEnvironment : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* variable : kVariables) {
            const char* const value = ::getenv(variable);
            m_before.emplace_back(value == nullptr ? "" : value);
            ::unsetenv(variable);
        }
    }
    void TearDown() override {
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (m_before[i].empty()) {
                ::unsetenv(kVariables[i]);
            } else {
                ::setenv(kVariables[i], m_before[i].c_str(), 1);
            }
        }
    }

  private:
    std::vector<std::string> m_before;
};

TEST_F(LogEnvironment, Unset) {
    const Options options = Options::FromEnvironment();
    EXPECT_EQ(options.level, Level::kInfo);
    EXPECT_EQ(options.format, Format::kText);
    EXPECT_EQ(options.file, "");
    EXPECT_EQ(options.process_id, 0U);
    EXPECT_EQ(options.rotate_bytes, 16U << 20U);
    EXPECT_EQ(options.rotate_files, 5U);
}

TEST_F(LogEnvironment, Levels) {
    const struct {
        const char* text;
        Level level;
    } cases[] = {{"", Level::kInfo},     {"debug", Level::kDebug}, {"info", Level::kInfo},
                 {"warn", Level::kWarn}, {"error", Level::kError}, {"off", Level::kOff}};
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        ::setenv("KELP_LOG_LEVEL", c.text, 1);
        EXPECT_EQ(Options::FromEnvironment().level, c.level) << c.text;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LogEnvironment, FileFormatAndProcess) {
    ::setenv("KELP_LOG_FILE", "/tmp/x y.log", 1);
    ::setenv("KELP_LOG_FORMAT", "json", 1);
    ::setenv("KELP_PROC_ID", "65535", 1);
    const Options options = Options::FromEnvironment();
    EXPECT_EQ(options.file, "/tmp/x y.log");
    EXPECT_EQ(options.format, Format::kJson);
    EXPECT_EQ(options.process_id, 65535U);
    ::setenv("KELP_LOG_FORMAT", "text", 1);
    EXPECT_EQ(Options::FromEnvironment().format, Format::kText);
}

// What is not spelt correctly is named, with what was expected, and has no effect.
TEST_F(LogEnvironment, WrongValuesAreNamedAndIgnored) {
    const struct {
        const char* variable;
        const char* value;
        const char* complaint;
    } cases[] = {
        {"KELP_LOG_LEVEL", "loud",
         "kelp log: KELP_LOG_LEVEL=loud is ignored, expected: debug, info, warn, error or off\n"},
        {"KELP_LOG_LEVEL", "INFO",
         "kelp log: KELP_LOG_LEVEL=INFO is ignored, expected: debug, info, warn, error or off\n"},
        {"KELP_LOG_FORMAT", "xml",
         "kelp log: KELP_LOG_FORMAT=xml is ignored, expected: text or json\n"},
        {"KELP_PROC_ID", "65536",
         "kelp log: KELP_PROC_ID=65536 is ignored, expected: a number from 0 to 65535\n"},
        {"KELP_PROC_ID", "-1",
         "kelp log: KELP_PROC_ID=-1 is ignored, expected: a number from 0 to 65535\n"},
        {"KELP_PROC_ID", "12x",
         "kelp log: KELP_PROC_ID=12x is ignored, expected: a number from 0 to 65535\n"},
    };
    for (const auto& c : cases) {
        ::setenv(c.variable, c.value, 1);
        testing::internal::CaptureStderr();
        const Options options = Options::FromEnvironment();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.complaint);
        EXPECT_EQ(options.level, Level::kInfo);
        EXPECT_EQ(options.format, Format::kText);
        EXPECT_EQ(options.process_id, 0U);
        ::unsetenv(c.variable);
    }
    // However long a value is, the complaint is one line.
    ::setenv("KELP_LOG_LEVEL", std::string(5000, 'x').c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(Options::FromEnvironment().level, Level::kInfo);
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_LE(complaint.size(), 1024U);
    EXPECT_THAT(complaint, testing::EndsWith("\n"));
}

}  // namespace
