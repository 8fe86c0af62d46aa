// What happens when the log's output stalls: the callers of Debug and Info go on, the
// oldest records give way and are counted, warnings and errors are kept.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kelp/log.h"
#include "support/captured_log.h"
#include "support/temp_folder.h"

namespace {

using kelp::log::Options;

const LocationInfo& kNowhere = LocationInfo::getLocationUnavailable();

// A log whose file is a pipe that nobody reads until told to.
class StalledLog : public testing::Test {
  protected:
    void SetUp() override {
        m_options.file = m_folder.Path("pipe");
        ASSERT_EQ(::mkfifo(m_options.file.c_str(), 0600), 0);
        m_reader = ::open(m_options.file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(m_reader, 0);
        ::fcntl(m_reader, F_SETPIPE_SZ, 4096);
        ::fcntl(m_reader, F_SETFL, 0);
        m_dropped_before = kelp::log::Dropped();
    }
    void TearDown() override {
        LogProcess::Init(Options::FromEnvironment());
        ::close(m_reader);
    }

    std::uint64_t Dropped() const { return kelp::log::Dropped() - m_dropped_before; }

    // Ends the log while somebody reads it, once `writers` have logged what they had to.
    // Result: its lines.
    std::vector<std::string> Drain(std::vector<std::thread> writers = {}) {
        std::thread ender([&] {
            for (std::thread& writer : writers) {
                writer.join();
            }
            LogProcess::Error(1, "the end", kNowhere);
            LogProcess::Destroy();
        });
        std::string bytes;
        char block[65536];
        for (ssize_t got = 0; (got = ::read(m_reader, block, sizeof block)) > 0;) {
            bytes.append(block, static_cast<std::size_t>(got));
        }
        ender.join();
        std::vector<std::string> lines;
        std::istringstream in(bytes);
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    const TempFolder m_folder;
    Options m_options;
    int m_reader = -1;
    std::uint64_t m_dropped_before = 0;
};

// The numbers behind "record ", in the order of the lines, and the sum of all counts of
// dropped records.
struct Seen {
    explicit Seen(const std::vector<std::string>& lines) {
        static const std::regex record("record (\\d+)");
        static const std::regex notice(
            " WARN .* (\\d+) log records were dropped because the queue was full$");
        for (const std::string& line : lines) {
            std::smatch match;
            if (std::regex_search(line, match, notice)) {
                dropped += std::stoull(match[1]);
            } else if (std::regex_search(line, match, record)) {
                numbers.push_back(std::stoi(match[1]));
            }
        }
    }
    std::vector<int> numbers;
    std::uint64_t dropped = 0;
};

TEST_F(StalledLog, DropsTheOldestAndSaysHowMany) {
    m_options.queue_records = 10;
    ASSERT_TRUE(LogProcess::Init(m_options));
    int count = 0;
    while (Dropped() < 100) {
        LogProcess::Info("record " + std::to_string(count++), kNowhere);
    }
    const auto lines = Drain();
    const Seen seen(lines);
    EXPECT_EQ(seen.dropped, Dropped());
    EXPECT_EQ(seen.numbers.size() + seen.dropped, static_cast<std::size_t>(count));
    EXPECT_TRUE(std::is_sorted(seen.numbers.begin(), seen.numbers.end()));
    EXPECT_EQ(seen.numbers.back(), count - 1) << "the newest is never the one that goes";
    EXPECT_THAT(lines.back(), testing::EndsWith("the end"));
}

TEST_F(StalledLog, BytesAreBoundedToo) {
    m_options.queue_bytes = 20000;
    ASSERT_TRUE(LogProcess::Init(m_options));
    const std::string padding(1000, 'x');
    int count = 0;
    while (Dropped() < 100) {
        LogProcess::Info(padding + " record " + std::to_string(count++), kNowhere);
    }
    LogProcess::Info(std::string(50000, 'y') + " record " + std::to_string(count++), kNowhere);
    const Seen seen(Drain());
    EXPECT_EQ(seen.dropped, Dropped());
    EXPECT_EQ(seen.numbers.size() + seen.dropped, static_cast<std::size_t>(count));
    EXPECT_EQ(seen.numbers.back(), count - 1) << "even alone above the bound";
}

TEST_F(StalledLog, ErrorsAreNeverDropped) {
    m_options.queue_records = 10;
    ASSERT_TRUE(LogProcess::Init(m_options));
    int count = 0;
    while (Dropped() == 0) {
        LogProcess::Info("record " + std::to_string(count++), kNowhere);
    }
    const CapturedLog captured;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            LogProcess::Error(1, "error " + std::to_string(t), kNowhere);
            LogProcess::Warn("warning " + std::to_string(t), kNowhere);
        });
    }
    ASSERT_TRUE(captured.WaitForCount("error ", 4));
    const std::uint64_t before = Dropped();
    while (Dropped() < before + 100) {
        LogProcess::Info("record " + std::to_string(count++), kNowhere);
    }
    const auto lines = Drain(std::move(threads));
    const Seen seen(lines);
    EXPECT_EQ(seen.dropped, Dropped());
    EXPECT_EQ(seen.numbers.size() + seen.dropped, static_cast<std::size_t>(count));
    for (int t = 0; t < 4; ++t) {
        EXPECT_THAT(lines, testing::Contains(testing::EndsWith("error " + std::to_string(t))));
    }
}

// A pipe is no file to rename.
TEST_F(StalledLog, OnlyFilesAreRotated) {
    m_options.rotate_bytes = 10;
    ASSERT_TRUE(LogProcess::Init(m_options));
    LogProcess::Info("record 1", kNowhere);
    LogProcess::Info("record 2", kNowhere);
    EXPECT_EQ(Seen(Drain()).numbers.size(), 2U);
    EXPECT_TRUE(std::filesystem::is_fifo(m_options.file));
}

}  // namespace
