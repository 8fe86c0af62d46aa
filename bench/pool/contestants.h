// Who hands out small blocks by their size, and takes them back with it.
#pragma once

#include <array>
#include <boost/pool/singleton_pool.hpp>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "frameutil/platform.h"

namespace bench {

struct Ours {
    static constexpr const char* kName = "ours";
    static void* Take(std::size_t size) { return FrameUtil::Malloc(size); }
    static void Return(void* block, std::size_t size) { FrameUtil::Free(block, size); }
};

struct Glibc {
    static constexpr const char* kName = "glibc";
    static void* Take(std::size_t size) { return std::malloc(size); }
    static void Return(void* block, std::size_t) { std::free(block); }
};

/// A pool for each size in steps of 4, as ours has, behind a table of functions.
struct BoostPools {
    static constexpr const char* kName = "boost";
    static void* Take(std::size_t size) { return kTakes[(size - 1) / 4](); }
    static void Return(void* block, std::size_t size) { kReturns[(size - 1) / 4](block); }

  private:
    struct Tag {};
    template <std::size_t kSize>
    using Pool =
        boost::singleton_pool<Tag, kSize, boost::default_user_allocator_new_delete, std::mutex>;

    template <std::size_t... kIndex>
    static constexpr auto MakeTakes(std::index_sequence<kIndex...>) {
        return std::array<void* (*)(), sizeof...(kIndex)>{&Pool<4 * (kIndex + 1)>::malloc...};
    }
    template <std::size_t... kIndex>
    static constexpr auto MakeReturns(std::index_sequence<kIndex...>) {
        return std::array<void (*)(void*), sizeof...(kIndex)>{&Pool<4 * (kIndex + 1)>::free...};
    }
    static const std::array<void* (*)(), 32> kTakes;
    static const std::array<void (*)(void*), 32> kReturns;
};
inline constexpr std::array<void* (*)(), 32> BoostPools::kTakes =
    MakeTakes(std::make_index_sequence<32>{});
inline constexpr std::array<void (*)(void*), 32> BoostPools::kReturns =
    MakeReturns(std::make_index_sequence<32>{});

/// What the loop costs by itself: blocks that are always there.
struct Null {
    static constexpr const char* kName = "null";
    static void* Take(std::size_t size) { return s_blocks[size - 1].data(); }
    static void Return(void*, std::size_t) {}

  private:
    static inline std::array<std::array<char, 128>, 128> s_blocks;
};

}  // namespace bench
