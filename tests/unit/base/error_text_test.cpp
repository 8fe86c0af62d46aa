#include "base/error_text.h"

#include <gtest/gtest.h>

#include <string>

#include "support/captured_log.h"

namespace {

TEST(ErrorText, IsOneRecordAtItsPlace) {
    const CapturedLog log;
    FrameUtil::LogError(LocationInfo("restgroup", "Load", 12), 0xb00001a, "%s: %d", "x", 7);
    ASSERT_EQ(log.Entries().size(), 1U);
    const auto entry = log.Entries()[0];
    EXPECT_EQ(entry.text, "x: 7");
    EXPECT_EQ(entry.code, 0xb00001aU);
    EXPECT_EQ(entry.level, kelp::log::Level::kError);
    EXPECT_EQ(entry.unit + entry.function + std::to_string(entry.line), "restgroupLoad12");
}

TEST(ErrorText, LongTextIsCut) {
    for (const std::size_t size : {4094, 4095, 4096, 100000}) {
        const std::string text(size, 'x');
        const CapturedLog log;
        FrameUtil::LogError(LocationInfo("u", "f", 1), 1, "%s", text.c_str());
        ASSERT_EQ(log.Texts().size(), 1U) << size;
        EXPECT_EQ(log.Texts()[0], text.substr(0, 4095)) << size;
    }
}

}  // namespace
