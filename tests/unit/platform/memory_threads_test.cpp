// The pools with threads and forks.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "frameutil/platform.h"
#include "platform/pool_lock.h"

namespace FrameUtil {
namespace {

struct Live {
    unsigned char* block;
    unsigned long size;
};

Live TakeRandom(std::mt19937& random) {
    const unsigned long size = 1 + random() % 128;
    auto* const block = static_cast<unsigned char*>(Malloc(size));
    std::memset(block, static_cast<int>(size), size);
    return {block, size};
}

bool ReturnWhole(const Live& live) {
    bool whole = true;
    for (unsigned long i = 0; i < live.size; ++i) {
        whole = whole && live.block[i] == static_cast<unsigned char>(live.size);
    }
    Free(live.block, live.size);
    return whole;
}

// Blocks that one thread takes and any other returns.
class Exchange {
  public:
    // Gives `mine` and takes what another thread left, in the slot that `at` picks.
    Live Swap(std::size_t at, Live mine) {
        Slot& slot = m_slots[at % m_slots.size()];
        const std::lock_guard<std::mutex> lock(slot.mutex);
        std::swap(slot.live, mine);
        return mine;
    }
    std::vector<Live> Rest() {
        std::vector<Live> rest;
        for (Slot& slot : m_slots) {
            rest.push_back(std::exchange(slot.live, {}));
        }
        return rest;
    }

  private:
    struct Slot {
        std::mutex mutex;
        Live live{nullptr, 0};
    };
    std::array<Slot, 64> m_slots;
};

long InUse() {
    long in_use = 0;
    for (unsigned long size = 4; size <= 128; size += 4) {
        in_use += GetBlockPoolState(size).in_use;
    }
    return in_use;
}

TEST(MemoryThreads, EightThreadsTakeAndReturnEachOthersBlocks) {
    const long before = InUse();
    Exchange exchange;
    std::atomic<int> damaged{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 8; ++seed) {
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            std::vector<Live> mine;
            for (int step = 0; step < 20'000; ++step) {
                mine.push_back(exchange.Swap(random(), TakeRandom(random)));
                if (mine.back().block == nullptr) {
                    mine.pop_back();
                }
                if (mine.size() > random() % 100) {
                    damaged += ReturnWhole(mine.back()) ? 0 : 1;
                    mine.pop_back();
                }
            }
            for (const Live& live : mine) {
                damaged += ReturnWhole(live) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Live& live : exchange.Rest()) {
        if (live.block != nullptr) {
            damaged += ReturnWhole(live) ? 0 : 1;
        }
    }
    EXPECT_EQ(damaged, 0);
    EXPECT_EQ(InUse(), before);
}

// Pools that all threads empty over and over let go of chunks and take new ones.
TEST(MemoryThreads, ChunksComeAndGo) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int step = 0; step < 5'000; ++step) {
                void* const block = Malloc(20);
                std::memset(block, step, 20);
                Free(block, 20);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(GetBlockPoolState(20).in_use, 0);
    EXPECT_EQ(GetBlockPoolState(20).chunks, 0UL);
}

// Who waits long for the lock yields, then sleeps, and gets it in the end.
TEST(MemoryThreads, LongWaitsEnd) {
    PoolLock lock;
    int guarded = 0;
    lock.Lock();
    std::vector<std::thread> threads;
    std::atomic<int> waiting{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            ++waiting;
            lock.Lock();
            ++guarded;
            lock.Unlock();
        });
    }
    while (waiting != 4) {
        std::this_thread::yield();
    }
    for (int i = 0; i < 1000; ++i) {
        std::this_thread::yield();
    }
    EXPECT_EQ(guarded, 0);
    lock.Unlock();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(guarded, 4);
}

// A fork in the midst of other threads' calls leaves the child pools that work.
TEST(MemoryThreads, TheChildOfAForkHasWholePools) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                void* const block = Malloc(64);
                Free(block, 64);
            }
        });
    }
    int failed = 0;
    for (int i = 0; i < 20; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20);  // a lock that nobody releases ends the child
            void* const block = Malloc(64);
            Free(block, 64);
            ::_exit(block != nullptr ? 0 : 1);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        failed += status == 0 ? 0 : 1;
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failed, 0);
}

}  // namespace
}  // namespace FrameUtil
