#include "memory/block_pool.h"

#include <sys/mman.h>

#include <new>

namespace kelp::memory {

struct alignas(64) BlockPool::Region {
    Region* previous = nullptr;
    Region* next = nullptr;
    FreeBlockLink* free = nullptr;
    std::uint32_t out = 0;     // blocks in use or in a thread's cache
    std::uint32_t carved = 0;  // blocks that were ever handed out
    std::uint32_t capacity = 0;
    bool linked = false;
    bool counted_empty = false;
};

namespace {

std::atomic<std::size_t> g_empty_octets{0};

void* MapAligned(std::size_t size) noexcept {
    void* raw = mmap(nullptr, size * 2, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) {
        return nullptr;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (start + size - 1) & ~(size - 1);
    if (aligned != start) {
        munmap(raw, aligned - start);
    }
    if (const std::uintptr_t tail = start + size * 2 - (aligned + size); tail != 0) {
        munmap(reinterpret_cast<void*>(aligned + size), tail);
    }
    return reinterpret_cast<void*>(aligned);
}

}  // namespace

BlockPool::~BlockPool() {
    Trim();
}

BlockPool::Region* BlockPool::NewRegion() noexcept {
    void* memory = MapAligned(kRegionSize);
    if (memory == nullptr) {
        return nullptr;
    }
    if (reserved() != 0) {
        // The first region of a size is touched page by page, which keeps small
        // programs small; whoever needs a second one wants many pages at once.
        madvise(memory, kRegionSize, MADV_HUGEPAGE);
    }
    auto* region = new (memory) Region;
    region->capacity = static_cast<std::uint32_t>((kRegionSize - sizeof(Region)) / size_);
    reserved_.fetch_add(kRegionSize, std::memory_order_relaxed);
    return region;
}

void BlockPool::Link(Region* region) noexcept {
    region->previous = nullptr;
    region->next = available_;
    if (available_ != nullptr) {
        available_->previous = region;
    }
    available_ = region;
    region->linked = true;
}

void BlockPool::Unlink(Region* region) noexcept {
    (region->previous != nullptr ? region->previous->next : available_) = region->next;
    if (region->next != nullptr) {
        region->next->previous = region->previous;
    }
    region->linked = false;
}

void BlockPool::Release(Region* region) noexcept {
    Unlink(region);
    reserved_.fetch_sub(kRegionSize, std::memory_order_relaxed);
    munmap(region, kRegionSize);
}

FreeBlockLink* BlockPool::Take(unsigned wanted, unsigned& got) noexcept {
    const std::lock_guard guard(lock_);
    FreeBlockLink* list = nullptr;
    FreeBlockLink** tail = &list;
    got = 0;
    while (got < wanted) {
        if (available_ == nullptr) {
            Region* fresh = NewRegion();
            if (fresh == nullptr) {
                break;
            }
            Link(fresh);
        }
        Region* region = available_;
        if (region->counted_empty) {
            region->counted_empty = false;
            g_empty_octets.fetch_sub(kRegionSize, std::memory_order_relaxed);
        }
        while (got < wanted && (region->free != nullptr || region->carved < region->capacity)) {
            FreeBlockLink* block = region->free;
            if (block != nullptr) {
                region->free = block->next;
            } else {
                char* base = reinterpret_cast<char*>(region) + sizeof(Region);
                block = reinterpret_cast<FreeBlockLink*>(base + region->carved * size_);
                ++region->carved;
            }
            ++region->out;
            *tail = block;
            tail = &block->next;
            ++got;
        }
        if (region->free == nullptr && region->carved == region->capacity) {
            Unlink(region);
        }
    }
    *tail = nullptr;
    handed_out_.fetch_add(got * size_, std::memory_order_relaxed);
    return list;
}

void BlockPool::Give(FreeBlockLink* list) noexcept {
    const std::lock_guard guard(lock_);
    std::size_t returned = 0;
    while (list != nullptr) {
        FreeBlockLink* block = list;
        list = list->next;
        const auto address = reinterpret_cast<std::uintptr_t>(block);
        auto* region = reinterpret_cast<Region*>(address & ~(kRegionSize - 1));
        block->next = region->free;
        region->free = block;
        returned += size_;
        if (!region->linked) {
            Link(region);
        }
        if (--region->out == 0) {
            if (g_empty_octets.load(std::memory_order_relaxed) >= kRetainedLimit) {
                Release(region);
            } else {
                region->counted_empty = true;
                g_empty_octets.fetch_add(kRegionSize, std::memory_order_relaxed);
            }
        }
    }
    handed_out_.fetch_sub(returned, std::memory_order_relaxed);
}

void BlockPool::Trim() noexcept {
    const std::lock_guard guard(lock_);
    for (Region* region = available_; region != nullptr;) {
        Region* next = region->next;
        if (region->counted_empty) {
            g_empty_octets.fetch_sub(kRegionSize, std::memory_order_relaxed);
            Release(region);
        }
        region = next;
    }
}

}  // namespace kelp::memory
