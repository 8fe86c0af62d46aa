// Requests of threads that are in no task: each waits for the one answer with its serial
// number.
//
// Design notes. A call lives on the stack of the thread that waits; `mutex_` guards the
// list of them and what they receive. Stop() returns when none is left, so that no thread
// of the program is inside the bus when it ends.
#pragma once

#include <cstdint>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "message/bus.h"
#include "message/wait_point.h"

namespace kelp::task {

class OutsideCalls {
  public:
    OutsideCalls(message::Bus& bus, const base::Clock& clock) : bus_(bus), clock_(clock) {}

    /// Sends `msg` and waits. KELP_MSG_OK with the answer in `reply`, or why there is none.
    std::uint32_t Call(message::MsgPtr msg, message::MsgPtr& reply, int timeout_seconds);

    /// Hands an answer to the call that waits for it; false, the message untouched, when
    /// there is none.
    bool TakeAnswer(message::MsgPtr& answer);

    /// Ends all calls, and refuses new ones.
    void Stop();

  private:
    struct Waiting {
        explicit Waiting(message::Poller& poller) : point(poller) {}
        std::uint32_t serial = 0;
        std::uint32_t cmd_code = 0;
        std::uint16_t proc_id = 0;
        message::MsgPtr answer;
        message::WaitPoint point;
    };

    void Leave(const Waiting& call) KELP_REQUIRES(mutex_);

    message::Bus& bus_;
    const base::Clock& clock_;
    Mutex mutex_;
    CondVar left_;
    std::vector<Waiting*> calls_ KELP_GUARDED_BY(mutex_);
    bool stopped_ KELP_GUARDED_BY(mutex_) = false;
};

}  // namespace kelp::task
