#include "support/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(InvalidUtf8At, FindsTheFirstByteThatIsNone) {
    const struct {
        const char* name;
        std::string text;
        std::size_t at;
    } cases[] = {
        {"empty", "", std::string::npos},
        {"ascii", "abc", std::string::npos},
        {"zero octet", std::string("a\0b", 3), std::string::npos},
        {"two bytes", "\xc3\xa4", std::string::npos},
        {"last code point", "\xf4\x8f\xbf\xbf", std::string::npos},
        {"beyond it", "\xf4\x90\x80\x80", 0},
        {"continuation alone", "a\x80", 1},
        {"cut two bytes", "ab\xc3", 2},
        {"cut four bytes", "\xf0\x9f\x98", 0},
        {"overlong slash", "\xc0\xaf", 0},
        {"overlong three", "\xe0\x80\xaf", 0},
        {"overlong four", "\xf0\x80\x80\xaf", 0},
        {"surrogate", "\xed\xa0\x80", 0},
        {"fe", "x\xfe", 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(app::InvalidUtf8At(c.text), c.at) << c.name;
    }
}

TEST(DisplayWidth, CountsColumns) {
    const struct {
        const char* name;
        const char* text;
        std::size_t width;
    } cases[] = {
        {"ascii", "abc", 3},
        {"umlaut", "\u00e4", 1},
        {"letter and combining mark", "a\u0308", 1},
        {"kanji", "\u6771\u4eac", 4},
        {"hangul", "\ud55c", 2},
        {"halfwidth katakana", "\uff71", 1},
        {"pictograph", "\U0001f600", 2},
        {"zero width joiner", "\u200d", 0},
        {"empty", "", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(app::DisplayWidth(c.text), c.width) << c.name;
    }
}

// Nothing that a terminal acts on gets through, and what is shown tells what was there.
TEST(ShowText, EscapesWhatATerminalActsOn) {
    const struct {
        const char* name;
        std::string text;
        const char* shown;
    } cases[] = {
        {"plain", "Z\u00fcrich \u6771\u4eac", "Z\u00fcrich \u6771\u4eac"},
        {"escape sequence", "\x1b[2J", "\\x1b[2J"},
        {"line ends and tab", "a\r\n\tb", "a\\r\\n\\tb"},
        {"zero octet", std::string("a\0b", 3), "a\\x00b"},
        {"delete", "\x7f", "\\x7f"},
        {"C1 control",
         "\xc2\x9b"
         "2J",
         "\\x9b2J"},
        {"not UTF-8", "a\xff", "a\\xff"},
        {"right-to-left override", "\u202e", "\\u202e"},
        {"line separator", "\u2028", "\\u2028"},
        {"backslash", "\\x1b", "\\\\x1b"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(app::ShowText(c.text), c.shown) << c.name;
    }
}

}  // namespace
