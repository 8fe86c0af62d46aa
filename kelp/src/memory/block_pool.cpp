#include "memory/block_pool.h"

#include <sys/mman.h>

#include <bit>
#include <new>

#include "memory/retention.h"

namespace kelp::memory {

struct BlockPool::Region {
    Region* previous = nullptr;
    Region* next = nullptr;
    std::uint32_t free = 0;        // set bits in the bitmap
    std::uint32_t first_word = 0;  // words before it have no set bit
    bool linked = false;
    bool kept = false;  // it is empty

    std::uint64_t* bitmap() { return reinterpret_cast<std::uint64_t*>(this + 1); }
};

namespace {

constexpr std::size_t kLine = 64;

Retention g_retention;  // of all pools together

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

void BlockPool::SetBlockSize(std::size_t size_octets) {
    size_ = size_octets;
    reciprocal_ = (std::uint64_t{1} << 32) / size_ + 1;
    const std::size_t bits = kRegionSize / size_;
    const std::size_t header = sizeof(Region) + (bits + 63) / 64 * sizeof(std::uint64_t);
    first_block_ = static_cast<std::uint32_t>((header + kLine - 1) / kLine * kLine);
    if (size_ % kLine == 0) {
        // Objects of several lines often end in a pointer to a part that lies right behind
        // them, in the same block: so the pointer is in the line where that part begins.
        first_block_ += 2 * sizeof(void*);
    }
    capacity_ = static_cast<std::uint32_t>((kRegionSize - first_block_) / size_);
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
    region->free = capacity_;
    std::uint64_t* word = region->bitmap();
    for (std::uint32_t left = capacity_; left != 0; ++word) {
        const std::uint32_t bits = left < 64 ? left : 64;
        *word = ~std::uint64_t{0} >> (64 - bits);
        left -= bits;
    }
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

unsigned BlockPool::Take(void** blocks, unsigned wanted) noexcept {
    const MutexLock guard(lock_);
    unsigned got = 0;
    while (got < wanted) {
        if (available_ == nullptr) {
            Region* fresh = NewRegion();
            if (fresh == nullptr) {
                break;
            }
            Link(fresh);
        }
        Region* region = available_;
        if (region->free == capacity_) {
            g_retention.Use(kRegionSize, region->kept);
            region->kept = false;
        }
        char* const base = reinterpret_cast<char*>(region) + first_block_;
        std::uint64_t* const bitmap = region->bitmap();
        std::uint32_t word = region->first_word;
        while (got < wanted && region->free != 0) {
            while (bitmap[word] == 0) {
                ++word;
            }
            const auto bit = static_cast<unsigned>(std::countr_zero(bitmap[word]));
            bitmap[word] &= bitmap[word] - 1;
            blocks[got++] = base + (std::size_t{word} * 64 + bit) * size_;
            --region->free;
        }
        region->first_word = word;
        if (region->free == 0) {
            Unlink(region);
        }
    }
    handed_out_.fetch_add(got * size_, std::memory_order_relaxed);
    return got;
}

void BlockPool::Give(void* const* blocks, unsigned count) noexcept {
    const MutexLock guard(lock_);
    for (unsigned i = 0; i < count; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(blocks[i]);
        auto* region = reinterpret_cast<Region*>(address & ~(kRegionSize - 1));
        const std::uint64_t offset = (address & (kRegionSize - 1)) - first_block_;
        const auto index = static_cast<std::uint32_t>(offset * reciprocal_ >> 32);
        const std::uint32_t word = index / 64;
        region->bitmap()[word] |= std::uint64_t{1} << (index % 64);
        if (word < region->first_word) {
            region->first_word = word;
        }
        ++region->free;
        if (!region->linked) {
            Link(region);
        }
        if (region->free == capacity_) {
            if (g_retention.Keep(kRegionSize)) {
                region->kept = true;
            } else {
                Release(region);
                ReleaseKept([] { return g_retention.TooMuch(); });
            }
        }
    }
    handed_out_.fetch_sub(count * size_, std::memory_order_relaxed);
}

void BlockPool::ReleaseKept(bool (*more)()) noexcept {
    for (Region* region = available_; region != nullptr && more();) {
        Region* next = region->next;
        if (region->kept) {
            g_retention.Drop(kRegionSize);
            Release(region);
        }
        region = next;
    }
}

void BlockPool::Trim() noexcept {
    const MutexLock guard(lock_);
    ReleaseKept([] { return true; });
}

}  // namespace kelp::memory
