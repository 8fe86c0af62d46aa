// Blocks of one size, out of chunks that are given back together.
//
// Design notes. Any thread may call; the lock guards everything that changes. A chunk is
//
//     | block | block | ... | block | address and byte size of the chunk before: 16 bytes |
//
// Free blocks form a list through their first word, newest first. The blocks of a new chunk
// would follow one another in that list behind whatever is returned meanwhile; they are
// therefore not linked but counted off from m_fresh when the list is empty, in the same
// order. A new chunk's memory is not touched before it is used, and taking one is short.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frameutil/platform.h"
#include "platform/poison.h"
#include "platform/pool_lock.h"

namespace FrameUtil {

class alignas(64) BlockPool {
  public:
    /// A pool for blocks of `block_size` bytes. With a `cap`, chunks grow to the bytes that
    /// so many blocks have without what rounds them up, and no further; 0: they always grow.
    constexpr explicit BlockPool(unsigned block_size, std::size_t cap = 0) noexcept
        : m_stride(StrideOf(block_size)),
          m_next_blocks(FirstBlocks(block_size)),
          m_block_size(block_size),
          m_cap(cap) {}
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// A block of which `size` bytes, no more than the block size, will be used. Null: no
    /// chunk was to be had; the block is counted as in use all the same.
    void* Take(std::size_t size) noexcept {
        void* block = nullptr;
        {
            const PoolGuard guard(m_lock);
            Count(1);
            if (m_free != nullptr) {
                poison::Open(m_free, sizeof(Link));
                block = m_free;
                m_free = m_free->next;
            } else if (m_fresh != m_fresh_end || Refill()) {
                block = m_fresh;
                m_fresh += m_stride;
            }
        }
        if (block != nullptr) {
            poison::Close(block, m_stride);
            poison::Open(block, size);
        }
        return block;
    }

    /// Returns a block of this pool.
    void Give(void* block) noexcept {
        Chunk all;
        {
            const PoolGuard guard(m_lock);
            Count(-1);
            poison::Open(block, sizeof(Link));
            if (m_in_use > 0) {
                m_free = ::new (block) Link{m_free};
                poison::Close(block, m_stride);
                return;
            }
            all = Empty();
        }
        Release(all);
    }

    BlockPoolState State() noexcept;

    // Around a fork, so that the child finds the pool whole.
    PoolLock& lock() noexcept { return m_lock; }

  private:
    struct Link {
        Link* next;
    };
    // Also what stands at the end of a chunk about the one before.
    struct Chunk {
        char* begin = nullptr;
        std::size_t bytes = 0;
    };
    static_assert(sizeof(Chunk) == 16);

    static constexpr std::size_t StrideOf(unsigned block_size) {
        return block_size < sizeof(Link) ? sizeof(Link)
                                         : (block_size + sizeof(Link) - 1) & ~(sizeof(Link) - 1);
    }
    static constexpr std::size_t FirstBlocks(unsigned block_size) { return 128 / block_size * 32; }
    static Chunk Before(const Chunk& chunk) noexcept;
    static void Release(Chunk chunk) noexcept;

    // Wraps instead of overflowing, should a process ever hold that many blocks.
    void Count(int change) noexcept {
        m_in_use = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_in_use) +
                                             static_cast<std::uint32_t>(change));
    }
    bool Refill() noexcept;
    void Grow() noexcept;
    Chunk Empty() noexcept;

    PoolLock m_lock;
    std::int32_t m_in_use = 0;
    Link* m_free = nullptr;
    char* m_fresh = nullptr;
    char* m_fresh_end = nullptr;
    const std::size_t m_stride;
    Chunk m_last;
    std::size_t m_next_blocks;
    const unsigned m_block_size;
    const std::size_t m_cap;
};

}  // namespace FrameUtil
