#include "nemgr/rates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using nemgr::Counters;
using nemgr::RateHistory;
using nemgr::Rates;
using nemgr::Reading;

Reading At(double uptime_s, double in, double out = 0, bool wide = false) {
    return Reading{uptime_s, {{1, Counters{in, out, wide}}}};
}

Rates Of(RateHistory& history, Reading reading) {
    return history.Update("e", reading).at(1);
}

TEST(Rates, CompareWithTheReadingBefore) {
    RateHistory history;
    EXPECT_TRUE(std::isnan(Of(history, At(10, 1000, 50)).in));
    const Rates rates = Of(history, At(14, 1400, 50));
    EXPECT_EQ(rates.in, 100);
    EXPECT_EQ(rates.out, 0);
    EXPECT_EQ(Of(history, At(17, 1401)).in, 0.3);
}

// Commands that come together compare with what came well before them.
TEST(Rates, ReadingsOfOneMomentShareTheirPast) {
    RateHistory history;
    Of(history, At(10, 0));
    EXPECT_EQ(Of(history, At(20, 1000)).in, 100);
    EXPECT_EQ(Of(history, At(20, 1000)).in, 100);
    EXPECT_EQ(Of(history, At(20.5, 1050)).in, 100);
    EXPECT_EQ(Of(history, At(21, 1000)).in, 0);
}

TEST(Rates, TwoFirstReadingsOfOneMomentAreUnknown) {
    RateHistory history;
    Of(history, At(10, 0));
    EXPECT_TRUE(std::isnan(Of(history, At(10.5, 100)).in));
    EXPECT_EQ(Of(history, At(11, 100)).in, 100);
}

TEST(Rates, NarrowCountersBeginAgainWideOnesAreReset) {
    RateHistory narrow;
    Of(narrow, At(10, 4294967290.0));
    EXPECT_EQ(Of(narrow, At(11, 4)).in, 10);
    RateHistory wide;
    Of(wide, At(10, 4294967290.0, 0, true));
    EXPECT_TRUE(std::isnan(Of(wide, At(11, 4, 0, true)).in));
    EXPECT_TRUE(std::isnan(Of(wide, At(12, 5, 0, false)).in)) << "other counters";
}

TEST(Rates, ARestartForgets) {
    RateHistory history;
    Of(history, At(100, 1000));
    EXPECT_TRUE(std::isnan(Of(history, At(5, 100)).in));
    EXPECT_EQ(Of(history, At(6, 150)).in, 50);
}

TEST(Rates, ANewInterfaceIsUnknownAtFirst) {
    RateHistory history;
    Of(history, At(10, 0));
    Reading two = At(11, 0);
    two.interfaces[2] = {};
    EXPECT_TRUE(std::isnan(history.Update("e", two).at(2).in));
}

TEST(Rates, TheNumberOfElementsIsBounded) {
    RateHistory history;
    for (std::size_t i = 0; i <= RateHistory::kMostElements; ++i) {
        history.Update(std::to_string(10000 + i), At(10, 0));
    }
    EXPECT_TRUE(std::isnan(history.Update("10000", At(20, 100)).at(1).in)) << "forgotten";
    EXPECT_EQ(
        history.Update(std::to_string(10000 + RateHistory::kMostElements), At(20, 100)).at(1).in,
        10);
}

}  // namespace
