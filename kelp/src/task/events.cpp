#include "task/events.h"

#include <cxxabi.h>

#include <algorithm>
#include <string>

#include "kelp/log.h"
#include "task/core.h"
#include "task/manager.h"

namespace kelp::task {
namespace {

const LocationInfo kWhere("event", "", 0);

}  // namespace

bool Events::Subscribe(unsigned int event_id, TEEventHandler* handler, std::uint8_t task_mgr) {
    const Subscription wanted{event_id, handler, task_mgr};
    MutexLock lock(mutex_);
    if (handler == nullptr ||
        std::find(subscriptions_.begin(), subscriptions_.end(), wanted) != subscriptions_.end()) {
        return false;
    }
    subscriptions_.push_back(wanted);
    return true;
}

bool Events::Unsubscribe(unsigned int event_id, TEEventHandler* handler) {
    MutexLock lock(mutex_);
    return std::erase_if(subscriptions_, [&](const Subscription& subscription) {
               return subscription.event_id == event_id && subscription.handler == handler;
           }) > 0;
}

bool Events::Post(Core& core, unsigned int event_id, TEEventParam* param, std::uint8_t task_mgr) {
    std::vector<Subscription> wanted;
    {
        MutexLock lock(mutex_);
        std::copy_if(subscriptions_.begin(), subscriptions_.end(), std::back_inserter(wanted),
                     [&](const Subscription& subscription) {
                         return subscription.event_id == event_id &&
                                (task_mgr == 0 || subscription.task_mgr == task_mgr);
                     });
    }
    // Deletes what it holds only once somebody took the event.
    const auto taken = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<TEEventParam> shared(param, [taken](TEEventParam* held) {
        if (taken->load()) {
            delete held;
        }
    });
    taken->store(true);
    bool any = false;
    for (const Subscription& subscription : wanted) {
        const std::shared_ptr<Manager> manager = core.FindManager(subscription.task_mgr);
        any |= manager != nullptr &&
               manager->PutEvent(std::make_unique<EventDelivery>(
                   EventDelivery{event_id, subscription.handler, subscription.task_mgr, shared}));
    }
    if (!any) {
        taken->store(false);
    }
    return any;
}

void Events::Run(const EventDelivery& delivery) {
    {
        const Subscription wanted{delivery.event_id, delivery.handler, delivery.task_mgr};
        MutexLock lock(mutex_);
        if (std::find(subscriptions_.begin(), subscriptions_.end(), wanted) ==
            subscriptions_.end()) {
            return;
        }
    }
    const std::string name = "[event] handler of event " + std::to_string(delivery.event_id);
    try {
        const int result = delivery.handler->ReceiveEvent(delivery.event_id, delivery.param.get());
        if (result != 0) {
            LogProcess::Warn(name + " returned " + std::to_string(result), kWhere);
        }
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::exception& failure) {
        LogProcess::Error(KELP_MSG_HANDLER_FAILED, name + " threw: " + failure.what(), kWhere);
    } catch (...) {
        LogProcess::Error(KELP_MSG_HANDLER_FAILED, name + " threw", kWhere);
    }
}

void Events::Clear() {
    MutexLock lock(mutex_);
    subscriptions_.clear();
}

}  // namespace kelp::task

TEEventParam::~TEEventParam() = default;
TEEventHandler::~TEEventHandler() = default;

TEEventMgr* TEEventMgr::Instance() noexcept {
    static TEEventMgr instance;  // without state: outlives static objects that use it
    return KelpAppMgr::IsInitialized() ? &instance : nullptr;
}

int TEEventMgr::SubscibeEvent(unsigned int eventId, TEEventHandler* handler,
                              unsigned char taskMgrId) {
    const auto core = kelp::task::CurrentCore();
    return core != nullptr && core->events().Subscribe(eventId, handler, taskMgrId) ? 0 : -1;
}

int TEEventMgr::UnSubscibeEvent(unsigned int eventId, TEEventHandler* handler) {
    const auto core = kelp::task::CurrentCore();
    return core != nullptr && core->events().Unsubscribe(eventId, handler) ? 0 : -1;
}

int TEEventMgr::PostEvent(unsigned int eventId, TEEventParam* param, unsigned char taskMgrId) {
    const auto core = kelp::task::CurrentCore();
    return core != nullptr && core->events().Post(*core, eventId, param, taskMgrId) ? 0 : -1;
}
