// The wide search for a row to exchange with finds what the plain one finds.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "table/lanes.h"

namespace {

using FrameUtil::table::AtMost;
using FrameUtil::table::FindFirst;
using FrameUtil::table::FindFirstPlainly;
using FrameUtil::table::Lane;

template <typename Rank>
class Lanes : public testing::Test {};
using Ranks = testing::Types<std::int16_t, std::int32_t>;
TYPED_TEST_SUITE(Lanes, Ranks);

TYPED_TEST(Lanes, EachPositionIsFoundFromEach) {
    constexpr std::size_t kPositions = 100;
    for (std::size_t only = 0; only < kPositions; ++only) {
        Lane<TypeParam> lane(kPositions);
        std::fill_n(lane.data(), kPositions, TypeParam{7});
        lane.data()[only] = 3;
        const AtMost<TypeParam> condition{lane.data(), 3};
        for (std::size_t from = 0; from <= kPositions; ++from) {
            const auto found = FindFirst<TypeParam, 1>(&condition, 1, from, kPositions);
            ASSERT_EQ(found, from <= only ? only : kPositions) << from;
        }
    }
}

// The greatest rank and the bounds around it: what stands behind the last is never found.
TYPED_TEST(Lanes, NothingIsFoundBehindTheLast) {
    const auto most = static_cast<TypeParam>(Lane<TypeParam>::kRanks - 1);
    for (std::size_t positions = 0; positions < 70; ++positions) {
        Lane<TypeParam> lane(positions);
        std::fill_n(lane.data(), positions, most);
        const AtMost<TypeParam> below{lane.data(), static_cast<TypeParam>(most - 1)};
        const AtMost<TypeParam> none{lane.data(), -1};
        const AtMost<TypeParam> all{lane.data(), most};
        ASSERT_EQ((FindFirst<TypeParam, 1>(&below, 1, 0, positions)), positions);
        ASSERT_EQ((FindFirst<TypeParam, 1>(&none, 1, 0, positions)), positions);
        ASSERT_EQ((FindFirst<TypeParam, 1>(&all, 1, 0, positions)), 0U);
    }
}

TYPED_TEST(Lanes, SeveralConditions) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t positions = 1 + random() % 150;
        const std::size_t count = 1 + random() % 5;
        std::vector<Lane<TypeParam>> lanes(count, Lane<TypeParam>(positions));
        std::vector<AtMost<TypeParam>> conditions;
        for (auto& lane : lanes) {
            for (std::size_t at = 0; at < positions; ++at) {
                lane.data()[at] = static_cast<TypeParam>(random() % 100);
            }
            conditions.push_back({lane.data(), static_cast<TypeParam>(random() % 40)});
        }
        const std::size_t from = random() % (positions + 1);
        const std::size_t expected = FindFirstPlainly(conditions.data(), count, from, positions);
        ASSERT_EQ((FindFirst<TypeParam, 0>(conditions.data(), count, from, positions)), expected);
        if (count == 2) {
            ASSERT_EQ((FindFirst<TypeParam, 2>(conditions.data(), count, from, positions)),
                      expected);
        }
        if (count == 3) {
            ASSERT_EQ((FindFirst<TypeParam, 3>(conditions.data(), count, from, positions)),
                      expected);
        }
    }
}

}  // namespace
