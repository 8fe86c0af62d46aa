// Who wants to hear of which event, and the events on their way.
//
// Design notes. `mutex_` guards the subscriptions and is not held while a handler runs. A
// delivery waits in a manager's queue; when its turn comes it asks whether the
// subscription still stands, so that none begins after it was withdrawn.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/mutex.h"
#include "kelp/task.h"

namespace kelp::task {

class Core;
class Events;

/// One event on its way to one subscriber.
struct EventDelivery {
    unsigned int event_id;
    TEEventHandler* handler;
    std::uint8_t task_mgr;
    std::shared_ptr<TEEventParam> param;
};

class Events {
  public:
    bool Subscribe(unsigned int event_id, TEEventHandler* handler, std::uint8_t task_mgr);
    bool Unsubscribe(unsigned int event_id, TEEventHandler* handler);
    /// Puts the event into the queues of the managers; whether any took it, and then
    /// `param` with it.
    bool Post(Core& core, unsigned int event_id, TEEventParam* param, std::uint8_t task_mgr);
    /// Runs the handler, unless it was unsubscribed meanwhile.
    void Run(const EventDelivery& delivery);
    void Clear();

  private:
    struct Subscription {
        unsigned int event_id;
        TEEventHandler* handler;
        std::uint8_t task_mgr;
        bool operator==(const Subscription&) const = default;
    };

    Mutex mutex_;
    std::vector<Subscription> subscriptions_ KELP_GUARDED_BY(mutex_);
};

}  // namespace kelp::task
