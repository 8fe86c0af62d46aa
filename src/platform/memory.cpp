// The table of pools. It is initialised before any code runs, so static objects of any
// source may take blocks.

#include <pthread.h>

#include <array>
#include <cstdlib>
#include <utility>

#include "frameutil/platform.h"
#include "platform/block_pool.h"
#include "platform/live_blocks.h"

namespace FrameUtil {

namespace {

#if !defined(NDEBUG) || defined(FRAMEUTIL_CHECK_BLOCKS)
constexpr bool kChecked = true;
#else
constexpr bool kChecked = false;
#endif

constexpr unsigned long kLargest = 128;
constexpr unsigned long kStep = 4;

template <std::size_t... kIndex>
constexpr std::array<BlockPool, sizeof...(kIndex)> MakePools(std::index_sequence<kIndex...>) {
    return {BlockPool(static_cast<unsigned>(kStep * (kIndex + 1)))...};
}

constinit std::array<BlockPool, kLargest / kStep> g_pools =
    MakePools(std::make_index_sequence<kLargest / kStep>{});

BlockPool& PoolOf(unsigned long size) {
    return g_pools[size == 0 ? 0 : (size - 1) / kStep];
}

void Return(void* block, unsigned long size) noexcept {
    if (size > kLargest) {
        std::free(block);
    } else {
        PoolOf(size).Give(block);
    }
}

// A fork copies the pools as they are: none may be in the hands of another thread.
struct ForkHandlers {
    ForkHandlers() { ::pthread_atfork(LockAll, UnlockAll, UnlockAll); }

    static void LockAll() FRAMEUTIL_ANNOTATION(no_thread_safety_analysis) {
        for (BlockPool& pool : g_pools) {
            pool.lock().Lock();
        }
        if constexpr (kChecked) {
            LockLiveBlocks();
        }
    }
    static void UnlockAll() FRAMEUTIL_ANNOTATION(no_thread_safety_analysis) {
        if constexpr (kChecked) {
            UnlockLiveBlocks();
        }
        for (BlockPool& pool : g_pools) {
            pool.lock().Unlock();
        }
    }
};
const ForkHandlers g_fork_handlers;

}  // namespace

void* Malloc(unsigned long size) noexcept {
    void* const block = size > kLargest ? std::malloc(size) : PoolOf(size).Take(size);
    if constexpr (kChecked) {
        if (block != nullptr && !NoteLiveBlock(block, size)) {
            Return(block, size);
            return nullptr;
        }
    }
    return block;
}

void Free(void* p, unsigned long size) noexcept {
    if (p == nullptr) {
        return;
    }
    if constexpr (kChecked) {
        ForgetLiveBlock(p, size);
    }
    Return(p, size);
}

BlockPoolState GetBlockPoolState(unsigned long size) noexcept {
    return size > kLargest ? BlockPoolState{} : PoolOf(size).State();
}

}  // namespace FrameUtil
