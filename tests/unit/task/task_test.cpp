// Tasks: their queue, serial numbers, timers, states and identifiers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <vector>

#include "kelp/task.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/raw_peer.h"
#include "support/test_clock.h"

namespace {

using ::testing::ElementsAre;

CmdMSG* Numbered(std::uint32_t command) {
    CmdMSG* msg = KelpMsgAlloc(0);
    msg->cmdCode = command;
    return msg;
}

// The commands of what lies in the task's queue, which is empty afterwards.
std::vector<std::uint32_t> Drain(KelpTask& task) {
    std::vector<std::uint32_t> commands;
    CmdMSG* msg = nullptr;
    while (task.KelpSynRecvEx(msg, 0) != 0) {
        commands.push_back(msg->cmdCode);
        KelpMsgFree(msg);
    }
    EXPECT_EQ(KelpMsgGetErrorCode(msg), static_cast<std::uint32_t>(KELP_MSG_TIMEOUT));
    return commands;
}

TEST(Task, EnqueueHeadPutsTheLastFirst) {
    Platform platform;
    platform.InTask([](KelpGnlTask& task) {
        task.EnqueueHead(Numbered(1));
        task.EnqueueHead(Numbered(2));
        task.EnqueueHead(nullptr);
        task.EnqueueHead(Numbered(3));
        EXPECT_THAT(Drain(task), ElementsAre(3, 2, 1));
    });
}

// An empty queue: the wait ends with the clock, and the slot says why.
TEST(Task, ReceiveEndsAtItsDeadline) {
    Platform platform(OnTestClock());
    platform.InTask([](KelpGnlTask& task) {
        for (const int seconds : {0, -1, -2147483647 - 1}) {
            CmdMSG* msg = nullptr;
            EXPECT_EQ(task.KelpSynRecvEx(msg, seconds), 0);
            EXPECT_EQ(KelpMsgGetErrorCode(msg), static_cast<std::uint32_t>(KELP_MSG_TIMEOUT));
            KelpMsgFree(msg);
        }
        std::atomic<bool> returned{false};
        std::thread mover([&] {
            while (!returned) {
                g_now += 1000000000;
                std::this_thread::yield();
            }
        });
        CmdMSG* msg = nullptr;
        EXPECT_EQ(task.KelpSynRecvEx(msg, 1000000), 0);
        returned = true;
        mover.join();
        EXPECT_EQ(KelpMsgGetErrorCode(msg), static_cast<std::uint32_t>(KELP_MSG_TIMEOUT));
        EXPECT_GE(g_now.load(), 1000000LL * 1000000000);
    });
}

TEST(Task, SerialNumbersAreBoundedAndUnique) {
    Platform platform;
    platform.InTask([](KelpGnlTask& task) {
        std::set<std::uint32_t> seen;
        for (std::size_t i = 0; i < KelpTask::KELP_TASK_MAX_SERIALS; ++i) {
            const std::uint32_t serial = task.AllocMsgSn();
            EXPECT_NE(serial, 0u);
            EXPECT_TRUE(seen.insert(serial).second);
        }
        EXPECT_EQ(task.AllocMsgSn(), 0u) << "the task holds as many as it may";
        task.RevokeMsgSn(12345678);
        EXPECT_EQ(task.AllocMsgSn(), 0u) << "that one it did not hold";
        task.RevokeMsgSn(*seen.begin());
        const std::uint32_t serial = task.AllocMsgSn();
        EXPECT_NE(serial, 0u);
        EXPECT_TRUE(seen.insert(serial).second) << "a number is not handed out again soon";
    });
}

// What cannot be sent comes back as an answer with the code, to be received like any other.
TEST(Task, FailedSendIsAnsweredThroughTheQueue) {
    Platform platform;
    platform.InTask([](KelpGnlTask& task) {
        CmdMSG* msg = Numbered(55);
        msg->dstProcId = 4000;  // not running
        KelpMsgSetSn(msg, task.AllocMsgSn());
        const std::uint32_t serial = KelpMsgGetSn(msg);
        EXPECT_EQ(task.KelpCmdSendAnsFrameCB(msg), 0);
        CmdMSG* answer = nullptr;
        ASSERT_NE(task.KelpSynRecvEx(answer, 0), 0);
        EXPECT_EQ(KelpMsgGetErrorCode(answer), static_cast<std::uint32_t>(KELP_MSG_NO_PEER));
        EXPECT_EQ(KelpMsgGetSn(answer), serial);
        EXPECT_EQ(answer->cmdCode, 55u);
        EXPECT_EQ(answer->srcProcId, 4000);
        KelpMsgFree(answer);
        CmdMSG* one_way = Numbered(55);
        one_way->dstProcId = 4000;
        EXPECT_EQ(task.KelpCmdSendAnsFrameCB(one_way), 0);
        EXPECT_EQ(task.KelpCmdSendAnsFrameCB(nullptr), 0);
        EXPECT_THAT(Drain(task), ElementsAre());
    });
}

// A static task that records what reaches it.
class Recorder final : public KelpTask {
  public:
    explicit Recorder(KelpTaskMgr* mgr) : KelpTask(mgr, "recorder") {}
    void KelpTaskMessage(CmdMSG* msg) override {
        EXPECT_EQ(KelpGetCurrentTask(), this);
        if (msg->cmdCode == 666) {
            KelpMsgFree(msg);
            throw std::runtime_error("not that one");
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_commands.push_back(msg->cmdCode);
        }
        CmdMSG* answer = KelpMsgAllocAnswer(msg, 0);
        KelpMsgFree(msg);
        KelpCmdSendAnsFrameCB(answer);
    }
    void KelpTaskTimeInterval(long timer) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_timers.push_back(timer);
    }
    std::vector<std::uint32_t> Commands() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_commands;
    }
    std::vector<long> Timers() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_timers;
    }

  private:
    std::mutex m_mutex;
    std::vector<std::uint32_t> m_commands;
    std::vector<long> m_timers;
};

// A request to a task identifier goes to that task, one message at a time, in order.
TEST(Task, StaticTaskReceivesItsMessages) {
    Platform platform(KelpAppOptions(), 4);
    auto* recorder = new Recorder(&platform.Manager());
    ASSERT_TRUE(platform.Manager().InsertStaticTask(1, recorder));
    EXPECT_EQ(recorder->GetTaskId(), 1);
    EXPECT_EQ(recorder->GetTaskMgr(), &platform.Manager());
    EXPECT_STREQ(recorder->GetTaskName(), "recorder");
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    std::vector<std::uint32_t> sent;
    for (std::uint32_t command = 1; command <= 200; ++command) {
        std::string request = RawRequest(Platform::kProc, command, command, "");
        RawPut(request, kDstMgr, Platform::kManager);
        RawPut(request, kDstTask, 1);
        ASSERT_TRUE(peer.SendFrame(request));
        sent.push_back(command);
    }
    for (const std::uint32_t command : sent) {
        EXPECT_EQ(RawGet(peer.ReceiveFrame(), kSerial), command);
    }
    EXPECT_EQ(recorder->Commands(), sent);
}

TEST(Task, UnknownTaskIsSaidAndAThrowingOneLivesOn) {
    Platform platform;
    ASSERT_TRUE(platform.Manager().InsertStaticTask(1, new Recorder(&platform.Manager())));
    CapturedLog log;
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    const struct {
        const char* name;
        unsigned mgr;
        unsigned task;
        unsigned command;
        std::uint32_t code;
    } cases[] = {
        {"no such task", Platform::kManager, 2, 5, KELP_MSG_NO_TASK},
        {"no such manager", 77, 1, 5, KELP_MSG_NO_TASK},
        {"manager 0", 0, 1, 5, KELP_MSG_NO_TASK},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        std::string request = RawRequest(Platform::kProc, test.command, 9, "");
        RawPut(request, kDstMgr, test.mgr);
        RawPut(request, kDstTask, test.task);
        ASSERT_TRUE(peer.SendFrame(request));
        const std::string answer = peer.ReceiveFrame();
        EXPECT_EQ(RawGet(answer, kError), test.code);
        EXPECT_EQ(RawGet(answer, kSerial), 9u);
    }
    std::string request = RawRequest(Platform::kProc, 666, 10, "");
    RawPut(request, kDstMgr, Platform::kManager);
    RawPut(request, kDstTask, 1);
    ASSERT_TRUE(peer.SendFrame(request));
    EXPECT_TRUE(log.WaitFor("task recorder (not that one) threw"));
    RawPut(request, kCommand, 5);
    ASSERT_TRUE(peer.SendFrame(request));
    EXPECT_EQ(RawGet(peer.ReceiveFrame(), kCommand), 5u) << "the task lives on";
}

TEST(Task, NumbersOfStaticTasksAreChecked) {
    Platform platform;
    KelpGnlTaskMgr other(KelpAppMgr::Instance(), nullptr, 10, 1);
    Recorder local(&platform.Manager());
    Recorder of_other(&other);
    EXPECT_FALSE(platform.Manager().InsertStaticTask(0, &local));
    EXPECT_FALSE(platform.Manager().InsertStaticTask(4096, &local));
    EXPECT_FALSE(platform.Manager().InsertStaticTask(1, nullptr));
    EXPECT_FALSE(platform.Manager().InsertStaticTask(1, &of_other));
    auto* first = new Recorder(&platform.Manager());
    EXPECT_TRUE(platform.Manager().InsertStaticTask(4095, first));
    EXPECT_FALSE(platform.Manager().InsertStaticTask(4095, &local));
    EXPECT_FALSE(platform.Manager().InsertStaticTask(5, first)) << "it has a number";
}

// ---- timers

TEST(Task, TimersFireOnTheTask) {
    Platform platform(OnTestClock());
    auto* recorder = new Recorder(&platform.Manager());
    EXPECT_EQ(recorder->SetTaskTimeInterval(0), -1);
    EXPECT_EQ(recorder->SetTaskTimeInterval(-5), -1);
    const long first = recorder->SetTaskTimeInterval(30);  // armed before it is inserted
    ASSERT_GT(first, 0);
    recorder->SetTaskState(KELP_TASK_WAITING);
    ASSERT_TRUE(platform.Manager().InsertStaticTask(1, recorder));
    g_now += 29LL * 1000000000;
    EXPECT_THAT(recorder->Timers(), ElementsAre());
    g_now += 1LL * 1000000000;
    EXPECT_TRUE(Eventually([&] { return recorder->Timers() == std::vector<long>{first}; }));
    EXPECT_TRUE(recorder->DeleteTaskTimeInterval(first));
    EXPECT_FALSE(recorder->DeleteTaskTimeInterval(first));
    const long second = recorder->SetTaskTimeInterval(5);
    EXPECT_NE(second, first);
    g_now += 5LL * 1000000000;
    EXPECT_TRUE(Eventually([&] { return recorder->Timers() == std::vector<long>{first, second}; }));
    EXPECT_EQ(recorder->GetTaskState(), KELP_TASK_WAITING);
}

// ---- tasks that outlive their handler

std::atomic<int> g_alive{0};
std::atomic<unsigned> g_kept_id{0};

class Kept final : public KelpGnlTask {
  public:
    explicit Kept(KelpTaskMgr* mgr) : KelpGnlTask(mgr, "kept") { ++g_alive; }
    ~Kept() override { --g_alive; }
    void KelpTaskMessage(CmdMSG* msg) override {
        const bool last = msg->cmdCode == 2;
        CmdMSG* answer = KelpMsgAllocAnswer(msg, 0);
        KelpMsgFree(msg);
        if (last) {
            SetTaskState(KELP_TASK_ENDED);
        }
        KelpCmdSendAnsFrameCB(answer);
    }
};

constexpr unsigned kKeep = 0x7E570100;
constexpr unsigned kDrop = 0x7E570101;

void RegisterKept() {
    static const bool once =
        KelpTaskCreator::Instance()->RegisterTask(
            {Platform::kManager, kKeep,
             [](KelpTaskMgr* mgr) -> KelpGnlTask* { return new Kept(mgr); }, nullptr, nullptr,
             nullptr,
             [](AsnType*, AsnType*, KelpGnlTask* task) {
                 g_kept_id = task->GetTaskId();
                 task->SetTaskState(KELP_TASK_WAITING);
             }}) &&
        KelpTaskCreator::Instance()->RegisterTask(
            {Platform::kManager, kDrop,
             [](KelpTaskMgr* mgr) -> KelpGnlTask* { return new Kept(mgr); }, nullptr, nullptr,
             nullptr,
             [](AsnType*, AsnType*, KelpGnlTask* task) {
                 EXPECT_GT(task->SetTaskTimeInterval(1000), 0);
                 EXPECT_NE(task->AllocMsgSn(), 0u);
                 task->EnqueueHead(Numbered(1));  // dispatched before the task ends
             }});
    ASSERT_TRUE(once);
}

TEST(Task, EndsWithItsHandler) {
    RegisterKept();
    Platform platform;
    EXPECT_EQ(Platform::Call(kDrop), 0u);
    EXPECT_TRUE(Eventually([] { return g_alive == 0; }));
}

TEST(Task, WaitingOneStaysUntilItEnds) {
    RegisterKept();
    Platform platform;
    EXPECT_EQ(Platform::Call(kKeep), 0u);
    EXPECT_EQ(g_alive, 1);
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    for (const std::uint32_t command : {1u, 1u, 2u}) {
        EXPECT_EQ(g_alive, 1);
        std::string request = RawRequest(Platform::kProc, command, 5, "");
        RawPut(request, kDstMgr, Platform::kManager);
        RawPut(request, kDstTask, g_kept_id);
        ASSERT_TRUE(peer.SendFrame(request));
        EXPECT_EQ(RawGet(peer.ReceiveFrame(), kError), 0u);
    }
    EXPECT_TRUE(Eventually([] { return g_alive == 0; }));
}

TEST(Task, WaitingOneIsDeletedAtTheEnd) {
    RegisterKept();
    {
        Platform platform;
        EXPECT_EQ(Platform::Call(kKeep), 0u);
        EXPECT_EQ(g_alive, 1);
    }
    EXPECT_EQ(g_alive, 0);
}

// ---- a task of no manager

TEST(Task, OfNoManagerRefusesEverything) {
    KelpGnlTask task(nullptr, "alone");
    CmdMSG* msg = nullptr;
    EXPECT_EQ(task.GetTaskId(), 0);
    EXPECT_EQ(task.GetTaskMgr(), nullptr);
    EXPECT_STREQ(task.GetTaskName(), "");
    EXPECT_EQ(task.AllocMsgSn(), 0u);
    EXPECT_EQ(task.SetTaskTimeInterval(5), -1);
    EXPECT_FALSE(task.DeleteTaskTimeInterval(1));
    EXPECT_EQ(task.KelpCmdSendAnsFrameCB(Numbered(1)), 0);
    EXPECT_EQ(task.KelpSynRecvEx(msg, 0), 0);
    EXPECT_EQ(KelpMsgGetErrorCode(msg), static_cast<std::uint32_t>(KELP_MSG_STOPPED));
    task.EnqueueHead(Numbered(1));
    task.KelpTaskMessage(Numbered(1));
    task.SetTaskState(KELP_TASK_WAITING);
    EXPECT_EQ(task.GetTaskState(), KELP_TASK_NEW);
    EXPECT_EQ(KelpGetCurrentTask(), nullptr);
}

}  // namespace
