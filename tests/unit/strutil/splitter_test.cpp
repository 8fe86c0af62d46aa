// StrSpliter: how it cuts, and what each target gets.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "failing_malloc.h"
#include "frameutil/strutil.h"
#include "secure/fault.h"
#include "support/captured_log.h"
#include "support/sweeps.h"

namespace FrameUtil {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

std::vector<std::string> Rest(StrSpliter& items) {
    std::vector<std::string> rest;
    while (items.HasNext()) {
        items >> rest.emplace_back();
    }
    return rest;
}

TEST(Splitter, CutsAtSeparators) {
    struct Case {
        char separator;
        const char* text;
        std::vector<std::string> items;
        unsigned int mask;
    };
    for (const Case& c : {
             Case{'|', "", {""}, 0},
             Case{'|', "a", {"a"}, 1},
             Case{'|', "|", {"", ""}, 0},
             Case{'|', "a|", {"a", ""}, 1},
             Case{'|', "|a", {"", "a"}, 2},
             Case{'|', "a||b", {"a", "", "b"}, 5},
             Case{'|', "a|b\\|c|5", {"a", "b|c", "5"}, 7},
             Case{'|', "\\|", {"|"}, 1},
             Case{'|', "\\||\\|", {"|", "|"}, 3},
             Case{'|', "a\\", {"a\\"}, 1},
             Case{'|', "\\", {"\\"}, 1},
             Case{'|', "a\\b|c", {"a\\b", "c"}, 3},
             Case{'|', "\\\\|a", {"\\\\", "a"}, 3},  // both stay, and the bar separates
             Case{'|', "\\\\\\|a", {"\\\\|a"}, 1},
             Case{',', "x\\,y", {"x\\,y"}, 1},  // the backslash stays, deliberately
             Case{',', "x\\|y,z|w", {"x|y", "z|w"}, 3},
             Case{'\\', "a\\b\\|", {"a", "b", "|"}, 7},
             Case{'\xe9', "a\xe9z", {"a", "z"}, 3},
             Case{'\0', "a|b", {"a|b"}, 1},
         }) {
        SCOPED_TRACE(c.text);
        StrSpliter items(c.text, c.separator);
        EXPECT_EQ(items.GetValueMask(), c.mask);
        EXPECT_THAT(Rest(items), ElementsAreArray(c.items));
        EXPECT_EQ(items.GetValueMask(), c.mask);
        EXPECT_FALSE(items.HasError());
        EXPECT_TRUE(items.Parse(c.text));
        EXPECT_THAT(Rest(items), ElementsAreArray(c.items));
    }
}

TEST(Splitter, TheDefaultSeparatorIsTheBar) {
    StrSpliter items;
    EXPECT_FALSE(items.HasNext());
    EXPECT_TRUE(items.Parse("a,b|c"));
    EXPECT_THAT(Rest(items), ElementsAre("a,b", "c"));
    StrSpliter other("a|b");
    EXPECT_THAT(Rest(other), ElementsAre("a", "b"));
}

// What a linker joins with '|' comes back, unless a backslash stands where its own escape
// would: that is the linker's, which escapes separators only.
TEST(Splitter, TakesBackWhatALinkerJoined) {
    const std::vector<std::string> joined{"a", "b|c", "5", "", "||", "x y", "-", "a,b=c"};
    StrLinker list('|');
    for (const std::string& item : joined) {
        list << item.c_str();
    }
    StrSpliter items(list(), '|');
    EXPECT_THAT(Rest(items), ElementsAreArray(joined));
}

TEST(Splitter, TheMaskShowsTheFirst32Items) {
    std::string text = "x";
    for (int i = 1; i < 100; ++i) {
        text += i % 3 == 0 ? "|x" : "|";
    }
    StrSpliter items(text.c_str(), '|');
    unsigned int expected = 0;
    for (unsigned i = 0; i < 32; i += 3) {
        expected |= 1U << i;
    }
    EXPECT_EQ(items.GetValueMask(), expected);
    EXPECT_EQ(Rest(items).size(), 100U);
}

TEST(Splitter, GivesNumbers) {
    struct Case {
        const char* item;
        long number;
        unsigned long positive;
    };
    constexpr long kMost = std::numeric_limits<long>::max();
    constexpr unsigned long kMostPositive = std::numeric_limits<unsigned long>::max();
    for (const Case& c : {Case{"7", 7, 7}, Case{"-7", -7, 0UL - 7}, Case{"+7", 7, 7},
                          Case{"12a", 0, 0}, Case{"", 0, 0}, Case{" 7", 0, 0}, Case{"-", 0, 0},
                          Case{"9223372036854775808", kMost, 9223372036854775808UL},
                          Case{"18446744073709551616", kMost, kMostPositive}}) {
        SCOPED_TRACE(c.item);
        StrSpliter items((std::string(c.item) + "|" + c.item + "|end").c_str(), '|');
        long number = 77;
        unsigned long positive = 77;
        std::string end;
        items >> number >> positive >> end;
        EXPECT_EQ(number, c.number);
        EXPECT_EQ(positive, c.positive);
        EXPECT_EQ(end, "end");
    }
}

// Past the end: a number is 0 and a text empty; neither brings an item back.
TEST(Splitter, GivesNothingPastTheEnd) {
    StrSpliter items("1", '|');
    long number = 77;
    unsigned long positive = 77;
    std::string text = "before";
    char buffer[] = "xxxx";
    items >> number;
    EXPECT_FALSE(items.HasNext());
    items >> number >> positive >> text >> buffer;
    EXPECT_EQ(number, 0);
    EXPECT_EQ(positive, 0UL);
    EXPECT_EQ(text, "");
    EXPECT_STREQ(buffer, "xxxx");
    EXPECT_FALSE(items.HasNext());
    for (int i = 0; i < 1000; ++i) {
        items >> text;
    }
    ASSERT_TRUE(items.Parse("2"));
    items >> number;
    EXPECT_EQ(number, 2);
}

// A buffer shows its capacity by the text in it; one character less is filled, and nothing
// behind the text is touched.
TEST(Splitter, FillsABufferAsFarAsItShows) {
    struct Case {
        std::size_t shown;
        const char* item;
        const char* text;  // null: nothing happens, and the item stays
    };
    for (const Case& c : {Case{0, "abc", nullptr}, Case{1, "abc", ""}, Case{1, "", ""},
                          Case{2, "abc", "a"}, Case{3, "abc", "ab"}, Case{4, "abc", "abc"},
                          Case{5, "abc", "abc"}, Case{10, "", ""}, Case{3, "abcdefghijk", "ab"}}) {
        SCOPED_TRACE(std::to_string(c.shown) + " " + c.item);
        // The terminator of the shown text is the last byte that may be written.
        support::GuardedMemory memory(c.shown + 1);
        const std::string shown(c.shown, 'x');
        char* const buffer =
            const_cast<char*>(memory.Place(std::string_view(shown.c_str(), c.shown + 1)).data());
        StrSpliter items((std::string(c.item) + "|next").c_str(), '|');
        items >> buffer;
        EXPECT_STREQ(buffer, c.text != nullptr ? c.text : "");
        std::string next;
        items >> next;
        EXPECT_EQ(next, c.text != nullptr ? "next" : c.item);
    }
}

TEST(Splitter, BuffersOfUpTo4095CharactersAreTaken) {
    const std::string item(5000, 'i');
    struct Case {
        std::size_t shown, filled;
        bool taken;
    };
    for (const Case& c : {Case{4094, 4093, true}, Case{4095, 4094, true}, Case{4096, 4096, false},
                          Case{6000, 6000, false}}) {
        SCOPED_TRACE(c.shown);
        std::string buffer(c.shown, 'x');
        StrSpliter items(item.c_str(), '|');
        items >> buffer.data();
        EXPECT_EQ(std::string(buffer.c_str()), std::string(c.filled, c.taken ? 'i' : 'x'));
        EXPECT_EQ(items.HasNext(), !c.taken);
    }
}

TEST(Splitter, NoBufferIsNoTarget) {
    StrSpliter items("a", '|');
    items >> static_cast<char*>(nullptr);
    EXPECT_TRUE(items.HasNext());
}

// A copy that fails is traced; the item counts as taken.
TEST(Splitter, TracesACopyThatFails) {
    const CapturedLog log;
    StrSpliter items("abc|next", '|');
    std::array<char, 8> buffer{"xxxxxxx"};
    {
        const kelp::secure::FailNth failing(kelp::secure::Routine::kStrncpy, 1, 22);
        items >> buffer.data();
        EXPECT_TRUE(failing.Fired());
    }
    EXPECT_THAT(log.Texts(), ElementsAre("[Frame]strncpy_s failed at line 1039 errno: 22"));
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_THAT(Rest(items), ElementsAre("next"));
}

TEST(Splitter, TracesABufferThatDoesNotClear) {
    const CapturedLog log;
    const kelp::secure::FailNth failing(kelp::secure::Routine::kMemset, 1, 5);
    StrSpliter items("a|b", '|');
    EXPECT_THAT(log.Texts(), ElementsAre("[Frame]memset_s failed at line 950 errno: 5"));
    EXPECT_THAT(Rest(items), ElementsAre("a", "b"));
}

// Without memory for the work buffer, and without a text, there are no items.
TEST(Splitter, HasNoItemsAfterAFailure) {
    for (const bool null : {false, true}) {
        SCOPED_TRACE(null);
        StrSpliter items("a|b", '|');
        g_malloc_fails = !null;
        const bool parsed = items.Parse(null ? nullptr : "c|d");
        g_malloc_fails = false;
        EXPECT_FALSE(parsed);
        EXPECT_FALSE(items.HasNext());
        EXPECT_FALSE(items.HasError());
        EXPECT_EQ(items.GetValueMask(), 0U);
        EXPECT_TRUE(items.Parse("e"));
        EXPECT_THAT(Rest(items), ElementsAre("e"));
    }
    StrSpliter none(nullptr, '|');
    EXPECT_FALSE(none.HasNext());
}

TEST(Splitter, CutsAMillionItems) {
    StrSpliter items(std::string(999'999, '|').c_str(), '|');
    std::size_t count = 0;
    std::string item;
    while (items.HasNext()) {
        items >> item;
        ++count;
    }
    EXPECT_EQ(count, 1'000'000U);
}

}  // namespace
}  // namespace FrameUtil
