// Trim, Split, EscapeQuotation, ClearPasswd.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "frameutil/strutil.h"

namespace FrameUtil {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using ::testing::ElementsAreArray;

TEST(TextHelpers, TrimTakesFourKindsOfWhitespace) {
    struct Case {
        std::string text, trimmed;
    };
    for (const Case& c :
         {Case{"", ""}, Case{" \t\n\r", ""}, Case{" \t two words\r\n", "two words"}, Case{"x", "x"},
          Case{"\r\n\t x", "x"}, Case{"x \t\r\n", "x"}, Case{"\v\fx\v", "\v\fx\v"},
          Case{" \0 "s, "\0"s}, Case{"\xc2\xa0x", "\xc2\xa0x"}}) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Trim(c.text), c.trimmed);
    }
}

TEST(TextHelpers, SplitCutsAtEachSeparator) {
    struct Case {
        std::string text;
        std::string_view separators;
        std::vector<std::string> kept, dropped;
    };
    for (const Case& c : {
             Case{"", ",", {""}, {}},
             Case{"a", ",", {"a"}, {"a"}},
             Case{"a,b", ",", {"a", "b"}, {"a", "b"}},
             Case{",a,,b,", ",", {"", "a", "", "b", ""}, {"a", "b"}},
             Case{",", ",", {"", ""}, {}},
             Case{"a,b;c d", ",; ", {"a", "b", "c", "d"}, {"a", "b", "c", "d"}},
             Case{"a, b", ", ", {"a", "", "b"}, {"a", "b"}},
             Case{"a,b", "", {"a,b"}, {"a,b"}},
             Case{"a\\,b", ",", {"a\\", "b"}, {"a\\", "b"}},
             Case{"a\0b"s, std::string_view("\0", 1), {"a", "b"}, {"a", "b"}},
             Case{"a|b", "|", {"a", "b"}, {"a", "b"}},
         }) {
        SCOPED_TRACE(c.text);
        EXPECT_THAT(Split(c.text, c.separators), ElementsAreArray(c.kept));
        EXPECT_THAT(Split(c.text, c.separators, EmptyItems::kKeep), ElementsAreArray(c.kept));
        EXPECT_THAT(Split(c.text, c.separators, EmptyItems::kDrop), ElementsAreArray(c.dropped));
    }
}

TEST(TextHelpers, EscapeQuotationDoublesQuotes) {
    struct Case {
        std::string text, escaped;
    };
    for (const Case& c :
         {Case{"", ""}, Case{"plain", "plain"}, Case{"O'Brien", "O''Brien"}, Case{"'", "''"},
          Case{"''", "''''"}, Case{"'; DROP TABLE x --", "''; DROP TABLE x --"},
          Case{"a\\'b", "a\\''b"}, Case{"\"q\"", "\"q\""}, Case{"a\0'"s, "a\0''"s}}) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(EscapeQuotation(c.text), c.escaped);
    }
}

TEST(TextHelpers, ClearPasswdOverwrites) {
    std::string secret = "secret that is long enough to be on the heap";
    const std::size_t length = secret.size();
    ClearPasswd(secret);
    EXPECT_EQ(secret, std::string(length, '\0'));

    std::string empty;
    ClearPasswd(empty);
    EXPECT_EQ(empty, "");

    char buffer[] = "secret";
    ClearPasswd(buffer, 3);
    EXPECT_EQ(std::string_view(buffer, sizeof buffer), "\0\0\0ret\0"sv);
    ClearPasswd(buffer, 0);
    EXPECT_EQ(buffer[3], 'r');
    ClearPasswd(nullptr, 10);
}

}  // namespace
}  // namespace FrameUtil
