#include "support/failing_new.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> live{0};
// Of the thread that made the FailNthAllocation; 0 when there is none.
thread_local long until_failure = 0;
thread_local long failures = 0;  // how many are due from then on
thread_local bool fired = false;
thread_local bool armed = false;

void* Allocate(std::size_t size) noexcept {
    if (armed) {
        const bool due = until_failure > 1 ? (--until_failure, false) : failures-- > 0;
        if (size >= FailNthAllocation::kHugeOctets || due) {
            fired = true;
            return nullptr;
        }
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) {
        ++live;
    }
    return block;
}

void* AllocateOrThrow(std::size_t size) {
    void* block = Allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void Free(void* block) noexcept {
    if (block != nullptr) {
        --live;
        std::free(block);
    }
}

}  // namespace

long LiveAllocations() {
    return live;
}

FailNthAllocation::FailNthAllocation(long n, long count) {
    until_failure = n;
    failures = n == 0 ? 0 : count;
    fired = false;
    armed = true;
}

FailNthAllocation::~FailNthAllocation() {
    armed = false;
}

bool FailNthAllocation::Fired() const {
    return fired;
}

// Over-aligned allocations stay with the standard library: nothing here needs them.
void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
