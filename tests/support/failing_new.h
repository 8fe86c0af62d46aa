// The program's operator new, counted, and failing where a test wants it to.
//
//     const long before = LiveAllocations();
//     {
//         const FailNthAllocation failing(3);
//         EXPECT_THROW(Build(), std::bad_alloc);
//         EXPECT_TRUE(failing.Fired());
//     }
//     EXPECT_EQ(LiveAllocations(), before);
//
// Blocks of the library's pools are among them in builds with a sanitizer only.
//
// Thread rule: one thread.
#pragma once

/// How many allocations have not been freed yet.
long LiveAllocations();

/// While it exists the n-th allocation (1 is the next), and any of `huge_octets` or
/// more, throws std::bad_alloc.
class FailNthAllocation {
  public:
    explicit FailNthAllocation(long n);
    ~FailNthAllocation();
    FailNthAllocation(const FailNthAllocation&) = delete;
    FailNthAllocation& operator=(const FailNthAllocation&) = delete;

    /// Whether an allocation has failed.
    bool Fired() const;

    static constexpr unsigned long kHugeOctets = 1UL << 30;
};
