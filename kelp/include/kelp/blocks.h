// kelp/blocks.h - memory for objects that come in millions and live short.
//
// A parameter tree, a decoded record and a message are made of many small objects of
// few sizes. Blocks of up to kMaxBlockSize octets come from pools of equal blocks:
// a thread takes and returns them from a cache of its own, caches trade batches with
// the pool under a lock, and pools keep empty memory up to what was in use within the
// last seconds (64 MiB always) and return the rest to the operating system.
//
//     void* p = kelp::AllocateBlock(sizeof(Cell));
//     kelp::FreeBlock(p, sizeof(Cell));   // the same size, on any thread
//
// Thread rule: thread-safe. A block may be freed by another thread than the one that
// took it.
#pragma once

#include <cstddef>
#include <new>

#include "kelp/export.h"

namespace kelp {

/// The largest size that is pooled; larger requests go to ::operator new.
inline constexpr std::size_t kMaxBlockSize = 512;

/// A block of at least `size` octets, aligned to 8 octets (to 16 when `size` is a
/// multiple of 16). Throws std::bad_alloc when memory is out. In builds with a
/// sanitizer every block comes from ::operator new, so that the sanitizer sees it.
KELP_API void* AllocateBlock(std::size_t size);

/// Returns a block; `size` is the one it was taken with. Null is accepted.
KELP_API void FreeBlock(void* block, std::size_t size) noexcept;

/// What the pools hold, in octets, over all sizes and threads.
struct BlockUsage {
    std::size_t reserved = 0;    ///< taken from the operating system
    std::size_t handed_out = 0;  ///< in objects or in threads' caches
};

/// A snapshot for diagnosis and measurement; zeros in builds with a sanitizer.
KELP_API BlockUsage GetBlockUsage();

/// Gives the calling thread's cached blocks back to the pools and every empty stretch
/// of memory back to the operating system, for a process that has become idle.
KELP_API void TrimBlocks();

/// Base of classes whose objects live in blocks. Derived classes with a virtual
/// destructor may be deleted through their base.
struct BlockObject {
    static void* operator new(std::size_t size) { return AllocateBlock(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* p, std::size_t size) noexcept { FreeBlock(p, size); }
    static void operator delete(void*, void*) noexcept {}
};

}  // namespace kelp
