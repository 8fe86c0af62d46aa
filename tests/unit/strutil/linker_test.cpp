// StrLinker: separators, escapes, and the count of eight bits.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "frameutil/strutil.h"

namespace FrameUtil {
namespace {

TEST(Linker, JoinsTextsAndNumbers) {
    StrLinker list('|');
    EXPECT_STREQ(list(), "");
    list << "a"
         << "b|c" << 5;
    EXPECT_STREQ(list(), "a|b\\|c|5");
    list << 7UL << -8L << 0 << 9U;
    EXPECT_STREQ(list(), "a|b\\|c|5|7|-8|0|9");
    list << std::numeric_limits<unsigned long>::max() << std::numeric_limits<long>::min();
    EXPECT_STREQ(list(), "a|b\\|c|5|7|-8|0|9|18446744073709551615|-9223372036854775808");
}

TEST(Linker, TheDefaultSeparatorIsTheBar) {
    StrLinker list;
    list << "x|y"
         << "z";
    EXPECT_STREQ(list(), "x\\|y|z");
}

// The separator is escaped, whatever it is, and nothing else.
TEST(Linker, EscapesItsSeparatorOnly) {
    struct Case {
        char separator;
        const char* item;
        const char* written;
    };
    for (const Case& c :
         {Case{'|', "a|b|", "a\\|b\\|"}, Case{'|', "a\\b,c", "a\\b,c"}, Case{',', "x,y", "x\\,y"},
          Case{',', "x|y", "x|y"}, Case{'\\', "a\\b", "a\\\\b"}, Case{'|', "", ""}}) {
        SCOPED_TRACE(c.item);
        StrLinker list(c.separator);
        list << c.item;
        EXPECT_EQ(std::string(list()), c.written);
        list << 1;
        EXPECT_EQ(std::string(list()), std::string(c.written) + c.separator + "1");
    }
}

TEST(Linker, LeavesLongItemsAlone) {
    for (const std::size_t length : {254UL, 255UL, 256UL, 257UL, 100000UL}) {
        StrLinker list('|');
        list << std::string(length, '|').c_str();
        EXPECT_EQ(std::string(list()).size(), length < 256 ? 2 * length : length) << length;
    }
}

TEST(Linker, NullIsNoItem) {
    StrLinker list('|');
    list << static_cast<const char*>(nullptr) << "a" << static_cast<const char*>(nullptr) << "b";
    EXPECT_STREQ(list(), "a|b");
}

// An empty item counts: the next one has a separator.
TEST(Linker, EmptyItemsCount) {
    StrLinker list('|');
    list << ""
         << "";
    EXPECT_STREQ(list(), "|");
}

// The 257th and the 513th item run into the one before.
TEST(Linker, CountsInEightBits) {
    StrLinker list('|');
    std::string expected;
    for (int item = 1; item <= 600; ++item) {
        list << "x";
        expected += item == 1 || item == 257 || item == 513 ? "x" : "|x";
        ASSERT_EQ(list(), expected) << item;
    }
    EXPECT_EQ(std::count(expected.begin(), expected.end(), '|'), 597);
}

TEST(Linker, ItsOwnTextIsAnItemToo) {
    StrLinker list('|');
    list << "a"
         << "b";
    for (int i = 0; i < 6; ++i) {
        const std::string before = list();
        std::string escaped;
        for (const char c : before) {
            escaped += c == '|' && before.size() < 256 ? "\\|" : std::string(1, c);
        }
        list << list();
        EXPECT_EQ(std::string(list()), before + "|" + escaped);
    }
}

// So is any end of it: the text moves to where there is room for both.
TEST(Linker, AnEndOfItsOwnTextIsAnItemToo) {
    for (const std::size_t cut : {1UL, 100UL, 199UL, 200UL}) {
        SCOPED_TRACE(cut);
        const std::string item(200, 'x');
        StrLinker list('|');
        list << item.c_str();
        list << list() + cut;
        EXPECT_EQ(std::string(list()), item + "|" + item.substr(cut));
    }
}

}  // namespace
}  // namespace FrameUtil
