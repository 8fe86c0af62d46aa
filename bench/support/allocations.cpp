#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> g_count{0};
}  // namespace

long bench::Allocations() {
    return g_count.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size) {
    g_count.fetch_add(1, std::memory_order_relaxed);
    if (void* block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
