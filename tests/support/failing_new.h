// The program's operator new, counted, and failing where a test wants it to. A program
// takes part by having support/failing_new.cpp among its sources.
//
//     const long before = LiveAllocations();
//     {
//         const FailNthAllocation failing(3);
//         EXPECT_THROW(Build(), std::bad_alloc);
//         EXPECT_TRUE(failing.Fired());
//     }
//     EXPECT_EQ(LiveAllocations(), before);
//     for (long n = 1; support::FailNth(n, [&] { copy = original; }); ++n)
//     EXPECT_TRUE(copy.empty());
//
// Blocks of the library's pools are among them in builds with a sanitizer only.
//
// Thread rule: one thread.
#pragma once

#include <new>
#include <stdexcept>

/// How many allocations have not been freed yet.
long LiveAllocations();

/// While it exists the n-th allocation (1 is the next) and those right behind it, `count` in
/// all, and any of `kHugeOctets` or more, throw std::bad_alloc, or return null where the
/// caller asks for that.
class FailNthAllocation {
  public:
    explicit FailNthAllocation(long n, long count = 1);
    ~FailNthAllocation();
    FailNthAllocation(const FailNthAllocation&) = delete;
    FailNthAllocation& operator=(const FailNthAllocation&) = delete;

    /// Whether an allocation has failed.
    bool Fired() const;

    static constexpr unsigned long kHugeOctets = 1UL << 30;
};

namespace support {

/// Runs `work` with the n-th allocation (counted from 1) failing. True when it did fail,
/// which `work` must report as std::bad_alloc; false when `work` needs fewer.
template <class Work>
bool FailNth(long n, Work work) {
    const FailNthAllocation failing(n);
    try {
        work();
    } catch (const std::bad_alloc&) {
        if (!failing.Fired()) {
            throw;
        }
        return true;
    }
    if (failing.Fired()) {
        throw std::logic_error("a failed allocation went unreported");
    }
    return false;
}

}  // namespace support
