// The end, with everything still going on.

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "kelp/task.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/raw_peer.h"

namespace {

constexpr unsigned kHold = 0x7E570200;
constexpr unsigned kReceive = 0x7E570201;

// A handler that stays until it is let go.
std::atomic<bool> g_let_go{false};
std::atomic<int> g_held{0};

void Hold(AsnType*, AsnType*, KelpGnlTask*) {
    ++g_held;
    EXPECT_TRUE(Eventually([] { return g_let_go.load(); }));
}

std::atomic<std::uint32_t> g_received{0};

void Receive(AsnType*, AsnType*, KelpGnlTask* task) {
    ++g_held;
    CmdMSG* msg = nullptr;
    EXPECT_EQ(task->KelpSynRecvEx(msg, 1000), 0);
    g_received = KelpMsgGetErrorCode(msg);
    EXPECT_EQ(task->AllocMsgSn(), 0u);
    EXPECT_EQ(task->SetTaskTimeInterval(5), -1);
}

class ShutdownTest : public ::testing::Test {
  protected:
    ShutdownTest() {
        static const bool once =
            KelpTaskCreator::Instance()->RegisterTask(
                {Platform::kManager, kHold, nullptr, nullptr, nullptr, nullptr, Hold}) &&
            KelpTaskCreator::Instance()->RegisterTask(
                {Platform::kManager, kReceive, nullptr, nullptr, nullptr, nullptr, Receive});
        EXPECT_TRUE(once);
        g_let_go = false;
        g_held = 0;
        g_received = 0;
    }
};

// A handler that waits for a message, threads that wait for answers, requests that wait
// for a worker: all hear that the process stops.
TEST_F(ShutdownTest, EverybodyWhoWaitsIsTold) {
    auto platform = std::make_unique<Platform>(KelpAppOptions(), 2);
    RawPeer peer = RawPeer::Connect(platform->RunDir(), Platform::kProc, 1);
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kReceive, 1, "")));
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kReceive, 2, "")));
    ASSERT_TRUE(Eventually([] { return g_held == 2; }));
    for (std::uint32_t serial = 3; serial <= 10; ++serial) {
        ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kReceive, serial, "")));
    }
    ASSERT_TRUE(Eventually(
        [] { return KelpDebugMgr::Report().find("8 requests waiting") != std::string::npos; }));
    std::vector<std::uint32_t> codes(4);
    std::vector<std::thread> outside;
    for (std::uint32_t& code : codes) {
        outside.emplace_back([&code] { code = Platform::Call(kReceive, "", nullptr, 1000); });
    }
    ASSERT_TRUE(Eventually(
        [] { return KelpDebugMgr::Report().find("12 requests waiting") != std::string::npos; }));
    platform.reset();
    for (std::thread& thread : outside) {
        thread.join();
    }
    for (const std::uint32_t code : codes) {
        EXPECT_EQ(code, static_cast<std::uint32_t>(KELP_MSG_STOPPED));
    }
    EXPECT_EQ(g_received, static_cast<std::uint32_t>(KELP_MSG_STOPPED));
    int stopped = 0;
    int answered = 0;
    for (int i = 0; i < 10; ++i) {
        const std::uint64_t error = RawGet(peer.ReceiveFrame(), kError);
        stopped += error == KELP_MSG_STOPPED ? 1 : 0;
        answered += error == 0 ? 1 : 0;
    }
    EXPECT_EQ(stopped, 8);
    EXPECT_EQ(answered, 2) << "running handlers finish, and their answers leave";
    EXPECT_TRUE(peer.SeesTheEnd());
}

// A handler that does not come back in time does not keep the process.
TEST_F(ShutdownTest, StuckHandlerIsLeftBehind) {
    CapturedLog log;
    KelpAppOptions options;
    options.shutdownMs = 50;
    auto platform = std::make_unique<Platform>(options, 1);
    RawPeer peer = RawPeer::Connect(platform->RunDir(), Platform::kProc, 1);
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kHold, 1, "")));
    ASSERT_TRUE(Eventually([] { return g_held == 1; }));
    platform.reset();
    EXPECT_TRUE(log.Contains("1 handlers of task manager 9 did not return in time"));
    EXPECT_FALSE(KelpAppMgr::IsInitialized());
    EXPECT_TRUE(peer.SeesTheEnd());
    g_let_go = true;  // its thread ends by itself
    Platform again;
    EXPECT_EQ(Platform::Call(kHold), 0u) << "a new start is not disturbed";
}

// A manager may go while the process stays.
TEST_F(ShutdownTest, OneManagerAlone) {
    Platform platform;
    auto mgr = std::make_unique<KelpGnlTaskMgr>(KelpAppMgr::Instance(), nullptr, 20, 2);
    ASSERT_TRUE(mgr->Initialize());
    ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(mgr.get(), false));
    mgr.reset();
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    std::string request = RawRequest(Platform::kProc, 5, 1, "");
    RawPut(request, kDstMgr, 20);
    RawPut(request, kDstTask, 1);
    ASSERT_TRUE(peer.SendFrame(request));
    EXPECT_EQ(RawGet(peer.ReceiveFrame(), kError), static_cast<std::uint64_t>(KELP_MSG_NO_TASK));
}

// Threads that call while the process stops get an answer or a code, never nothing.
TEST_F(ShutdownTest, CallsRaceWithTheEnd) {
    g_let_go = true;
    for (int round = 0; round < 20; ++round) {
        auto platform = std::make_unique<Platform>(KelpAppOptions(), 2);
        std::atomic<bool> over{false};
        std::atomic<int> calls{0};
        std::vector<std::thread> callers;
        for (int i = 0; i < 3; ++i) {
            callers.emplace_back([&] {
                while (!over) {
                    const std::uint32_t code = Platform::Call(kHold);
                    EXPECT_TRUE(code == 0 || code == KELP_MSG_STOPPED) << std::hex << code;
                    ++calls;
                }
            });
        }
        EXPECT_TRUE(Eventually([&] { return calls > 20; }));
        platform.reset();
        over = true;
        for (std::thread& caller : callers) {
            caller.join();
        }
    }
}

}  // namespace
