// The steps of start and end, and what is there between them and afterwards.

#include "frameutil/start.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "frameutil/error_manage.h"
#include "frameutil/msg.h"
#include "kelp/log.h"
#include "steps.h"
#include "support/captured_log.h"
#include "support/environment.h"
#include "support/platform.h"
#include "support/temp_folder.h"

namespace FrameUtil {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A process of type 3001 on a platform of its own, not started yet.
class StartTest : public testing::Test {
  protected:
    StartTest() { Initialize(); }
    ~StartTest() override {
        DestroyKelp();
        steps::rest_group_result = 0;
    }

    void Initialize() {
        KelpAppOptions options;
        options.procId = 3001;
        options.runDir = m_folder.Path();
        ASSERT_TRUE(KelpAppMgr::Initialize(options));
        steps::Forget();
    }

    const TempFolder m_folder;
    const EnvironmentVariable m_size{"MGMTSIZE", "2000"};
};

long ThreadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

TEST_F(StartTest, StepsOfTheStart) {
    Init();
    EXPECT_THAT(steps::Taken(), ElementsAre("CFrameTaskMgr::Instance", "LoadMRBRestGroup",
                                            "TEEventMgr::PostEvent 65548 null 0"));
}

// Groups that cannot be loaded now are loaded when they are asked for.
TEST_F(StartTest, StartGoesOnWithoutGroups) {
    steps::rest_group_result = 0x42000064;
    Init();
    EXPECT_THAT(steps::Taken(), ElementsAre("CFrameTaskMgr::Instance", "LoadMRBRestGroup",
                                            "TEEventMgr::PostEvent 65548 null 0"));
}

TEST_F(StartTest, StartStopsWithoutAnEventManager) {
    ASSERT_NE(CFrameTaskMgr::Instance(), nullptr);
    KelpAppMgr::Destroy();
    steps::Forget();
    Init();
    EXPECT_THAT(steps::Taken(), ElementsAre("CFrameTaskMgr::Instance"));
}

TEST_F(StartTest, StepsOfTheEnd) {
    Init();
    steps::Forget();
    DestroyKelp();
    EXPECT_THAT(steps::Taken(),
                ElementsAre("KelpDebugMgr::Destroy", "KELPInstance::cleanup",
                            "TraceClient::Destroy", "LogProcess::Destroy", "KelpAppMgr::Destroy",
                            "CFrameTaskMgr::Destroy", "ErrorManage::Destroy"));
}

class Subscriber : public TEEventHandler {
  public:
    int ReceiveEvent(unsigned int event, TEEventParam* param) override {
        m_seen = event == FRAME_START_EVENT && param == nullptr ? 1 : -1;
        return 0;
    }
    int Seen() const { return m_seen; }

  private:
    std::atomic<int> m_seen{0};
};

TEST_F(StartTest, SubscribersSeeTheStart) {
    Subscriber subscriber;
    ASSERT_EQ(TEEventMgr::Instance()->SubscibeEvent(0x1000C, &subscriber, CFrameTaskMgr::kId), 0);
    Init();
    EXPECT_TRUE(Eventually([&] { return subscriber.Seen() != 0; }));
    EXPECT_EQ(subscriber.Seen(), 1);
    DestroyKelp();
}

void Nothing(AsnType*, AsnType*, KelpGnlTask*) {}

// The task manager is there under its number, and runs what is declared for it.
TEST_F(StartTest, SharedCommandsAreServed) {
    static const TModel_RegisterCmd command(0x7E570400, nullptr, nullptr, 4, nullptr, Nothing,
                                            true);
    EXPECT_EQ(Platform::Call(0x7E570400), static_cast<unsigned>(KELP_MSG_NO_TASK));
    Init();
    EXPECT_EQ(CFrameTaskMgr::Instance()->GetTaskMgr()->GetTaskMgrId(), 200);
    EXPECT_EQ(Platform::Call(0x7E570400), 0u);
}

// The environment says how many workers there are, process by process.
TEST_F(StartTest, WorkersForTheSizeOfTheNetwork) {
    const struct {
        std::uint16_t proc_id;
        const char* size;
        const char* workers;
    } cases[] = {
        {3001, nullptr, "60"},   {3001, "1500", "10"}, {3001, "150000", "70"},
        {3006, "300000", "100"}, {7, nullptr, "20"},   {7, "1500", "10"},
        {7, "149999", "20"},     {7, "150000", "30"},  {7, "300000", "50"},
    };
    for (const auto& c : cases) {
        DestroyKelp();
        const EnvironmentVariable size("MGMTSIZE", c.size);
        KelpAppOptions options;
        options.procId = c.proc_id;
        options.runDir = m_folder.Path();
        ASSERT_TRUE(KelpAppMgr::Initialize(options));
        const CapturedLog log;
        Init();
        EXPECT_TRUE(log.Contains(std::string("[Frame]get max thread num: ") + c.workers));
        EXPECT_THAT(KelpDebugMgr::Report(),
                    HasSubstr(std::string("task manager 200: ") + c.workers + " workers"));
    }
}

TEST_F(StartTest, NothingIsLeft) {
    DestroyKelp();
    const long before = ThreadCount();
    for (int time = 1; time <= 3; ++time) {
        Initialize();
        LogProcess::Init(kelp::log::Options());
        LogProcess::Info("the log's thread runs", LocationInfo::getLocationUnavailable());
        KelpDebugMgr::AddProbe("probe", [] { return std::string("text"); });
        ASSERT_EQ(KELPcommon::TraceClient::Start(m_folder.Path("trace")), 0);
        Init();
        EXPECT_GE(ThreadCount(), before + 11) << "workers, the bus, the timers, the log";
        DestroyKelp();
        // The system counts a thread for a moment longer than until it was joined.
        EXPECT_TRUE(Eventually([&] { return ThreadCount() == before; }));
        EXPECT_FALSE(KelpAppMgr::IsInitialized());
        EXPECT_THAT(KelpDebugMgr::Report(), Not(HasSubstr("probe")));
        EXPECT_FALSE(std::filesystem::exists(m_folder.Path("3001.1.sock")));
        DestroyKelp();
    }
}

// The error texts that were kept go as well: after the next start a text is the newest.
TEST_F(StartTest, TextsAreForgotten) {
    const EnvironmentVariable language("KELP_LANGUAGE", nullptr);
    const std::string file = m_folder.Path("errors.res");
    const auto desc_after = [&](const char* desc) {
        std::ofstream(file) << "s1.desc=" << desc << "\ns1.reason=\ns1.detail=\ns1.advice=\n";
        EXPECT_TRUE(ErrorManage::Instance()->InitRes(file));
        Json::Value error;
        EXPECT_EQ(ErrorManage::Instance()->AppendError("s1", error), 0u);
        return error["descArgs"][0].asString();
    };
    EXPECT_EQ(desc_after("old"), "old");
    EXPECT_EQ(desc_after("new"), "old");
    DestroyKelp();
    Initialize();
    EXPECT_EQ(desc_after("new"), "new");
}

TEST_F(StartTest, ManyThreadsMakeOneTaskManager) {
    std::atomic<KelpGnlTaskMgr*> seen{nullptr};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            KelpGnlTaskMgr* const mine = CFrameTaskMgr::Instance()->GetTaskMgr();
            KelpGnlTaskMgr* expected = nullptr;
            wrong += !seen.compare_exchange_strong(expected, mine) && expected != mine;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_NE(seen, nullptr);
}

}  // namespace
}  // namespace FrameUtil
