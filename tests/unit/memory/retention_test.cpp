// How much empty memory the pools keep: what was lately in use, and a little always.
#include "memory/retention.h"

#include <gtest/gtest.h>

namespace {

using kelp::memory::Retention;

constexpr std::size_t kRegion = std::size_t{2} << 20;
constexpr std::size_t kRegionsAlways = Retention::kAlways / kRegion;

TEST(Retention, KeepsAllThatWasLatelyInUse) {
    Retention retention;
    const std::size_t regions = 3 * kRegionsAlways;
    for (std::size_t i = 0; i < regions; ++i) {
        retention.Use(kRegion, false);
    }
    for (std::size_t i = 0; i < regions; ++i) {
        EXPECT_TRUE(retention.Keep(kRegion)) << i;
    }
    EXPECT_FALSE(retention.TooMuch());
}

TEST(Retention, UsingWhatIsKeptAndReturningItKeepsIt) {
    Retention retention;
    const std::size_t regions = 2 * kRegionsAlways;
    for (std::size_t i = 0; i < regions; ++i) {
        retention.Use(kRegion, false);
    }
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < regions; ++i) {
            ASSERT_TRUE(retention.Keep(kRegion));
        }
        for (std::size_t i = 0; i < regions; ++i) {
            retention.Use(kRegion, true);
        }
    }
}

TEST(Retention, WhatIsDroppedCountsNoMore) {
    Retention retention;
    for (std::size_t i = 0; i < 2 * kRegionsAlways; ++i) {
        retention.Use(kRegion, false);
        ASSERT_TRUE(retention.Keep(kRegion));
        retention.Drop(kRegion);
        ASSERT_FALSE(retention.TooMuch());
    }
}

}  // namespace
