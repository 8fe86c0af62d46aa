#include "frameutil/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/captured_log.h"

TEST(Trace, First) {
    CapturedLog log;
    FrameUtil::TraceInfo("%s", "x");
    EXPECT_THAT(log.Texts(), testing::ElementsAre("[Frame]x"));
}
