#include "message/wait_point.h"

namespace kelp::message {
namespace {

// The point for which this thread is in the seat.
thread_local const WaitPoint* t_seated_for = nullptr;

}  // namespace

void WaitPoint::Wait(Mutex& mutex, std::int64_t slice_ns) {
    if (vain_polls_ < kVainPolls && poller_.TakeSeat()) {
        ++in_seat_;
        served_ = false;
        mutex.Unlock();
        t_seated_for = this;
        const bool any = poller_.PollFromSeat(slice_ns);
        t_seated_for = nullptr;
        poller_.LeaveSeat();  // before the queue is looked at: see the poller's notes
        mutex.Lock();
        --in_seat_;
        vain_polls_ = any && !served_ ? vain_polls_ + 1 : 0;
        return;
    }
    vain_polls_ = 0;
    ++asleep_;
    if (slice_ns == base::kNever) {
        awake_.Wait(mutex);
    } else {
        awake_.WaitUntil(mutex, base::RealPointAfter(slice_ns));
    }
    --asleep_;
    wake_sent_ = false;
}

void WaitPoint::WakeOne() {
    if (t_seated_for == this) {
        served_ = true;
    } else if (asleep_ > 0) {
        if (!wake_sent_) {
            wake_sent_ = true;
            awake_.NotifyOne();
        }
    } else if (in_seat_ > 0) {
        poller_.Wake();
    }
}

void WaitPoint::WakeAll() {
    awake_.NotifyAll();
    if (in_seat_ > 0) {
        poller_.Wake();
    }
}

}  // namespace kelp::message
