// Makes the n-th bounded copy fail, as it would of a size that does not fit: nothing real
// makes the codec's own copies fail. The linker puts the seam in front of memcpy_s (see
// CMakeLists.txt).
//
//     const FailNthCopy failing(1);
//     codec.build(...);
//     EXPECT_TRUE(failing.Fired());
//
// Thread rule: one thread.
#pragma once

/// While it exists the n-th copy, counted from 1, zeroes its destination and returns
/// kError.
class FailNthCopy {
  public:
    static constexpr int kError = 34;  // ERANGE

    explicit FailNthCopy(int n);
    ~FailNthCopy();
    FailNthCopy(const FailNthCopy&) = delete;
    FailNthCopy& operator=(const FailNthCopy&) = delete;

    bool Fired() const;
};
