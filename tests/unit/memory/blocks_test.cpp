// Blocks as the library's users get them. In builds with a sanitizer they come from the
// heap, where the sanitizer watches what these tests do; the figures are zero there.
#include "kelp/blocks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kelp {
namespace {

bool Pooled() {
    void* const block = AllocateBlock(8);
    const bool pooled = GetBlockUsage().reserved != 0;
    FreeBlock(block, 8);
    return pooled;
}

TEST(Blocks, OfEverySizeAreDisjointAlignedAndWhole) {
    struct Taken {
        void* block;
        std::size_t size;
    };
    std::vector<Taken> taken;
    for (int round = 0; round < 3; ++round) {
        for (std::size_t size = 0; size <= kMaxBlockSize + 100; ++size) {
            void* const block = AllocateBlock(size);
            ASSERT_NE(block, nullptr);
            const auto address = reinterpret_cast<std::uintptr_t>(block);
            EXPECT_EQ(address % 8, 0U) << size;
            if (size % 16 == 0 && size != 0) {
                EXPECT_EQ(address % 16, 0U) << size;
            }
            std::memset(block, static_cast<int>(size), size);
            taken.push_back({block, size});
        }
    }
    for (const Taken& t : taken) {
        const auto* octets = static_cast<const unsigned char*>(t.block);
        for (std::size_t i = 0; i < t.size; ++i) {
            ASSERT_EQ(octets[i], static_cast<unsigned char>(t.size));
        }
        FreeBlock(t.block, t.size);
    }
    FreeBlock(nullptr, 8);
    FreeBlock(nullptr, 0);
    FreeBlock(nullptr, 10'000);
}

TEST(Blocks, AreReusedAtOnce) {
    void* const first = AllocateBlock(48);
    FreeBlock(first, 48);
    if (Pooled()) {
        void* const second = AllocateBlock(41);  // the same size in whole words
        EXPECT_EQ(second, first);
        FreeBlock(second, 41);
    }
}

// A thread's cache does not grow with what it frees; the figures return to zero.
TEST(Blocks, UsageReturnsToZero) {
    TrimBlocks();
    const BlockUsage before = GetBlockUsage();
    EXPECT_EQ(before.handed_out, 0U);
    std::vector<void*> blocks;
    for (int i = 0; i < 100'000; ++i) {
        blocks.push_back(AllocateBlock(64));
    }
    if (Pooled()) {
        EXPECT_GE(GetBlockUsage().handed_out, 6'400'000U);
        EXPECT_GE(GetBlockUsage().reserved, GetBlockUsage().handed_out);
    }
    for (void* block : blocks) {
        FreeBlock(block, 64);
    }
    EXPECT_LE(GetBlockUsage().handed_out, 64U * 1024) << "in the cache";
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
    EXPECT_EQ(GetBlockUsage().reserved, 0U);
}

TEST(Blocks, OfAnEndedThreadGoBack) {
    TrimBlocks();
    std::vector<void*> left;
    std::thread([&left] {
        std::vector<void*> blocks;
        for (int i = 0; i < 1000; ++i) {
            blocks.push_back(AllocateBlock(40));
        }
        for (int i = 0; i < 1000; ++i) {
            if (i % 100 == 0) {
                left.push_back(blocks[static_cast<std::size_t>(i)]);
            } else {
                FreeBlock(blocks[static_cast<std::size_t>(i)], 40);
            }
        }
    }).join();
    if (Pooled()) {
        TrimBlocks();
        EXPECT_EQ(GetBlockUsage().handed_out, left.size() * 40) << "its cache went with it";
    }
    for (void* block : left) {
        FreeBlock(block, 40);
    }
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
    EXPECT_EQ(GetBlockUsage().reserved, 0U);
}

// Objects that thread_local destructors free after the thread's cache has closed.
struct FreedLate {
    std::vector<std::pair<void*, std::size_t>> blocks;
    ~FreedLate() {
        for (const auto& [block, size] : blocks) {
            FreeBlock(block, size);
        }
        // Even taking new ones is possible then.
        void* const block = AllocateBlock(72);
        std::memset(block, 0, 72);
        FreeBlock(block, 72);
    }
};

TEST(Blocks, MayBeFreedByLateDestructors) {
    TrimBlocks();
    std::thread([] {
        // Made before the thread's first block, so destroyed after its cache.
        static thread_local FreedLate late;
        for (int i = 0; i < 500; ++i) {
            const auto size = static_cast<std::size_t>(8 + i % 64 * 8);
            late.blocks.emplace_back(AllocateBlock(size), size);
        }
    }).join();
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
    EXPECT_EQ(GetBlockUsage().reserved, 0U);
}

// A thread that only frees what others took has a cache as well, and returns it.
TEST(Blocks, MayBeFreedByAThreadThatNeverTookAny) {
    TrimBlocks();
    std::vector<void*> blocks;
    for (int i = 0; i < 5000; ++i) {
        blocks.push_back(AllocateBlock(24));
    }
    std::thread([&blocks] {
        for (void* block : blocks) {
            FreeBlock(block, 24);
        }
    }).join();
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
}

// Four threads hand each other texts in blocks of many sizes.
TEST(Blocks, WanderBetweenFourThreads) {
    TrimBlocks();
    struct Parcel {
        void* block;
        std::size_t size;
        unsigned char mark;
    };
    std::mutex lock;
    std::vector<Parcel> shelf;
    std::atomic<unsigned> damaged{0};
    const auto take_back = [&damaged](const Parcel& parcel) {
        const auto* octets = static_cast<const unsigned char*>(parcel.block);
        for (std::size_t i = 0; i < parcel.size; ++i) {
            if (octets[i] != parcel.mark) {
                ++damaged;
                break;
            }
        }
        FreeBlock(parcel.block, parcel.size);
    };
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (unsigned i = 0; i < 20'000; ++i) {
                Parcel parcel{nullptr, 1 + (i * 31 + t * 17) % 600,
                              static_cast<unsigned char>(i + t)};
                parcel.block = AllocateBlock(parcel.size);
                std::memset(parcel.block, parcel.mark, parcel.size);
                Parcel other{nullptr, 0, 0};
                {
                    const std::lock_guard guard(lock);
                    shelf.push_back(parcel);
                    if (shelf.size() > 200) {
                        const std::size_t at = (i * 7 + t) % shelf.size();
                        other = shelf[at];
                        shelf[at] = shelf.back();
                        shelf.pop_back();
                    }
                }
                if (other.block != nullptr) {
                    take_back(other);
                }
                if (i % 5000 == 4999) {
                    TrimBlocks();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Parcel& parcel : shelf) {
        take_back(parcel);
    }
    EXPECT_EQ(damaged, 0U);
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
    EXPECT_EQ(GetBlockUsage().reserved, 0U);
}

struct Base : BlockObject {
    virtual ~Base() = default;
};
struct Derived final : Base {
    std::string text = "a text that is longer than a small string";
    std::uint64_t more[20] = {};
};

// Deleted through its base, an object goes back with its own size.
TEST(BlockObject, IsDeletedThroughItsBase) {
    TrimBlocks();
    {
        std::vector<std::unique_ptr<Base>> objects;
        for (int i = 0; i < 100; ++i) {
            objects.push_back(std::make_unique<Derived>());
            objects.push_back(std::make_unique<Base>());
        }
    }
    TrimBlocks();
    EXPECT_EQ(GetBlockUsage().handed_out, 0U);
    alignas(Derived) unsigned char place[sizeof(Derived)];
    Derived* const placed = new (place) Derived;
    placed->~Derived();
}

}  // namespace
}  // namespace kelp
