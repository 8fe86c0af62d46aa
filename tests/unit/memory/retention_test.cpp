// How much empty memory the pools keep: what was lately in use, and a little always.
#include "memory/retention.h"

#include <gtest/gtest.h>

namespace kelp::memory {
namespace {

constexpr std::size_t kRegion = std::size_t{2} << 20;
constexpr std::size_t kRegionsAlways = Retention::kAlways / kRegion;

std::int64_t g_seconds = 0;

std::int64_t Seconds() noexcept {
    return g_seconds;
}

void UseRegions(Retention& retention, std::size_t regions, bool kept) {
    for (std::size_t i = 0; i < regions; ++i) {
        retention.Use(kRegion, kept);
    }
}

// How many of so many returned regions are kept.
std::size_t Kept(Retention& retention, std::size_t regions) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < regions; ++i) {
        kept += retention.Keep(kRegion) ? 1 : 0;
    }
    return kept;
}

TEST(Retention, KeepsAllThatWasLatelyInUse) {
    Retention retention(Seconds);
    const std::size_t regions = 3 * kRegionsAlways;
    UseRegions(retention, regions, false);
    EXPECT_EQ(Kept(retention, regions), regions);
    EXPECT_FALSE(retention.TooMuch());
}

TEST(Retention, ForgetsAPeakAndKeepsALittleAlways) {
    Retention retention(Seconds);
    const std::size_t regions = 3 * kRegionsAlways;
    UseRegions(retention, regions + 1, false);
    ASSERT_EQ(Kept(retention, regions), regions);
    g_seconds += Retention::kSeconds + 1;
    EXPECT_FALSE(retention.Keep(kRegion));
    std::size_t dropped = 0;
    for (; retention.TooMuch(); ++dropped) {
        retention.Drop(kRegion);
    }
    EXPECT_EQ(dropped, regions - kRegionsAlways);
}

TEST(Retention, APeakThatIsReachedAgainIsRemembered) {
    Retention retention(Seconds);
    const std::size_t regions = 2 * kRegionsAlways;
    UseRegions(retention, regions, false);
    for (int round = 0; round < 3; ++round) {
        g_seconds += Retention::kSeconds;
        ASSERT_EQ(Kept(retention, regions), regions);
        UseRegions(retention, regions, true);
    }
}

}  // namespace
}  // namespace kelp::memory
