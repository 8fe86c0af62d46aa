#include "nemgr/results.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace {

// kelpctl tells results by commands.json: the same codes and texts stand there.
TEST(Results, AreTheOnesThatKelpctlKnows) {
    const std::string commands = ReadFile(NEMGR_COMMANDS);
    for (int code = 10; code <= static_cast<int>(nemgr::Result::kNoGateway); ++code) {
        const std::string text = nemgr::ResultText(static_cast<nemgr::Result>(code));
        EXPECT_NE(text, "unknown result") << code;
        EXPECT_NE(commands.find('"' + std::to_string(code) + "\": \"" + text + '"'),
                  std::string::npos)
            << code << ' ' << text;
    }
    EXPECT_STREQ(nemgr::ResultText(static_cast<nemgr::Result>(20)), "unknown result");
}

}  // namespace
