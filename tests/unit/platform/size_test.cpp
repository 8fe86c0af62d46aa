// The size of the managed network and the worker threads it gives a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "frameutil/platform.h"
#include "kelp/message.h"
#include "support/captured_log.h"

namespace FrameUtil {
namespace {

using ::testing::ElementsAre;

class Size : public ::testing::Test {
  protected:
    void TearDown() override { ::unsetenv("MGMTSIZE"); }

    static void Set(const char* text) {
        if (text == nullptr) {
            ::unsetenv("MGMTSIZE");
        } else {
            ::setenv("MGMTSIZE", text, 1);
        }
    }
};

TEST_F(Size, ComesFromTheEnvironment) {
    struct Case {
        const char* text;
        int size;
        const char* remark;  // traced before the size, if any
    };
    constexpr const char* kUnset = "[Frame]get MGMTSIZE faild, return defualt value";
    constexpr const char* kSmall = "[Frame]MGMTSIZE is too small, return min value";
    for (const Case& c :
         {Case{nullptr, 80000, kUnset}, Case{"", 2000, kSmall}, Case{"1500", 2000, kSmall},
          Case{"1999", 2000, kSmall}, Case{"2000", 2000, nullptr}, Case{"2001", 2001, nullptr},
          Case{"-5", 2000, kSmall}, Case{"many", 2000, kSmall}, Case{" 5000 NEs", 5000, nullptr},
          Case{"010000", 10000, nullptr}, Case{"0x9999", 2000, kSmall},
          Case{"2147483647", 2147483647, nullptr}, Case{"2147483648", 2000, kSmall},
          Case{"3000000000", 2000, kSmall}, Case{"4294970000", 2704, nullptr}}) {
        SCOPED_TRACE(c.text != nullptr ? c.text : "(unset)");
        Set(c.text);
        const CapturedLog log;
        EXPECT_EQ(GetMGMTSize(), c.size);
        const std::string result = "[Frame]get MGMTSIZE: " + std::to_string(c.size);
        if (c.remark != nullptr) {
            EXPECT_THAT(log.Texts(), ElementsAre(c.remark, result));
        } else {
            EXPECT_THAT(log.Texts(), ElementsAre(result));
        }
    }
}

TEST_F(Size, DecidesTheThreads) {
    struct Case {
        const char* size;
        int large;  // processes 3001 and 3006
        int other;
    };
    for (const Case& c :
         {Case{nullptr, 60, 20}, Case{"1500", 10, 10}, Case{"79999", 10, 10}, Case{"80000", 60, 20},
          Case{"149999", 60, 20}, Case{"150000", 70, 30}, Case{"299999", 70, 30},
          Case{"300000", 100, 50}, Case{"2147483647", 100, 50}}) {
        SCOPED_TRACE(c.size != nullptr ? c.size : "(unset)");
        Set(c.size);
        EXPECT_EQ(GetFrameTaskMgrMaxThreadNum(3001), c.large);
        EXPECT_EQ(GetFrameTaskMgrMaxThreadNum(3006), c.large);
        for (const unsigned short process : {1, 3000, 3002, 3005, 3007, 65535}) {
            EXPECT_EQ(GetFrameTaskMgrMaxThreadNum(process), c.other) << process;
        }
    }
}

TEST_F(Size, ThreadsAreTraced) {
    Set("300000");
    const CapturedLog log;
    EXPECT_EQ(GetFrameTaskMgrMaxThreadNum(3006), 100);
    EXPECT_THAT(log.Texts(),
                ElementsAre("[Frame]get MGMTSIZE: 300000", "[Frame]get max thread num: 100"));
}

// Process 0 is the calling one, whose identifier is its type in the lower 16 bits.
TEST_F(Size, ZeroIsTheCallingProcess) {
    Set("300000");
    const auto self = static_cast<unsigned short>(KelpGetProcId());
    EXPECT_EQ(GetFrameTaskMgrMaxThreadNum(0), self == 3001 || self == 3006 ? 100 : 50);
}

}  // namespace
}  // namespace FrameUtil
