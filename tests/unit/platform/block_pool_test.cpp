// One pool: how its chunks grow, go, and fail to come.

#include "platform/block_pool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/failing_new.h"

namespace FrameUtil {
namespace {

using ::testing::ElementsAre;

std::vector<void*> Take(BlockPool& pool, std::size_t count) {
    std::vector<void*> blocks(count);
    for (void*& block : blocks) {
        block = pool.Take(1);
    }
    return blocks;
}

void GiveAll(BlockPool& pool, const std::vector<void*>& blocks) {
    for (void* block : blocks) {
        pool.Give(block);
    }
}

// The members in one line: in use, chunks, blocks, bytes, blocks of the next chunk.
std::vector<unsigned long> Shape(BlockPool& pool) {
    const BlockPoolState state = pool.State();
    return {static_cast<unsigned long>(state.in_use), state.chunks, state.blocks, state.bytes,
            state.next_chunk_blocks};
}

// A chunk holds (128 / block size) * 32 blocks at first, at strides of whole words, and 16
// bytes more; the next ones twice as many each. The last block takes them all along.
TEST(BlockPool, ChunksDoubleAndGoTogether) {
    struct Case {
        unsigned block_size;
        unsigned long first;  // blocks
        unsigned long stride;
    };
    for (const Case& c :
         {Case{4, 1024, 8}, Case{8, 512, 8}, Case{12, 320, 16}, Case{16, 256, 16}, Case{44, 64, 48},
          Case{64, 64, 64}, Case{68, 32, 72}, Case{124, 32, 128}, Case{128, 32, 128}}) {
        SCOPED_TRACE(c.block_size);
        BlockPool pool(c.block_size);
        EXPECT_THAT(Shape(pool), ElementsAre(0, 0, 0, 0, c.first));
        const long before = LiveAllocations();

        std::vector<void*> blocks = Take(pool, 1);
        EXPECT_THAT(Shape(pool), ElementsAre(1, 1, c.first, c.first * c.stride + 16, 2 * c.first));
        EXPECT_EQ(LiveAllocations(), before + 2);  // the chunk and the vector

        for (void* block : Take(pool, c.first)) {
            blocks.push_back(block);
        }
        EXPECT_THAT(Shape(pool), ElementsAre(c.first + 1, 2, 3 * c.first,
                                             3 * c.first * c.stride + 32, 4 * c.first));
        blocks.push_back(pool.Take(1));
        EXPECT_EQ(pool.State().chunks, 2UL);

        const void* const last = blocks.back();
        blocks.pop_back();
        GiveAll(pool, blocks);
        EXPECT_THAT(Shape(pool),
                    ElementsAre(1, 2, 3 * c.first, 3 * c.first * c.stride + 32, 4 * c.first));
        pool.Give(const_cast<void*>(last));
        EXPECT_THAT(Shape(pool), ElementsAre(0, 0, 0, 0, c.first));
        std::vector<void*>().swap(blocks);
        EXPECT_EQ(LiveAllocations(), before);
    }
}

// Blocks come in the order of their addresses; a returned one comes before new ones.
TEST(BlockPool, HandsOutTheNewestReturnedBlockFirst) {
    BlockPool pool(24);
    std::vector<void*> blocks = Take(pool, 5);
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        EXPECT_EQ(static_cast<char*>(blocks[i]), static_cast<char*>(blocks[0]) + 24 * i);
    }
    pool.Give(blocks[1]);
    pool.Give(blocks[3]);
    EXPECT_EQ(pool.Take(24), blocks[3]);
    EXPECT_EQ(pool.Take(24), blocks[1]);
    blocks.push_back(pool.Take(24));
    EXPECT_EQ(static_cast<char*>(blocks[5]), static_cast<char*>(blocks[0]) + 24 * 5);
    GiveAll(pool, blocks);
}

TEST(BlockPool, BlocksOfAChunkDoNotOverlap) {
    for (unsigned size = 4; size <= 128; size += 4) {
        SCOPED_TRACE(size);
        BlockPool pool(size);
        std::vector<void*> blocks;
        for (unsigned i = 0; i < 3000; ++i) {
            blocks.push_back(pool.Take(size));
            std::memset(blocks.back(), static_cast<int>(i), size);
        }
        for (unsigned i = 0; i < 3000; ++i) {
            const std::vector<unsigned char> expected(size, static_cast<unsigned char>(i));
            ASSERT_EQ(std::memcmp(blocks[i], expected.data(), size), 0) << i;
        }
        GiveAll(pool, blocks);
        EXPECT_EQ(pool.State().chunks, 0UL);
    }
}

// A chunk that is not to be had is asked for once more at half the size.
TEST(BlockPool, HalvesAChunkThatDoesNotCome) {
    BlockPool pool(128);
    void* block = nullptr;
    {
        const FailNthAllocation failing(1);
        block = pool.Take(1);
        EXPECT_TRUE(failing.Fired());
    }
    ASSERT_NE(block, nullptr);
    EXPECT_THAT(Shape(pool), ElementsAre(1, 1, 16, 16 * 128 + 16, 32));
    pool.Give(block);
    EXPECT_THAT(Shape(pool), ElementsAre(0, 0, 0, 0, 32));
}

// Below five blocks it is asked for once only. The blocks that did not come count as in use
// for good: the pool keeps its chunks when all others are back.
TEST(BlockPool, GivesUpAndKeepsCounting) {
    BlockPool pool(128);
    const auto fails_at_half = [&](unsigned long next) {
        const FailNthAllocation failing(1, 2);
        EXPECT_EQ(pool.Take(1), nullptr);
        EXPECT_EQ(pool.State().next_chunk_blocks, next);
    };
    fails_at_half(16);
    fails_at_half(8);
    fails_at_half(4);
    {
        const FailNthAllocation failing(1, 1);
        EXPECT_EQ(pool.Take(1), nullptr);  // the second request would have been granted
        EXPECT_TRUE(failing.Fired());
    }
    EXPECT_THAT(Shape(pool), ElementsAre(4, 0, 0, 0, 4));

    void* const block = pool.Take(1);
    ASSERT_NE(block, nullptr);
    EXPECT_THAT(Shape(pool), ElementsAre(5, 1, 4, 4 * 128 + 16, 8));
    pool.Give(block);
    EXPECT_THAT(Shape(pool), ElementsAre(4, 1, 4, 4 * 128 + 16, 8));

    // As many extra returns as there were failures let go of the chunk.
    const std::vector<void*> blocks = Take(pool, 4);
    for (int i = 0; i < 2; ++i) {
        for (void* taken : blocks) {
            pool.Give(taken);
        }
    }
    EXPECT_EQ(pool.State().chunks, 0UL);
}

// With a cap, chunks grow to the bytes of so many blocks and no further: of blocks that are
// rounded up there are fewer.
TEST(BlockPool, ACapBoundsTheGrowth) {
    struct Case {
        unsigned block_size;
        std::size_t cap;
        std::vector<unsigned long> next;  // after each chunk
    };
    for (const Case& c :
         {Case{64, 0, {128, 256, 512, 1024}}, Case{64, 150, {128, 150, 150}},
          Case{64, 64, {64, 64}}, Case{64, 100, {100, 100}}, Case{64, 1, {64, 64}},
          Case{4, 3000, {1500, 1500}}, Case{4, 2048, {1024}}, Case{12, 500, {375, 375}}}) {
        SCOPED_TRACE(std::to_string(c.block_size) + " " + std::to_string(c.cap));
        BlockPool pool(c.block_size, c.cap);
        std::vector<void*> blocks;
        for (const unsigned long next : c.next) {
            const unsigned long full = pool.State().blocks;
            while (blocks.size() <= full) {
                blocks.push_back(pool.Take(1));
            }
            EXPECT_EQ(pool.State().next_chunk_blocks, next);
        }
        GiveAll(pool, blocks);
    }
}

}  // namespace
}  // namespace FrameUtil
