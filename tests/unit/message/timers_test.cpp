// Timers on a clock that the test moves.

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <mutex>

#include "message/timers.h"
#include "support/platform.h"

namespace {

using kelp::base::Clock;
using kelp::base::kSecond;
using kelp::message::TimerTarget;
using kelp::message::TimerThread;

std::atomic<std::int64_t> g_now{0};
std::int64_t Now() {
    return g_now.load();
}

struct Counter final : TimerTarget {
    void OnTimer(long id) noexcept override {
        const std::lock_guard<std::mutex> lock(mutex);
        ++fired[id];
    }
    int Fired(long id) {
        const std::lock_guard<std::mutex> lock(mutex);
        return fired[id];
    }
    std::mutex mutex;
    std::map<long, int> fired;
};

TEST(Timers, FireAtEachIntervalUntilCancelled) {
    g_now = 0;
    Counter counter;
    TimerThread timers{Clock(&Now)};
    const long five = timers.Arm(&counter, 5 * kSecond);
    const long three = timers.Arm(&counter, 3 * kSecond);
    ASSERT_GT(five, 0);
    ASSERT_GT(three, five);
    g_now = 3 * kSecond;
    EXPECT_TRUE(Eventually([&] { return counter.Fired(three) == 1; }));
    EXPECT_EQ(counter.Fired(five), 0);
    g_now = 6 * kSecond;
    EXPECT_TRUE(Eventually([&] { return counter.Fired(three) == 2 && counter.Fired(five) == 1; }));
    EXPECT_TRUE(timers.Cancel(three));
    EXPECT_FALSE(timers.Cancel(three));
    g_now = 10 * kSecond;
    EXPECT_TRUE(Eventually([&] { return counter.Fired(five) == 2; }));
    EXPECT_EQ(counter.Fired(three), 2);
}

// Firings that the clock jumped over are not made up, and the rhythm stays.
TEST(Timers, MissedFiringsAreNotMadeUp) {
    g_now = 0;
    Counter counter;
    TimerThread timers{Clock(&Now)};
    const long id = timers.Arm(&counter, 5 * kSecond);
    g_now = 52 * kSecond;
    EXPECT_TRUE(Eventually([&] { return counter.Fired(id) == 1; }));
    g_now = 55 * kSecond;
    EXPECT_TRUE(Eventually([&] { return counter.Fired(id) == 2; }));
}

TEST(Timers, StoppedOnesTakeNothing) {
    Counter counter;
    TimerThread timers{Clock()};
    ASSERT_GT(timers.Arm(&counter, kSecond), 0);
    timers.Stop();
    timers.Stop();
    EXPECT_EQ(timers.Arm(&counter, kSecond), -1);
    EXPECT_FALSE(timers.Cancel(1));
}

TEST(Timers, AllOfATargetAreCancelled) {
    g_now = 0;
    Counter gone;
    Counter stays;
    TimerThread timers{Clock(&Now)};
    const long a = timers.Arm(&gone, kSecond);
    const long b = timers.Arm(&gone, kSecond);
    const long c = timers.Arm(&stays, kSecond);
    timers.CancelAll(&gone);
    g_now = kSecond;
    EXPECT_TRUE(Eventually([&] { return stays.Fired(c) == 1; }));
    EXPECT_EQ(gone.Fired(a) + gone.Fired(b), 0);
}

}  // namespace
