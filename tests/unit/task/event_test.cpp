// Events: who receives them, where, and whose the parameter is.

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "kelp/task.h"
#include "support/captured_log.h"
#include "support/platform.h"

namespace {

constexpr unsigned kEvent = 0x90000000;

std::atomic<int> g_params{0};

struct Param final : TEEventParam {
    Param() { ++g_params; }
    ~Param() override { --g_params; }
};

struct Handler final : TEEventHandler {
    int ReceiveEvent(unsigned int event, TEEventParam* param) override {
        EXPECT_EQ(event, kEvent);
        last = param;
        thread = std::this_thread::get_id();
        ++received;
        if (throws) {
            throw std::runtime_error("cannot take it");
        }
        return result;
    }
    std::atomic<int> received{0};
    std::atomic<TEEventParam*> last{nullptr};
    std::atomic<std::thread::id> thread;
    bool throws = false;
    int result = 0;
};

TEST(Event, IsDeliveredOnTheManagersThreads) {
    Platform platform;
    TEEventMgr& events = *TEEventMgr::Instance();
    Handler handler;
    EXPECT_EQ(events.SubscibeEvent(kEvent, &handler, Platform::kManager), 0);
    EXPECT_EQ(events.SubscibeEvent(kEvent, &handler, Platform::kManager), -1) << "twice";
    EXPECT_EQ(events.SubscibeEvent(kEvent, nullptr, Platform::kManager), -1);
    EXPECT_EQ(events.PostEvent(kEvent, new Param, 0), 0);
    EXPECT_TRUE(Eventually([&] { return handler.received == 1 && g_params == 0; }));
    EXPECT_NE(handler.thread.load(), std::this_thread::get_id());
    EXPECT_EQ(events.PostEvent(kEvent, nullptr, 0), 0) << "a null parameter is one";
    EXPECT_TRUE(Eventually([&] { return handler.received == 2; }));
    EXPECT_EQ(handler.last, nullptr);
}

// What nobody takes stays the poster's.
TEST(Event, UntakenParameterStaysTheCallers) {
    Platform platform;
    TEEventMgr& events = *TEEventMgr::Instance();
    Handler handler;
    Param param;
    EXPECT_EQ(events.PostEvent(kEvent, &param, 0), -1) << "no subscriber";
    EXPECT_EQ(events.SubscibeEvent(kEvent, &handler, 77), 0);
    EXPECT_EQ(events.PostEvent(kEvent, &param, 0), -1) << "its manager is not there";
    EXPECT_EQ(events.SubscibeEvent(kEvent, &handler, Platform::kManager), 0);
    EXPECT_EQ(events.PostEvent(kEvent, &param, 77), -1) << "not on that manager";
    EXPECT_EQ(events.PostEvent(kEvent + 1, &param, 0), -1) << "another event";
    EXPECT_EQ(handler.received, 0);
    EXPECT_EQ(g_params, 1);
}

TEST(Event, IsSharedByItsSubscribers) {
    Platform platform;
    TEEventMgr& events = *TEEventMgr::Instance();
    Handler one;
    Handler two;
    events.SubscibeEvent(kEvent, &one, Platform::kManager);
    events.SubscibeEvent(kEvent, &two, Platform::kManager);
    EXPECT_EQ(events.PostEvent(kEvent, new Param, Platform::kManager), 0);
    EXPECT_TRUE(Eventually([&] { return one.received == 1 && two.received == 1; }));
    EXPECT_EQ(one.last, two.last);
    EXPECT_TRUE(Eventually([] { return g_params == 0; }));
    EXPECT_EQ(events.UnSubscibeEvent(kEvent, &one), 0);
    EXPECT_EQ(events.UnSubscibeEvent(kEvent, &one), -1);
    EXPECT_EQ(events.PostEvent(kEvent, new Param, 0), 0);
    EXPECT_TRUE(Eventually([&] { return two.received == 2 && g_params == 0; }));
    EXPECT_EQ(one.received, 1);
}

TEST(Event, FailuresOfHandlersAreLogged) {
    Platform platform;
    CapturedLog log;
    TEEventMgr& events = *TEEventMgr::Instance();
    Handler handler;
    handler.result = 7;
    events.SubscibeEvent(kEvent, &handler, Platform::kManager);
    events.PostEvent(kEvent, nullptr, 0);
    EXPECT_TRUE(log.WaitFor("handler of event 2415919104 returned 7"));
    handler.throws = true;
    events.PostEvent(kEvent, nullptr, 0);
    EXPECT_TRUE(log.WaitFor("handler of event 2415919104 threw: cannot take it"));
}

// Events that are still waiting when the process ends are dropped with their parameters.
TEST(Event, WaitingOnesEndWithTheProcess) {
    Handler handler;
    {
        Platform platform;
        KelpGnlTaskMgr idle(KelpAppMgr::Instance(), nullptr, 20, 1);  // never gets a thread
        ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(&idle, false));
        TEEventMgr& events = *TEEventMgr::Instance();
        events.SubscibeEvent(kEvent, &handler, 20);
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(events.PostEvent(kEvent, new Param, 0), 0);
        }
        EXPECT_EQ(g_params, 10);
    }
    EXPECT_EQ(g_params, 0);
    EXPECT_EQ(handler.received, 0);
}

// A full queue refuses, and the parameter stays the caller's.
TEST(Event, FullQueueRefuses) {
    KelpAppOptions options;
    options.requestQueueLimit = 3;
    Platform platform(options);
    KelpGnlTaskMgr idle(KelpAppMgr::Instance(), nullptr, 20, 1);
    ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(&idle, false));
    Handler handler;
    TEEventMgr& events = *TEEventMgr::Instance();
    events.SubscibeEvent(kEvent, &handler, 20);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(events.PostEvent(kEvent, new Param, 0), 0);
    }
    Param param;
    EXPECT_EQ(events.PostEvent(kEvent, &param, 0), -1);
}

}  // namespace
