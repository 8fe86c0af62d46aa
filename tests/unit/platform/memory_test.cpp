// Malloc and Free: which pool serves which size, and what lies beyond the pools.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "frameutil/platform.h"

namespace FrameUtil {
namespace {

// A static object takes a block before main and returns it after it.
struct Early {
    void* block = Malloc(100);
    unsigned long chunks = GetBlockPoolState(100).chunks;
    ~Early() { Free(block, 100); }
} g_early;

TEST(Memory, PoolsAreThereBeforeStaticObjects) {
    ASSERT_NE(g_early.block, nullptr);
    EXPECT_EQ(g_early.chunks, 1UL);
}

TEST(Memory, EachSizeHasItsPool) {
    for (unsigned long size = 0; size <= 128; ++size) {
        SCOPED_TRACE(size);
        const unsigned long block_size = size == 0 ? 4 : (size + 3) / 4 * 4;
        const BlockPoolState before = GetBlockPoolState(size);
        EXPECT_EQ(before.block_size, block_size);
        void* const block = Malloc(size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
        std::memset(block, 0x5a, size);
        for (unsigned long other = 4; other <= 128; other += 4) {
            if (other != block_size && other != 100) {
                EXPECT_EQ(GetBlockPoolState(other).in_use, 0) << other;
            }
        }
        EXPECT_EQ(GetBlockPoolState(size).in_use, before.in_use + 1);
        Free(block, size);
        EXPECT_EQ(GetBlockPoolState(size).in_use, before.in_use);
    }
}

// One block from a fresh pool makes a chunk; returning it lets the chunk go.
TEST(Memory, OneBlockCostsAChunk) {
    for (unsigned long size = 4; size <= 128; size += 4) {
        if (size == 100) {
            continue;  // the early block's pool is not fresh
        }
        SCOPED_TRACE(size);
        const unsigned long blocks = 128 / size * 32;
        EXPECT_EQ(GetBlockPoolState(size).chunks, 0UL);
        void* const block = Malloc(size);
        const BlockPoolState state = GetBlockPoolState(size);
        EXPECT_EQ(state.in_use, 1);
        EXPECT_EQ(state.chunks, 1UL);
        EXPECT_EQ(state.blocks, blocks);
        EXPECT_EQ(state.bytes, blocks * ((size + 7) / 8 * 8) + 16);
        EXPECT_EQ(state.next_chunk_blocks, 2 * blocks);
        Free(block, size);
        EXPECT_EQ(GetBlockPoolState(size).chunks, 0UL);
        EXPECT_EQ(GetBlockPoolState(size).bytes, 0UL);
        EXPECT_EQ(GetBlockPoolState(size).next_chunk_blocks, blocks);
    }
    EXPECT_EQ(GetBlockPoolState(4).next_chunk_blocks, 1024UL);
    EXPECT_EQ(GetBlockPoolState(12).next_chunk_blocks, 320UL);
    EXPECT_EQ(GetBlockPoolState(128).next_chunk_blocks, 32UL);
}

TEST(Memory, LargeBlocksAreTheSystems) {
    for (const unsigned long size : {129UL, 1000UL, 1UL << 20}) {
        void* const block = Malloc(size);
        ASSERT_NE(block, nullptr);
        std::memset(block, 1, size);
        const BlockPoolState state = GetBlockPoolState(size);
        EXPECT_EQ(state.block_size, 0UL);
        EXPECT_EQ(state.chunks, 0UL);
        for (unsigned long small = 4; small <= 128; small += 4) {
            EXPECT_EQ(GetBlockPoolState(small).in_use, small == 100 ? 1 : 0) << small;
        }
        Free(block, size);
    }
}

TEST(Memory, NullIsNoBlock) {
    for (const unsigned long size : {0UL, 8UL, 128UL, 129UL}) {
        Free(nullptr, size);
        EXPECT_LE(GetBlockPoolState(size).in_use, 0) << size;
    }
}

// Contents stay, whatever order blocks of all sizes come and go in.
TEST(Memory, BlocksKeepTheirContents) {
    std::mt19937 random(1);
    struct Live {
        unsigned char* block;
        unsigned long size;
        unsigned char fill;
    };
    std::vector<Live> live;
    for (int step = 0; step < 50'000; ++step) {
        if (live.size() < 500 || random() % 2 == 0) {
            const unsigned long size = random() % 140;
            const auto fill = static_cast<unsigned char>(random());
            auto* const block = static_cast<unsigned char*>(Malloc(size));
            std::memset(block, fill, size);
            live.push_back({block, size, fill});
        } else {
            std::swap(live[random() % live.size()], live.back());
            const Live& gone = live.back();
            for (unsigned long i = 0; i < gone.size; ++i) {
                ASSERT_EQ(gone.block[i], gone.fill);
            }
            Free(gone.block, gone.size);
            live.pop_back();
        }
    }
    for (const Live& left : live) {
        Free(left.block, left.size);
    }
    for (unsigned long size = 4; size <= 128; size += 4) {
        // The early block keeps all that its pool has.
        EXPECT_EQ(GetBlockPoolState(size).in_use, size == 100 ? 1 : 0) << size;
        EXPECT_EQ(GetBlockPoolState(size).chunks > 0, size == 100) << size;
    }
}

}  // namespace
}  // namespace FrameUtil
