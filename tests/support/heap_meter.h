// How many octets of memory the process's objects hold: the heap and the pooled
// blocks. For tests that bound what an input may make the process keep.
//
//     const std::size_t before = HeapInUse();
//     Decode(input);
//     EXPECT_LE(HeapInUse() - before, 4 * input.size() + kHeapNoise);
//
// Thread rule: thread-compatible; other threads' allocations count too.
#pragma once

#include <malloc.h>

#include <cstddef>

#include "kelp/blocks.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SUPPORT_SANITIZER_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SUPPORT_SANITIZER_HEAP 1
#endif
#endif

#ifdef SUPPORT_SANITIZER_HEAP
#include <sanitizer/allocator_interface.h>
#endif

namespace support {

/// What caches of freed memory and rounding may add.
inline constexpr std::size_t kHeapNoise = std::size_t{256} << 10;

inline std::size_t HeapInUse() {
#ifdef SUPPORT_SANITIZER_HEAP
    return __sanitizer_get_current_allocated_bytes();
#else
    kelp::TrimBlocks();
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd + kelp::GetBlockUsage().handed_out;
#endif
}

}  // namespace support
