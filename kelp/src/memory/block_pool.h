// A pool of blocks of one size, carved from regions whose header is found from a
// block's address alone.
//
// Design notes. The pool's lock covers its lists and the headers of its regions; it is
// taken once a batch, never once a block. A block that is out belongs to whoever holds
// it; its first word is the link while it is free. A region whose last block returns
// is empty; empty regions are kept up to a limit shared by all pools, so that a
// process which builds and drops large trees does not pay the kernel for fresh pages
// each time, and the rest is unmapped.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace kelp::memory {

struct FreeBlockLink {
    FreeBlockLink* next;
};

class BlockPool {
  public:
    static constexpr std::size_t kRegionSize = std::size_t{2} << 20;
    static constexpr std::size_t kRetainedLimit = std::size_t{64} << 20;

    BlockPool() = default;
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// REQUIRES: called once, before any other call; size_octets is a multiple of 8.
    void SetBlockSize(std::size_t size_octets) { size_ = size_octets; }

    /// Links `wanted` blocks into a list; null when the system has no memory left and
    /// not one block could be had.
    FreeBlockLink* Take(unsigned wanted, unsigned& got) noexcept;

    /// Takes a list of blocks back.
    void Give(FreeBlockLink* list) noexcept;

    /// Unmaps all empty regions.
    void Trim() noexcept;

    std::size_t reserved() const { return reserved_.load(std::memory_order_relaxed); }
    std::size_t handed_out() const { return handed_out_.load(std::memory_order_relaxed); }

  private:
    struct Region;

    Region* NewRegion() noexcept;
    void Link(Region* region) noexcept;
    void Unlink(Region* region) noexcept;
    void Release(Region* region) noexcept;

    std::mutex lock_;
    std::size_t size_ = 0;
    Region* available_ = nullptr;  // regions with a free block, the fullest used first
    std::atomic<std::size_t> reserved_{0};
    std::atomic<std::size_t> handed_out_{0};
};

}  // namespace kelp::memory
