// A pool of blocks of one size, carved from regions whose header is found from a
// block's address alone.
//
// Design notes. The pool's lock covers its lists and the headers of its regions; it is
// taken once a batch, never once a block. Which blocks are free stands in a bitmap in the
// region's header: taking and giving never touch the blocks themselves, which are
// likely to be in no cache, and a batch is handed out in the order of its addresses
// however it came back. A region whose last block returns is empty; how many of those are
// kept, retention.h decides for all pools together, and the rest is unmapped.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/mutex.h"

namespace kelp::memory {

class BlockPool {
  public:
    static constexpr std::size_t kRegionSize = std::size_t{2} << 20;

    BlockPool() = default;
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// REQUIRES: called once, before any other call; size_octets is a multiple of 8, from
    /// 8 to 512.
    void SetBlockSize(std::size_t size_octets);

    /// Writes up to `wanted` blocks to `blocks` and returns how many: fewer when the
    /// system has no memory left.
    unsigned Take(void** blocks, unsigned wanted) noexcept;

    /// Takes `count` blocks back.
    void Give(void* const* blocks, unsigned count) noexcept;

    /// Unmaps all empty regions.
    void Trim() noexcept;

    std::size_t reserved() const { return reserved_.load(std::memory_order_relaxed); }
    std::size_t handed_out() const { return handed_out_.load(std::memory_order_relaxed); }

  private:
    struct Region;

    Region* NewRegion() noexcept;
    void Link(Region* region) noexcept KELP_REQUIRES(lock_);
    void Unlink(Region* region) noexcept KELP_REQUIRES(lock_);
    void Release(Region* region) noexcept KELP_REQUIRES(lock_);
    // Releases kept regions while `more` says so.
    void ReleaseKept(bool (*more)()) noexcept KELP_REQUIRES(lock_);

    Mutex lock_;
    std::size_t size_ = 0;
    std::uint32_t capacity_ = 0;     // blocks in a region
    std::uint32_t first_block_ = 0;  // their offset from the region's start
    std::uint64_t reciprocal_ = 0;   // 2^32 / size_, rounded up: exact for offsets in a region
    Region* available_ KELP_GUARDED_BY(lock_) = nullptr;  // regions with a free block
    std::atomic<std::size_t> reserved_{0};
    std::atomic<std::size_t> handed_out_{0};
};

}  // namespace kelp::memory
