// An operator new that can be made to fail at its n-th call. Include this in exactly one
// file of a program: it replaces the global operators.
//
//     for (int n = 1; FailNth(n, [&] { copy = original; }); ++n) EXPECT_EQ(copy, before);
//
// Thread rule: the counting is the calling thread's own.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace support {

// Calls of operator new on this thread until the one that fails; 0: none fails.
inline thread_local int calls_until_failure = 0;

inline void* AllocateOrFail(std::size_t size) {
    if (calls_until_failure != 0 && --calls_until_failure == 0) {
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

/// Runs `work` with the n-th allocation (counted from 1) failing. True when it did fail,
/// which `work` must report as std::bad_alloc; false when `work` needs fewer.
template <class Work>
bool FailNth(int n, Work work) {
    calls_until_failure = n;
    try {
        work();
    } catch (const std::bad_alloc&) {
        calls_until_failure = 0;
        return true;
    }
    const bool reached = calls_until_failure == 0;
    calls_until_failure = 0;
    if (reached) {
        throw std::logic_error("a failed allocation went unreported");
    }
    return false;
}

}  // namespace support

void* operator new(std::size_t size) {
    return support::AllocateOrFail(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
