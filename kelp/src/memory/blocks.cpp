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

#include "memory/block_pool.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
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
void FreeBlock(void* block, std::size_t size) noexcept {
    ::operator delete(block, size);
}
BlockUsage GetBlockUsage() {
    return {};
}
void TrimBlocks() {}

#else

namespace {

using memory::BlockPool;
using memory::FreeBlockLink;

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

constexpr unsigned BatchOf(std::size_t index) {
    return static_cast<unsigned>(std::clamp<std::size_t>(8192 / (index * kGranule), 16, 128));
}

struct CacheList {
    FreeBlockLink* head;
    unsigned count;
};

struct Cache {
    std::array<CacheList, kClasses> of;
    bool open;
    bool closed;
};

// initial-exec keeps the access to one instruction; the object is small enough for the
// room that the loader reserves for libraries loaded late.
__attribute__((tls_model("initial-exec"))) thread_local Cache t_cache{};

void Drain() noexcept {
    for (std::size_t i = 1; i < kClasses; ++i) {
        if (t_cache.of[i].head != nullptr) {
            AllPools().of[i].Give(t_cache.of[i].head);
            t_cache.of[i] = {};
        }
    }
}

struct CacheGuard {
    CacheGuard() { t_cache.open = true; }
    ~CacheGuard() {
        Drain();
        t_cache.open = false;
        t_cache.closed = true;
    }
};

void OpenCache() {
    if (!t_cache.closed) {
        static thread_local CacheGuard guard;
        static_cast<void>(guard);
    }
}

[[gnu::noinline]] void* TakeSlow(std::size_t index) {
    OpenCache();
    unsigned got = 0;
    FreeBlockLink* list = AllPools().of[index].Take(t_cache.open ? BatchOf(index) : 1, got);
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    t_cache.of[index] = {list->next, got - 1};
    return list;
}

[[gnu::noinline]] void GiveSlow(std::size_t index) noexcept {
    CacheList& cached = t_cache.of[index];
    if (!t_cache.open) {
        OpenCache();
    }
    if (t_cache.open && cached.count <= 2 * BatchOf(index)) {
        return;
    }
    // The half that was freed last stays: it is warm.
    unsigned keep = t_cache.open ? BatchOf(index) : 0;
    FreeBlockLink** cut = &cached.head;
    for (unsigned i = 0; i < keep; ++i) {
        cut = &(*cut)->next;
    }
    FreeBlockLink* surplus = *cut;
    *cut = nullptr;
    cached.count = keep;
    AllPools().of[index].Give(surplus);
}

}  // namespace

void* AllocateBlock(std::size_t size) {
    if (size > kMaxBlockSize) {
        return ::operator new(size);
    }
    const std::size_t index = size == 0 ? 1 : (size + kGranule - 1) / kGranule;
    CacheList& cached = t_cache.of[index];
    FreeBlockLink* block = cached.head;
    if (block == nullptr) {
        return TakeSlow(index);
    }
    cached.head = block->next;
    --cached.count;
    return block;
}

void FreeBlock(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return;
    }
    if (size > kMaxBlockSize) {
        ::operator delete(block, size);
        return;
    }
    const std::size_t index = size == 0 ? 1 : (size + kGranule - 1) / kGranule;
    CacheList& cached = t_cache.of[index];
    auto* link = static_cast<FreeBlockLink*>(block);
    link->next = cached.head;
    cached.head = link;
    if (++cached.count > 2 * BatchOf(index) || !t_cache.open) {
        GiveSlow(index);
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
    Drain();
    for (BlockPool& pool : AllPools().of) {
        pool.Trim();
    }
}

#endif

}  // namespace kelp
