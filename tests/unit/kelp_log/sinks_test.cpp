#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "kelp/log.h"
#include "support/captured_log.h"

namespace {

using kelp::log::Level;
using kelp::log::Record;
using testing::ElementsAre;
using testing::IsEmpty;

const LocationInfo kWhere("unit.cpp", "Function", 7);

// The output keeps quiet; sinks decide for themselves.
class Sinks : public testing::Test {
  protected:
    void SetUp() override {
        m_before = kelp::log::GetLevel();
        kelp::log::SetLevel(Level::kOff);
    }
    void TearDown() override { kelp::log::SetLevel(m_before); }

  private:
    Level m_before = Level::kInfo;
};

void LogAtEveryLevel() {
    LogProcess::Debug("d", kWhere);
    LogProcess::Info("i", kWhere);
    LogProcess::Warn("w", kWhere);
    LogProcess::Error(5, "e", kWhere);
}

// A sink gets the records at its own minimum, whatever the level of the log is.
TEST_F(Sinks, EachHasItsMinimum) {
    const CapturedLog all;
    const CapturedLog warnings(Level::kWarn);
    const CapturedLog nothing(Level::kOff);
    LogAtEveryLevel();
    EXPECT_THAT(all.Texts(), ElementsAre("d", "i", "w", "e"));
    EXPECT_THAT(warnings.Texts(), ElementsAre("w", "e"));
    EXPECT_THAT(nothing.Texts(), IsEmpty());
    EXPECT_THAT(all.Texts(Level::kError), ElementsAre("e"));
}

TEST_F(Sinks, GetTheRecordAsItWasMade) {
    const CapturedLog log;
    const auto before = std::chrono::system_clock::now();
    LogProcess::Error(0x42000030, std::string_view("a\n\0b\xFF\n", 6), kWhere);
    LogProcess::Info("x", LocationInfo::getLocationUnavailable());
    const auto entries = log.Entries();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].level, Level::kError);
    EXPECT_EQ(entries[0].code, 0x42000030U);
    EXPECT_EQ(entries[0].text, std::string("a\n\0b\xFF\n", 6)) << "untouched, the last \\n too";
    EXPECT_EQ(entries[0].unit, "unit.cpp");
    EXPECT_EQ(entries[0].function, "Function");
    EXPECT_EQ(entries[0].line, 7);
    EXPECT_EQ(entries[0].thread, ::syscall(SYS_gettid));
    EXPECT_EQ(entries[1].code, 0U);
    EXPECT_EQ(entries[1].unit, "");

    struct Clock : kelp::log::Sink {
        void Write(const Record& record) override { time = record.time; }
        std::chrono::system_clock::time_point time;
    };
    const auto clock = std::make_shared<Clock>();
    kelp::log::AddSink(clock);
    LogProcess::Debug("now", kWhere);
    kelp::log::RemoveSink(clock.get());
    EXPECT_GE(clock->time, before);
    EXPECT_LE(clock->time, std::chrono::system_clock::now());
}

TEST_F(Sinks, AddingTwiceChangesTheMinimumAndRemovingEnds) {
    struct Counter : kelp::log::Sink {
        void Write(const Record&) override { ++count; }
        int count = 0;
    };
    const auto counter = std::make_shared<Counter>();
    kelp::log::AddSink(nullptr);
    kelp::log::AddSink(counter, Level::kError);
    LogAtEveryLevel();
    EXPECT_EQ(counter->count, 1);
    kelp::log::AddSink(counter, Level::kInfo);
    LogAtEveryLevel();
    EXPECT_EQ(counter->count, 4) << "three more, not four";
    kelp::log::RemoveSink(counter.get());
    kelp::log::RemoveSink(counter.get());
    kelp::log::RemoveSink(nullptr);
    LogAtEveryLevel();
    EXPECT_EQ(counter->count, 4);
    EXPECT_EQ(counter.use_count(), 1) << "the logger has let go of it";
}

// A sink that throws harms neither its caller nor the other sinks.
TEST_F(Sinks, FailuresAreTheirOwn) {
    struct Thrower : kelp::log::Sink {
        void Write(const Record&) override { throw std::runtime_error("sink"); }
    };
    const auto thrower = std::make_shared<Thrower>();
    kelp::log::AddSink(thrower);
    const CapturedLog log;
    LogProcess::Warn("x", kWhere);
    kelp::log::RemoveSink(thrower.get());
    EXPECT_THAT(log.Texts(), ElementsAre("x"));
}

// A record that a sink logs reaches no sink: not itself, and no other that would answer.
TEST_F(Sinks, RecordsOfSinksReachNoSink) {
    struct Echo : kelp::log::Sink {
        void Write(const Record& record) override {
            ++count;
            LogProcess::Info(std::string(record.text) + "!", record.location);
        }
        int count = 0;
    };
    const auto echo = std::make_shared<Echo>();
    kelp::log::AddSink(echo);
    const CapturedLog log;
    LogProcess::Info("a", kWhere);
    LogProcess::Info("b", kWhere);
    kelp::log::RemoveSink(echo.get());
    EXPECT_EQ(echo->count, 2);
    EXPECT_THAT(log.Texts(), ElementsAre("a", "b"));
}

TEST_F(Sinks, MayRemoveThemselves) {
    struct Once : kelp::log::Sink {
        void Write(const Record&) override {
            ++count;
            kelp::log::RemoveSink(this);
        }
        int count = 0;
    };
    const auto once = std::make_shared<Once>();
    kelp::log::AddSink(once);
    LogProcess::Info("a", kWhere);
    LogProcess::Info("b", kWhere);
    EXPECT_EQ(once->count, 1);
}

// Sinks come and go while other threads log; every record of a thread reaches the sink
// that stays, in that thread's order.
TEST_F(Sinks, ComeAndGoWhileThreadsLog) {
    constexpr int kThreads = 3;
    constexpr int kRecords = 300;
    const CapturedLog stays;
    std::atomic<int> running{kThreads};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &running] {
            for (int i = 0; i < kRecords; ++i) {
                LogProcess::Info(std::to_string(t) + ":" + std::to_string(i), kWhere);
            }
            --running;
        });
    }
    while (running.load() != 0) {
        const CapturedLog passes(Level::kInfo);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<int> next(kThreads, 0);
    for (const std::string& text : stays.Texts()) {
        const auto t = static_cast<std::size_t>(text[0] - '0');
        EXPECT_EQ(text.substr(2), std::to_string(next[t]++));
    }
    EXPECT_THAT(next, testing::Each(kRecords));
}

TEST_F(Sinks, CapturedLogWaits) {
    CapturedLog log;
    EXPECT_FALSE(log.WaitFor("x", std::chrono::milliseconds(0)));
    std::thread other([] { LogProcess::Info("axb", kWhere); });
    EXPECT_TRUE(log.WaitFor("x"));
    other.join();
    EXPECT_TRUE(log.WaitFor("x", std::chrono::milliseconds(0))) << "it is there already";
    LogProcess::Info("x", kWhere);
    EXPECT_TRUE(log.WaitForCount("x", 2));
    EXPECT_EQ(log.Count("x"), 2U);
    log.Clear();
    EXPECT_FALSE(log.Contains("x"));
}

}  // namespace
