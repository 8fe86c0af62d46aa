// Where threads wait for something to come into a queue: in the poller's seat if it is
// free, otherwise asleep.
//
// Design notes. The queue's mutex guards this object and is the one passed to Wait(). A
// wake is sent to one thread: to a sleeping one if there is any that no wake is on its way
// to, else to the one in the seat. A thread that takes something out and leaves more there
// calls WakeOne() again, so that a burst wakes as many threads as it needs, one by one. The
// thread in the seat is not woken by what it delivers itself: it looks at its queue next.
//
// A thread that read only for others a few times in a row sleeps the next time, so that
// the seat comes to whom the traffic is for.
#pragma once

#include "base/clock.h"
#include "base/mutex.h"
#include "message/poller.h"

namespace kelp::message {

class WaitPoint {
  public:
    explicit WaitPoint(Poller& poller) : poller_(poller) {}

    /// Blocks up to `slice_ns` (kNever: without end) or until woken; the caller then looks
    /// at its queue and at the clock. `mutex` is released meanwhile.
    void Wait(Mutex& mutex, std::int64_t slice_ns) KELP_REQUIRES(mutex);

    /// REQUIRES: the queue's mutex is held.
    void WakeOne();
    void WakeAll();

  private:
    static constexpr int kVainPolls = 4;

    Poller& poller_;
    CondVar awake_;
    int asleep_ = 0;
    bool wake_sent_ = false;
    int in_seat_ = 0;      // one there, and who has left it but not yet the mutex again
    bool served_ = false;  // the thread in the seat delivered to this point
    int vain_polls_ = 0;
};

}  // namespace kelp::message
