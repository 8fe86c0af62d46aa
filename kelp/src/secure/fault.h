// Lets a test make a bounded routine fail although its arguments are good: callers
// trace such a failure and go on, and no real call can reach those branches.
//
//     kelp::secure::FailNth fault(Routine::kMemset, 2);   // the second memset_s
//     Run();
//     EXPECT_TRUE(fault.Fired());                         // disarmed at the end
//
// thread-safe. At most one FailNth exists at a time; a second one replaces the first.
// While none exists, a routine pays one relaxed load.
#pragma once

#include <atomic>
#include <cerrno>

namespace kelp::secure {

enum class Routine : int { kAny, kMemcpy, kMemset, kStrcpy, kStrncpy, kSnprintf, kSscanf };

// Makes the nth (1 is the first) call of `routine` fail, once, with `error`; calls are
// counted on every thread. A failing copy leaves its destination zeroed, a failing
// snprintf_s or vsnprintf_s (both kSnprintf) an empty text and the result -1.
class FailNth {
  public:
    FailNth(Routine routine, long nth, int error = EIO);
    explicit FailNth(long nth) : FailNth(Routine::kAny, nth) {}
    ~FailNth();
    FailNth(const FailNth&) = delete;
    FailNth& operator=(const FailNth&) = delete;

    // Whether the failure was delivered: a loop over n ends when it was not.
    bool Fired() const;
};

namespace fault {
inline constinit std::atomic<bool> armed{false};
int Count(Routine routine);
}  // namespace fault

// The error that this call of `routine` must report, or 0.
inline int InjectedError(Routine routine) {
    return fault::armed.load(std::memory_order_relaxed) ? fault::Count(routine) : 0;
}

}  // namespace kelp::secure
