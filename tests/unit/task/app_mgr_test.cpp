// Start, stop and what may be done when.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <future>

#include "kelp/task.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/raw_peer.h"

namespace {

using ::testing::HasSubstr;

std::uint64_t Threads() {
    return static_cast<std::uint64_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                      std::filesystem::directory_iterator()));
}

TEST(AppMgr, IsUsableOnlyWhileInitialised) {
    EXPECT_FALSE(KelpAppMgr::IsInitialized());
    EXPECT_NE(KelpAppMgr::Instance(), nullptr);
    EXPECT_EQ(TEEventMgr::Instance(), nullptr);
    EXPECT_EQ(KelpAppMgr::Instance()->SendMSG(KelpMsgAlloc(0)), 0);
    CmdMSG* reply = nullptr;
    EXPECT_EQ(KelpAppMgr::Instance()->KelpSendSynMsgToMDP(KelpMsgAlloc(0), reply, 5), 0);
    EXPECT_EQ(KelpMsgGetErrorCode(reply), static_cast<std::uint32_t>(KELP_MSG_STOPPED));
    EXPECT_EQ(KelpAppMgr::Instance()->KelpSendSynMsgToMDP(nullptr, reply, 5), 0);
    EXPECT_EQ(KelpMsgGetErrorCode(reply), static_cast<std::uint32_t>(KELP_MSG_SEND_FAILED));
    EXPECT_EQ(KelpDebugMgr::Report(), "not initialised\n");
    KelpGnlTaskMgr early(KelpAppMgr::Instance(), nullptr, 4, 1);
    EXPECT_FALSE(early.Initialize());
    EXPECT_FALSE(KelpAppMgr::Instance()->TMInsertTaskMgr(&early, false));
    KelpAppMgr::Destroy();  // nothing to do
}

TEST(AppMgr, TakesTheIdentityAndGivesItBack) {
    const TempFolder folder;
    KelpAppOptions options;
    options.procId = 56;
    options.procHandle = 3;
    options.deskId = 2;
    options.runDir = folder.Path();
    std::uint64_t threads = 0;  // once the logger and the test's tools have theirs
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(KelpAppMgr::Initialize(options));
        EXPECT_TRUE(KelpAppMgr::IsInitialized());
        EXPECT_EQ(KelpGetProcId(), 56u);
        EXPECT_EQ(KelpGetProcHandle(), 3);
        EXPECT_EQ(KelpGetDeskId(), 2);
        EXPECT_TRUE(std::filesystem::exists(folder.Path("56.3.sock")));
        CapturedLog log;
        EXPECT_FALSE(KelpAppMgr::Initialize(options));
        EXPECT_TRUE(log.Contains("the process is initialised already"));
        KelpAppMgr::Destroy();
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
        threads = round == 0 ? Threads() : threads;
        EXPECT_TRUE(Eventually([&] { return Threads() == threads; }));
    }
}

// A client has no socket of its own.
TEST(AppMgr, ClientDoesNotListen) {
    const TempFolder folder;
    KelpAppOptions options;
    options.runDir = folder.Path();
    ASSERT_TRUE(KelpAppMgr::Initialize(options));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    KelpAppMgr::Destroy();
}

TEST(AppMgr, SaysWhyItCannotStart) {
    const TempFolder folder;
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0777), 0);
    KelpAppOptions options;
    options.procId = 56;
    options.runDir = folder.Path();
    CapturedLog log;
    EXPECT_FALSE(KelpAppMgr::Initialize(options));
    EXPECT_TRUE(log.Contains("not initialised: the run directory " + folder.Path()));
    EXPECT_FALSE(KelpAppMgr::IsInitialized());
}

TEST(AppMgr, ManagersAreChecked) {
    Platform platform;
    KelpAppMgr& app = *KelpAppMgr::Instance();
    const struct {
        const char* name;
        unsigned char id;
        int threads;
        bool starts;
        bool inserted;
    } cases[] = {
        {"good", 20, 1, true, true},          {"no threads", 21, 0, false, true},
        {"negative", 22, -1, false, true},    {"too many", 23, 1001, false, true},
        {"identifier 0", 0, 1, false, false}, {"taken", Platform::kManager, 1, true, false},
    };
    for (const auto& test : cases) {
        KelpGnlTaskMgr mgr(&app, nullptr, test.id, test.threads);
        EXPECT_EQ(mgr.Initialize(), test.starts) << test.name;
        EXPECT_FALSE(mgr.Initialize()) << "once only";
        EXPECT_EQ(mgr.GetTaskMgrId(), test.id);
        EXPECT_EQ(app.TMInsertTaskMgr(&mgr, false), test.inserted) << test.name;
    }
    EXPECT_FALSE(app.TMInsertTaskMgr(nullptr, false));
    KelpGnlTaskMgr again(&app, nullptr, 20, 1);
    EXPECT_TRUE(app.TMInsertTaskMgr(&again, false)) << "a deleted manager's number is free";
}

// One that was inserted but never initialised stays its maker's, whatever Destroy() does.
TEST(AppMgr, UninitialisedManagerIsNotDeleted) {
    auto platform = std::make_unique<Platform>();
    auto mgr = std::make_unique<KelpGnlTaskMgr>(KelpAppMgr::Instance(), nullptr, 20, 1);
    ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(mgr.get(), true));
    platform.reset();
    EXPECT_EQ(mgr->GetTaskMgrId(), 20);
    EXPECT_FALSE(mgr->Initialize()) << "its time is over";
}

// Nor is one whose initialisation failed, even if it was handed over before.
TEST(AppMgr, FailedManagerIsNotDeleted) {
    auto platform = std::make_unique<Platform>();
    auto mgr = std::make_unique<KelpGnlTaskMgr>(KelpAppMgr::Instance(), nullptr, 20, 0);
    ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(mgr.get(), true));
    EXPECT_FALSE(mgr->Initialize());
    platform.reset();
    EXPECT_EQ(mgr->GetTaskMgrId(), 20);
}

// An owned manager that its maker deletes all the same is not deleted twice.
TEST(AppMgr, DeletedManagerIsForgotten) {
    Platform platform;
    auto mgr = std::make_unique<KelpGnlTaskMgr>(KelpAppMgr::Instance(), nullptr, 20, 1);
    ASSERT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(mgr.get(), true));
    ASSERT_TRUE(mgr->Initialize());
}

TEST(AppMgr, WaitsForAStopSignal) {
    for (const int number : {SIGTERM, SIGINT}) {
        struct sigaction before {};
        ::sigaction(number, nullptr, &before);
        std::thread sender([number] {
            EXPECT_TRUE(Eventually([number] {
                struct sigaction now {};
                ::sigaction(number, nullptr, &now);
                return now.sa_handler != SIG_DFL;
            }));
            ::kill(::getpid(), number);
        });
        EXPECT_EQ(KelpAppMgr::WaitForStopSignal(), number);
        sender.join();
        struct sigaction after {};
        ::sigaction(number, nullptr, &after);
        EXPECT_EQ(after.sa_handler, before.sa_handler);
    }
}

// Whoever is told that the process serves may stop it at once.
TEST(AppMgr, TakesASignalThatComesWithReady) {
    EXPECT_EQ(KelpAppMgr::WaitForStopSignal([] { ::kill(::getpid(), SIGTERM); }), SIGTERM);
    EXPECT_EQ(KelpAppMgr::WaitForStopSignal([] { ::kill(::getpid(), SIGINT); }), SIGINT);
}

TEST(AppMgr, OptionsComeFromTheEnvironment) {
    ::setenv("KELP_PROC_ID", "3001", 1);
    ::setenv("KELP_DESK_ID", "x", 1);
    const KelpAppOptions options = KelpAppOptions::FromEnvironment();
    ::unsetenv("KELP_PROC_ID");
    ::unsetenv("KELP_DESK_ID");
    EXPECT_EQ(options.procId, 3001);
    EXPECT_EQ(options.procHandle, 1);
    EXPECT_EQ(options.deskId, 0);
}

TEST(DebugMgr, ReportsWhatIsThere) {
    Platform platform;
    KelpDebugMgr::AddProbe("answer", [] { return std::string("42"); });
    EXPECT_THAT(KelpDebugMgr::Report(), HasSubstr("task manager 9: 2 workers, "));
    EXPECT_THAT(KelpDebugMgr::Report(), HasSubstr("answer: 42\n"));
    KelpDebugMgr::Destroy();
    EXPECT_THAT(KelpDebugMgr::Report(), ::testing::Not(HasSubstr("answer")));
}

}  // namespace
