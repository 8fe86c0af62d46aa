// Tells AddressSanitizer which bytes of a pool's chunks are in use, so that it finds writes
// behind a small block and uses of a returned one as it does with the system's blocks.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define FRAMEUTIL_POISONS_BLOCKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FRAMEUTIL_POISONS_BLOCKS 1
#endif
#endif

#ifdef FRAMEUTIL_POISONS_BLOCKS
#include <sanitizer/asan_interface.h>
#endif

namespace FrameUtil::poison {

#ifdef FRAMEUTIL_POISONS_BLOCKS
inline void Open(const void* begin, std::size_t bytes) noexcept {
    __asan_unpoison_memory_region(begin, bytes);
}
inline void Close(const void* begin, std::size_t bytes) noexcept {
    __asan_poison_memory_region(begin, bytes);
}
#else
inline void Open(const void*, std::size_t) noexcept {}
inline void Close(const void*, std::size_t) noexcept {}
#endif

}  // namespace FrameUtil::poison
