// A checked build ends the process when a block comes back wrongly, and says why.

#include <gtest/gtest.h>

#include "frameutil/platform.h"

namespace FrameUtil {
namespace {

TEST(CheckedBlocks, WhatIsRightIsSilent) {
    for (unsigned long size = 0; size <= 300; ++size) {
        Free(Malloc(size), size);
        Free(nullptr, size);
    }
    EXPECT_EQ(GetBlockPoolState(64).in_use, 0);
}

TEST(CheckedBlocksDeathTest, AnotherSize) {
    struct Case {
        unsigned long taken, returned;
    };
    // 5 and 8 have the same pool, and are not the same size all the same.
    for (const Case& c : {Case{8, 24}, Case{5, 8}, Case{200, 8}, Case{8, 200}, Case{0, 4}}) {
        const std::string expected = "\\[Free\\] block 0x[0-9a-f]+ of " + std::to_string(c.taken) +
                                     " bytes is returned as one of " + std::to_string(c.returned) +
                                     " bytes";
        EXPECT_DEATH(Free(Malloc(c.taken), c.returned), expected);
    }
}

TEST(CheckedBlocksDeathTest, ReturnedTwice) {
    for (const unsigned long size : {4UL, 128UL, 1000UL}) {
        const std::string expected =
            "\\[Free\\] block 0x[0-9a-f]+ of " + std::to_string(size) + " bytes is not handed out";
        EXPECT_DEATH(
            {
                void* const kept = Malloc(size);
                void* const block = Malloc(size);
                Free(block, size);
                Free(block, size);
                Free(kept, size);
            },
            expected);
    }
}

TEST(CheckedBlocksDeathTest, NeverHandedOut) {
    int local = 0;
    EXPECT_DEATH(Free(&local, sizeof local), "is not handed out: returned twice, or not of Malloc");
}

}  // namespace
}  // namespace FrameUtil
