// A checked build ends the process when a block comes back wrongly, and says why.

#include <gtest/gtest.h>

#include <string>

#include "frameutil/platform.h"
#include "support/failing_new.h"

namespace FrameUtil {
namespace {

TEST(CheckedBlocks, WhatIsRightIsSilent) {
    for (unsigned long size = 0; size <= 300; ++size) {
        Free(Malloc(size), size);
        Free(nullptr, size);
    }
    EXPECT_EQ(GetBlockPoolState(64).in_use, 0);
}

// A block that cannot be noted is none: it would be taken for a strange one later.
TEST(CheckedBlocks, WithoutMemoryForTheNoteThereIsNoBlock) {
    for (const unsigned long size : {8UL, 1000UL}) {
        SCOPED_TRACE(size);
        void* const kept = Malloc(size);  // from here on only notes need memory
        const long in_use = GetBlockPoolState(size).in_use;
        void* block = kept;
        bool fired = false;
        {
            const FailNthAllocation failing(1);
            block = Malloc(size);
            fired = failing.Fired();
        }
        EXPECT_TRUE(fired);
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(GetBlockPoolState(size).in_use, in_use);
        block = Malloc(size);
        EXPECT_NE(block, nullptr);
        Free(block, size);
        Free(kept, size);
    }
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
