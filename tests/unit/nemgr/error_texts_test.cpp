#include "nemgr/error_texts.h"

#include <gtest/gtest.h>

#include "frameutil/error_manage.h"
#include "support/temp_folder.h"

namespace {

using nemgr::ErrorTextsOf;
using nemgr::Result;

// Without a file a result has its own text; with it, the four of the file, and the
// description is the text that kelpctl and the log use.
TEST(ErrorTexts, ComeFromTheResourceFile) {
    EXPECT_EQ(ErrorTextsOf(Result::kNoAnswer).desc, "the element does not answer");
    EXPECT_EQ(ErrorTextsOf(Result::kNoAnswer).advice, "");
    TempFolder folder;
    EXPECT_FALSE(nemgr::LoadErrorTexts(folder.Path("none.res")));
    EXPECT_EQ(ErrorTextsOf(Result::kNoAnswer).desc, "the element does not answer");

    ASSERT_TRUE(nemgr::LoadErrorTexts(NEMGR_TEXTS));
    for (int code = 10; code <= static_cast<int>(Result::kNoGateway); ++code) {
        const auto result = static_cast<Result>(code);
        const nemgr::ErrorTexts texts = ErrorTextsOf(result);
        EXPECT_EQ(texts.desc, nemgr::ResultText(result));
        EXPECT_NE(texts.reason, "") << code;
        EXPECT_NE(texts.advice, "") << code;
    }
    EXPECT_EQ(ErrorTextsOf(static_cast<Result>(99)).desc, "unknown result");
    FrameUtil::ErrorManage::Destroy();
}

}  // namespace
