// How much empty memory the pools keep, by a clock that the test moves.
#include "memory/retention.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace kelp::memory {
namespace {

std::int64_t g_now = 0;

std::int64_t TestNow() noexcept {
    return g_now;
}

constexpr std::size_t kRegion = std::size_t{2} << 20;
constexpr std::size_t kAlwaysRegions = Retention::kAlways / kRegion;

// Takes `count` fresh regions into use.
void Use(Retention& retention, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        retention.Use(kRegion, false);
    }
}

// Empties `count` regions; how many of them are kept.
std::size_t Empty(Retention& retention, std::size_t count) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        kept += retention.Keep(kRegion) ? 1 : 0;
    }
    return kept;
}

TEST(Retention, KeepsASmallAmountAlways) {
    g_now = 1000;
    Retention retention(&TestNow);
    Use(retention, kAlwaysRegions);
    g_now += 1000;
    EXPECT_EQ(Empty(retention, kAlwaysRegions), kAlwaysRegions);
    EXPECT_FALSE(retention.TooMuch());
}

// What was in use within the last seconds is kept; whoever needs it again finds it.
TEST(Retention, KeepsWhatWasLatelyInUse) {
    g_now = 1000;
    Retention retention(&TestNow);
    Use(retention, 500);
    g_now += Retention::kSeconds;
    EXPECT_EQ(Empty(retention, 500), 500U);
    EXPECT_FALSE(retention.TooMuch());
    for (int i = 0; i < 500; ++i) {
        retention.Use(kRegion, true);
    }
    EXPECT_EQ(Empty(retention, 500), 500U);
}

TEST(Retention, ForgetsAnOldPeak) {
    g_now = 1000;
    Retention retention(&TestNow);
    Use(retention, 500);
    EXPECT_EQ(Empty(retention, 400), 400U);
    g_now += Retention::kSeconds + 1;
    // The next region that is emptied is one too many, and so are most of those kept.
    EXPECT_EQ(Empty(retention, 1), 0U);
    std::size_t kept = 400;
    for (; retention.TooMuch(); --kept) {
        retention.Drop(kRegion);
    }
    EXPECT_EQ(kept, kAlwaysRegions);
    EXPECT_EQ(Empty(retention, 1), 0U);
    retention.Drop(kRegion);
    EXPECT_EQ(Empty(retention, 1), 1U);
}

// A use as high as the peak makes it new.
TEST(Retention, RemembersAPeakThatComesAgain) {
    g_now = 1000;
    Retention retention(&TestNow);
    Use(retention, 500);
    g_now += Retention::kSeconds;
    EXPECT_EQ(Empty(retention, 1), 1U);
    retention.Use(kRegion, true);
    g_now += Retention::kSeconds;
    EXPECT_EQ(Empty(retention, 500), 500U);
}

}  // namespace
}  // namespace kelp::memory
