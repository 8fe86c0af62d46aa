// The process's pools and the threads' caches in front of them.
//
// Design notes. A cache is plain thread-local data, so the fast path is a few loads; a
// guard object, made on a thread's first miss, returns the cache when the thread ends.
// Objects that are destroyed later than the guard (in other thread-local destructors)
// find the cache closed and go to the pool one block at a time. The pools themselves
// are never destroyed: static objects may free blocks after main.

#include "kelp/blocks.h"

#include <algorithm>
#include <array>
#include <new>

#include "memory/block_pool.h"

#if defined(KELP_BLOCKS_FROM_HEAP)
// A test program asks for it.
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KELP_BLOCKS_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define KELP_BLOCKS_FROM_HEAP 1
#endif
#endif

namespace kelp {

#ifdef KELP_BLOCKS_FROM_HEAP

void* AllocateBlock(std::size_t size) {
    return ::operator new(size);
}
void FreeBlock(void* block, std::size_t) noexcept {
    ::operator delete(block);
}
BlockUsage GetBlockUsage() {
    return {};
}
void TrimBlocks() {}

#else

namespace {

using memory::BlockPool;

constexpr std::size_t kGranule = 8;
constexpr std::size_t kClasses = kMaxBlockSize / kGranule + 1;

struct Pools {
    std::array<BlockPool, kClasses> of;
    Pools() {
        for (std::size_t i = 1; i < kClasses; ++i) {
            of[i].SetBlockSize(i * kGranule);
        }
    }
};

Pools& AllPools() {
    static Pools* pools = new Pools;
    return *pools;
}

// How many blocks move between a cache and its pool at a time; a cache holds twice that.
constexpr unsigned BatchOf(std::size_t index) {
    return static_cast<unsigned>(std::clamp<std::size_t>(16384 / (index * kGranule), 32, 128));
}

struct CacheList {
    void** blocks;  // null until the thread's first miss
    unsigned count;
    unsigned capacity;
};

struct Cache {
    std::array<CacheList, kClasses> of;
    bool closed;
};

// initial-exec keeps the access to one instruction; the object is small enough for the
// room that the loader reserves for libraries loaded late.
__attribute__((tls_model("initial-exec"))) thread_local Cache t_cache{};

void Drain(CacheList& cached, std::size_t index) noexcept {
    AllPools().of[index].Give(cached.blocks, cached.count);
    cached.count = 0;
}

struct CacheGuard {
    ~CacheGuard() {
        t_cache.closed = true;
        for (std::size_t i = 1; i < kClasses; ++i) {
            CacheList& cached = t_cache.of[i];
            if (cached.blocks != nullptr) {
                Drain(cached, i);
                delete[] cached.blocks;
                cached = {};
            }
        }
    }
};

// Gives the thread a cache for this size; false when the thread is past having one or
// memory is out.
bool OpenCache(CacheList& cached, std::size_t index) noexcept {
    if (t_cache.closed) {
        return false;
    }
    static thread_local CacheGuard guard;
    static_cast<void>(guard);
    const unsigned capacity = 2 * BatchOf(index);
    cached.blocks = new (std::nothrow) void*[capacity];
    cached.capacity = cached.blocks == nullptr ? 0 : capacity;
    return cached.blocks != nullptr;
}

[[gnu::noinline]] void* TakeSlow(std::size_t index) {
    CacheList& cached = t_cache.of[index];
    if (cached.blocks == nullptr && !OpenCache(cached, index)) {
        void* block = nullptr;
        if (AllPools().of[index].Take(&block, 1) == 0) {
            throw std::bad_alloc();
        }
        return block;
    }
    cached.count = AllPools().of[index].Take(cached.blocks, BatchOf(index));
    if (cached.count == 0) {
        throw std::bad_alloc();
    }
    // The cache is a stack: turned over, it gives ascending addresses.
    std::reverse(cached.blocks, cached.blocks + cached.count);
    return cached.blocks[--cached.count];
}

[[gnu::noinline]] void GiveSlow(void* block, std::size_t index) noexcept {
    CacheList& cached = t_cache.of[index];
    if (cached.blocks == nullptr && !OpenCache(cached, index)) {
        AllPools().of[index].Give(&block, 1);
        return;
    }
    if (cached.count == cached.capacity) {
        // The half that was freed last stays: it is warm.
        const unsigned batch = BatchOf(index);
        AllPools().of[index].Give(cached.blocks, batch);
        cached.count -= batch;
        std::copy_n(cached.blocks + batch, cached.count, cached.blocks);
    }
    cached.blocks[cached.count++] = block;
}

}  // namespace

void* AllocateBlock(std::size_t size) {
    if (size > kMaxBlockSize) {
        return ::operator new(size);
    }
    const std::size_t index = size == 0 ? 1 : (size + kGranule - 1) / kGranule;
    CacheList& cached = t_cache.of[index];
    return cached.count != 0 ? cached.blocks[--cached.count] : TakeSlow(index);
}

void FreeBlock(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return;
    }
    if (size > kMaxBlockSize) {
        ::operator delete(block);
        return;
    }
    const std::size_t index = size == 0 ? 1 : (size + kGranule - 1) / kGranule;
    CacheList& cached = t_cache.of[index];
    if (cached.count < cached.capacity) {
        cached.blocks[cached.count++] = block;
    } else {
        GiveSlow(block, index);
    }
}

BlockUsage GetBlockUsage() {
    BlockUsage usage;
    for (const BlockPool& pool : AllPools().of) {
        usage.reserved += pool.reserved();
        usage.handed_out += pool.handed_out();
    }
    return usage;
}

void TrimBlocks() {
    for (std::size_t i = 1; i < kClasses; ++i) {
        Drain(t_cache.of[i], i);
    }
    for (BlockPool& pool : AllPools().of) {
        pool.Trim();
    }
}

#endif

}  // namespace kelp
