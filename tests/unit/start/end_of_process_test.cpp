// A frame task manager that cannot be had ends the process: it is traced, the application
// manager is destroyed, the exit status is 1.

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <thread>
#include <vector>

#include "frameutil/start.h"
#include "steps.h"
#include "support/environment.h"
#include "support/temp_folder.h"

namespace FrameUtil {
namespace {

class EndOfProcess : public testing::Test {
  protected:
    EndOfProcess() {
        // The children begin anew, without this process's threads.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    void Initialize() {
        KelpAppOptions options;
        options.procId = 3001;
        options.runDir = m_folder.Path();
        ASSERT_TRUE(KelpAppMgr::Initialize(options));
    }

    const TempFolder m_folder;
    const EnvironmentVariable m_size{"MGMTSIZE", "2000"};
};

// The child's standard error, from the platform's reason to the last step.
std::string Report(const std::string& reason) {
    return reason + ".*\\[Frame\\]Initialize frame task manager fail!.*<KelpAppMgr::Destroy>";
}

TEST_F(EndOfProcess, NothingIsInitialised) {
    EXPECT_EXIT(
        {
            steps::ShowOnStandardError();
            Init();
        },
        testing::ExitedWithCode(1),
        Report("a task manager was made while nothing was initialised"));
}

// No memory for stacks of that size, whatever the machine has.
void LetNoThreadStart() {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 46);
    EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
    pthread_attr_destroy(&attributes);
}

TEST_F(EndOfProcess, NoThreadStarts) {
    EXPECT_EXIT(
        {
            steps::ShowOnStandardError();
            Initialize();
            LetNoThreadStart();
            Init();
        },
        testing::ExitedWithCode(1), Report("task manager 200 could start only 0 of 10 threads"));
}

TEST_F(EndOfProcess, IdentifierIsTaken) {
    EXPECT_EXIT(
        {
            steps::ShowOnStandardError();
            Initialize();
            auto* const other = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, 200, 1);
            EXPECT_TRUE(other->Initialize());
            EXPECT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(other, true));
            Init();
        },
        testing::ExitedWithCode(1), Report("a task manager was not inserted"));
}

// Whoever comes first ends the process, once.
TEST_F(EndOfProcess, ManyThreads) {
    EXPECT_EXIT(
        {
            std::vector<std::thread> threads;
            for (int t = 0; t < 8; ++t) {
                threads.emplace_back([] { CFrameTaskMgr::Instance(); });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        },
        testing::ExitedWithCode(1), "Initialize frame task manager fail!");
}

}  // namespace
}  // namespace FrameUtil
