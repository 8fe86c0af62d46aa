// The pool of equal blocks itself, which every build has, whatever AllocateBlock uses.
#include "memory/block_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "memory/retention.h"

namespace kelp::memory {
namespace {

// A pool of blocks of `size` octets, on the heap: it lives as long as its blocks.
std::unique_ptr<BlockPool> PoolOf(std::size_t size) {
    auto pool = std::make_unique<BlockPool>();
    pool->SetBlockSize(size);
    return pool;
}

std::vector<void*> TakeMany(BlockPool& pool, unsigned wanted) {
    std::vector<void*> blocks(wanted);
    blocks.resize(pool.Take(blocks.data(), wanted));
    return blocks;
}

void GiveMany(BlockPool& pool, const std::vector<void*>& blocks) {
    pool.Give(blocks.data(), static_cast<unsigned>(blocks.size()));
}

TEST(BlockPool, HandsOutDisjointAlignedBlocks) {
    for (const std::size_t size : {8U, 16U, 24U, 40U, 48U, 64U, 128U, 504U, 512U}) {
        SCOPED_TRACE(size);
        const auto pool = PoolOf(size);
        std::vector<void*> blocks = TakeMany(*pool, 1000);
        ASSERT_EQ(blocks.size(), 1000U);
        EXPECT_EQ(pool->handed_out(), 1000 * size);
        std::set<std::uintptr_t> addresses;
        for (void* block : blocks) {
            const auto address = reinterpret_cast<std::uintptr_t>(block);
            EXPECT_EQ(address % (size % 16 == 0 ? 16 : 8), 0U);
            addresses.insert(address);
            std::memset(block, 0x5a, size);  // all of it is ours
        }
        std::uintptr_t end = 0;
        for (const std::uintptr_t address : addresses) {
            EXPECT_GE(address, end);
            end = address + size;
        }
        EXPECT_EQ(addresses.size(), 1000U);
        GiveMany(*pool, blocks);
        EXPECT_EQ(pool->handed_out(), 0U);
    }
}

TEST(BlockPool, GivesReturnedBlocksOutAgain) {
    const auto pool = PoolOf(64);
    const std::vector<void*> first = TakeMany(*pool, 100);
    GiveMany(*pool, first);
    const std::vector<void*> second = TakeMany(*pool, 100);
    EXPECT_EQ(std::set<void*>(first.begin(), first.end()),
              std::set<void*>(second.begin(), second.end()));
    EXPECT_EQ(pool->reserved(), BlockPool::kRegionSize);
    GiveMany(*pool, second);
}

TEST(BlockPool, SpansRegionsAndLosesThemAgain) {
    const auto pool = PoolOf(512);
    const auto per_region = static_cast<unsigned>(BlockPool::kRegionSize / 512 - 1);
    const std::vector<void*> blocks = TakeMany(*pool, per_region * 5 / 2);
    EXPECT_EQ(pool->reserved(), 3 * BlockPool::kRegionSize);
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    GiveMany(*pool, blocks);
    EXPECT_EQ(pool->handed_out(), 0U);
    EXPECT_EQ(pool->reserved(), 3 * BlockPool::kRegionSize) << "kept for reuse";
    pool->Trim();
    EXPECT_EQ(pool->reserved(), 0U);
    const std::vector<void*> again = TakeMany(*pool, 1);
    EXPECT_EQ(again.size(), 1U) << "a trimmed pool works on";
    GiveMany(*pool, again);
}

// One block that is out keeps its region and no other.
TEST(BlockPool, TrimLeavesRegionsInUse) {
    const auto pool = PoolOf(512);
    std::vector<void*> blocks = TakeMany(*pool, 10'000);
    void* const kept = blocks.back();
    blocks.pop_back();
    GiveMany(*pool, blocks);
    pool->Trim();
    EXPECT_EQ(pool->reserved(), BlockPool::kRegionSize);
    EXPECT_EQ(pool->handed_out(), 512U);
    std::memset(kept, 0, 512);
    GiveMany(*pool, {kept});
    pool->Trim();
    EXPECT_EQ(pool->reserved(), 0U);
}

// Pools keep together what was lately in use (retention_test.cpp), until they are trimmed.
TEST(BlockPool, KeepsEmptyRegionsThatWereLatelyInUse) {
    const auto one = PoolOf(512);
    const auto other = PoolOf(256);
    const auto fill = [](BlockPool& pool, std::size_t size) {
        return TakeMany(pool, static_cast<unsigned>(2 * Retention::kAlways / size));
    };
    const std::vector<void*> blocks = fill(*one, 512);
    const std::vector<void*> others = fill(*other, 256);
    const std::size_t used = one->reserved() + other->reserved();
    EXPECT_GT(used, 4 * Retention::kAlways);
    GiveMany(*one, blocks);
    GiveMany(*other, others);
    EXPECT_EQ(one->handed_out() + other->handed_out(), 0U);
    EXPECT_EQ(one->reserved() + other->reserved(), used);
    one->Trim();
    other->Trim();
    EXPECT_EQ(one->reserved() + other->reserved(), 0U);
}

// Blocks taken by one thread are given by another; every block keeps what its holder
// wrote. What the threads do is decided by their number alone.
TEST(BlockPool, ServesFourThreadsAtOnce) {
    const auto pool = PoolOf(64);
    struct Block {
        std::uint64_t owner;
        std::uint64_t number;
    };
    struct Exchange {
        std::mutex lock;
        std::vector<void*> blocks;
    } exchange;
    constexpr unsigned kThreads = 4;
    constexpr unsigned kRounds = 2000;
    std::atomic<unsigned> damaged{0};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (unsigned round = 0; round < kRounds; ++round) {
                const std::vector<void*> mine = TakeMany(*pool, 1 + (round * 7 + t) % 60);
                for (void* block : mine) {
                    static_cast<Block*>(block)->owner = t;
                    static_cast<Block*>(block)->number = round;
                }
                for (void* block : mine) {
                    if (static_cast<Block*>(block)->owner != t ||
                        static_cast<Block*>(block)->number != round) {
                        ++damaged;
                    }
                }
                std::vector<void*> theirs;
                {
                    const std::lock_guard guard(exchange.lock);
                    theirs.swap(exchange.blocks);
                    exchange.blocks = mine;
                }
                GiveMany(*pool, theirs);
                if (round % 500 == 499) {
                    pool->Trim();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(damaged, 0U);
    GiveMany(*pool, exchange.blocks);
    EXPECT_EQ(pool->handed_out(), 0U);
    pool->Trim();
    EXPECT_EQ(pool->reserved(), 0U);
}

}  // namespace
}  // namespace kelp::memory
