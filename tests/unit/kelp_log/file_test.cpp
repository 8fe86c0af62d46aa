// Where the log's lines end up: files, their rotation and their faults, standard error.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "kelp/log.h"
#include "support/temp_folder.h"

namespace {

using kelp::log::Format;
using kelp::log::Level;
using kelp::log::Options;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const LocationInfo& kNowhere = LocationInfo::getLocationUnavailable();

std::vector<std::string> Lines(const std::string& bytes) {
    std::vector<std::string> lines;
    std::istringstream in(bytes);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class LogFile : public testing::Test {
  protected:
    void TearDown() override { LogProcess::Init(Options::FromEnvironment()); }

    bool Init() {
        m_options.file = Path();
        return LogProcess::Init(m_options);
    }
    std::string Path() const { return m_folder.Path("app.log"); }
    std::vector<std::string> FileLines() const { return Lines(ReadFile(Path())); }

    const TempFolder m_folder;
    Options m_options;
};

// A warning or an error is in the file when the call returns, behind all that was
// logged before it.
TEST_F(LogFile, WarningsAndErrorsAreWrittenAtOnceAndInOrder) {
    ASSERT_TRUE(Init());
    LogProcess::Info("one", kNowhere);
    LogProcess::Info("two", kNowhere);
    LogProcess::Warn("three", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" one"), EndsWith(" two"), EndsWith(" three")));
    LogProcess::Info("four", kNowhere);
    LogProcess::Error(5, "five", kNowhere);
    EXPECT_THAT(FileLines().back(), EndsWith(" code=0x00000005 five"));
    EXPECT_EQ(FileLines().size(), 5U);
    LogProcess::Info("six", kNowhere);
    kelp::log::Flush();
    EXPECT_THAT(FileLines().back(), EndsWith(" six"));
}

TEST_F(LogFile, TakesUpTheFileThatIsThere) {
    std::ofstream(Path()) << "before\n";
    ASSERT_TRUE(Init());
    LogProcess::Warn("after", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre("before", EndsWith(" after")));
}

TEST_F(LogFile, LevelDecidesWhatIsWritten) {
    const struct {
        Level level;
        const char* written;
    } cases[] = {{Level::kDebug, "diwe"},
                 {Level::kInfo, "iwe"},
                 {Level::kWarn, "we"},
                 {Level::kError, "e"},
                 {Level::kOff, ""}};
    for (const auto& c : cases) {
        std::filesystem::remove(Path());
        m_options.level = c.level;
        ASSERT_TRUE(Init());
        EXPECT_EQ(kelp::log::GetLevel(), c.level);
        LogProcess::Debug("d", kNowhere);
        LogProcess::Info("i", kNowhere);
        LogProcess::Warn("w", kNowhere);
        LogProcess::Error(1, "e", kNowhere);
        kelp::log::Flush();
        std::string written;
        for (const std::string& line : FileLines()) {
            written += line.back();
        }
        EXPECT_EQ(written, c.written);
    }
    kelp::log::SetLevel(Level::kWarn);
    EXPECT_EQ(kelp::log::GetLevel(), Level::kWarn);
    LogProcess::Warn("changed", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" changed")));
}

TEST_F(LogFile, JsonLines) {
    m_options.format = Format::kJson;
    m_options.process_id = 3001;
    ASSERT_TRUE(Init());
    LogProcess::Info("a\nb", LocationInfo("api", "Run", 9));
    LogProcess::Error(0xFFFFFFFF, "\xFF", kNowhere);
    const auto lines = FileLines();
    ASSERT_EQ(lines.size(), 2U);
    const auto info = nlohmann::json::parse(lines[0]);
    EXPECT_EQ(info.at("level"), "info");
    EXPECT_EQ(info.at("text"), "a\nb");
    EXPECT_EQ(info.at("unit"), "api");
    EXPECT_EQ(info.at("function"), "Run");
    EXPECT_EQ(info.at("line"), 9);
    EXPECT_EQ(info.at("process"), 3001);
    EXPECT_EQ(info.at("pid"), ::getpid());
    EXPECT_EQ(nlohmann::json::parse(lines[1]).at("code"), 0xFFFFFFFFU);
}

// A text cannot forge a line.
TEST_F(LogFile, OneRecordIsOneLine) {
    ASSERT_TRUE(Init());
    LogProcess::Warn("x\n2024-11-21T09:27:13.123456Z ERROR pid=1 tid=1 forged", kNowhere);
    EXPECT_EQ(FileLines().size(), 1U);
}

TEST_F(LogFile, MakesMissingFolders) {
    m_options.file = m_folder.Path("a/b/app.log");
    ASSERT_TRUE(LogProcess::Init(m_options));
    LogProcess::Warn("x", kNowhere);
    EXPECT_EQ(Lines(ReadFile(m_options.file)).size(), 1U);
}

// No file grows over the limit, as many old ones are kept as asked for, and read from
// the oldest to the newest they hold the last lines without a gap.
TEST_F(LogFile, Rotates) {
    m_options.rotate_bytes = 1000;
    m_options.rotate_files = 2;
    ASSERT_TRUE(Init());
    constexpr int kCount = 100;
    for (int i = 0; i < kCount; ++i) {
        LogProcess::Warn("number " + std::to_string(i), kNowhere);
    }
    std::vector<std::string> lines;
    for (const char* name : {"app.2.log", "app.1.log", "app.log"}) {
        const std::string bytes = ReadFile(m_folder.Path(name));
        EXPECT_LE(bytes.size(), 1000U) << name;
        EXPECT_GT(bytes.size(), 0U) << name;
        for (std::string& line : Lines(bytes)) {
            lines.push_back(std::move(line));
        }
    }
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("app.3.log")));
    int number = kCount - static_cast<int>(lines.size());
    EXPECT_GT(number, 0);
    for (const std::string& line : lines) {
        EXPECT_THAT(line, EndsWith(" number " + std::to_string(number++)));
    }
}

TEST_F(LogFile, ZeroNeverRotates) {
    m_options.rotate_bytes = 0;
    ASSERT_TRUE(Init());
    for (int i = 0; i < 100; ++i) {
        LogProcess::Warn(std::string(1000, 'x'), kNowhere);
    }
    EXPECT_EQ(FileLines().size(), 100U);
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("app.1.log")));
}

// Another program renamed the file: from Reopen on the lines go to a new one.
TEST_F(LogFile, Reopens) {
    ASSERT_TRUE(Init());
    LogProcess::Warn("one", kNowhere);
    std::filesystem::rename(Path(), m_folder.Path("moved"));
    LogProcess::Warn("two", kNowhere);
    kelp::log::Reopen();
    LogProcess::Warn("three", kNowhere);
    EXPECT_THAT(Lines(ReadFile(m_folder.Path("moved"))),
                ElementsAre(EndsWith(" one"), EndsWith(" two")));
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" three")));
}

// A file that was removed is noticed without being told.
TEST_F(LogFile, RemovedFileIsMadeAnew) {
    ASSERT_TRUE(Init());
    LogProcess::Warn("one", kNowhere);
    std::filesystem::remove(Path());
    LogProcess::Warn("two", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" two")));
}

// A file that cannot be opened is named once, the records go to standard error, and to
// the file as soon as it can be opened.
TEST_F(LogFile, UnusableFileFallsBackAndRecovers) {
    std::filesystem::create_directory(Path());  // a folder is where the file should be
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Init());
    LogProcess::Warn("one", kNowhere);
    LogProcess::Info("two", kNowhere);
    kelp::log::Flush();
    const auto lines = Lines(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "kelp log: records go to standard error, cannot write " + Path() +
                            ": Is a directory");
    EXPECT_THAT(lines[1], EndsWith(" one"));
    EXPECT_THAT(lines[2], EndsWith(" two"));

    std::filesystem::remove(Path());
    kelp::log::Reopen();
    LogProcess::Warn("three", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" three")));
}

// What a full disk does not take goes to standard error.
TEST_F(LogFile, FullDisk) {
    m_options.file = "/dev/full";
    ASSERT_TRUE(LogProcess::Init(m_options));
    testing::internal::CaptureStderr();
    LogProcess::Info("one", kNowhere);
    LogProcess::Warn("two", kNowhere);
    LogProcess::Warn("three", kNowhere);
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, HasSubstr("cannot write /dev/full: "));
    EXPECT_THAT(errors, HasSubstr("No space left on device"));
    EXPECT_THAT(errors, HasSubstr(" one\n"));
    EXPECT_THAT(errors, HasSubstr(" two\n"));
    EXPECT_THAT(errors, HasSubstr(" three\n"));
}

TEST_F(LogFile, WithoutAFileStandardError) {
    testing::internal::CaptureStderr();
    ASSERT_TRUE(LogProcess::Init(m_options));
    LogProcess::Info("one", kNowhere);
    LogProcess::Warn("two", kNowhere);
    EXPECT_THAT(Lines(testing::internal::GetCapturedStderr()),
                ElementsAre(EndsWith(" one"), EndsWith(" two")));
}

// Destroy writes what waits; later records go to standard error at once, and Init
// starts the log again.
TEST_F(LogFile, DestroyAndAfter) {
    ASSERT_TRUE(Init());
    LogProcess::Info("one", kNowhere);
    LogProcess::Destroy();
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" one")));
    testing::internal::CaptureStderr();
    LogProcess::Destroy();
    LogProcess::Debug("below the level", kNowhere);
    LogProcess::Info("two", kNowhere);
    LogProcess::Error(3, "three", kNowhere);
    kelp::log::Flush();
    EXPECT_THAT(Lines(testing::internal::GetCapturedStderr()),
                ElementsAre(EndsWith(" two"), EndsWith(" three")));
    EXPECT_EQ(FileLines().size(), 1U);
    ASSERT_TRUE(Init());
    LogProcess::Warn("four", kNowhere);
    EXPECT_THAT(FileLines(), ElementsAre(EndsWith(" one"), EndsWith(" four")));
}

// The trace gets every record, whatever the level of the log, and ends where it is told.
TEST_F(LogFile, Trace) {
    using KELPcommon::TraceClient;
    m_options.level = Level::kOff;
    ASSERT_TRUE(Init());
    const std::string first = m_folder.Path("first.trace");
    const std::string second = m_folder.Path("second.trace");
    LogProcess::Error(1, "before", kNowhere);
    ASSERT_EQ(TraceClient::Start(first), 0);
    LogProcess::Debug("one", kNowhere);
    ASSERT_EQ(TraceClient::Start(second, Level::kWarn), 0);
    LogProcess::Info("below", kNowhere);
    LogProcess::Warn("two", LocationInfo("api", "Run", 9));
    TraceClient::Destroy();
    TraceClient::Destroy();
    LogProcess::Error(1, "after", kNowhere);

    ASSERT_EQ(Lines(ReadFile(first)).size(), 1U);
    EXPECT_EQ(nlohmann::json::parse(ReadFile(first)).at("text"), "one");
    ASSERT_EQ(Lines(ReadFile(second)).size(), 1U);
    EXPECT_EQ(nlohmann::json::parse(ReadFile(second)).at("text"), "two");
    EXPECT_EQ(nlohmann::json::parse(ReadFile(second)).at("unit"), "api");
    struct stat status {};
    ASSERT_EQ(::stat(first.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_THAT(FileLines(), IsEmpty());

    EXPECT_EQ(TraceClient::Start(m_folder.Path("missing/trace")), ENOENT);
    EXPECT_EQ(TraceClient::Start(m_folder.Path()), EISDIR);
}

}  // namespace
