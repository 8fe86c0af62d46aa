// StrUIDParser: what is an identifier, and what is read from it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "frameutil/strutil.h"
#include "secure/fault.h"
#include "support/captured_log.h"

namespace FrameUtil {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs PairsOf(StrUIDParser& parser) {
    Pairs pairs;
    parser.SetCurToFirst();
    while (parser.Next()) {
        pairs.emplace_back(parser.Type(), parser.StrValue());
    }
    return pairs;
}

TEST(UidParser, TakesIdentifiers) {
    struct Case {
        const char* text;
        Pairs pairs;
    };
    for (const Case& c : {
             Case{"", {}},
             Case{"a=1", {{"a", "1"}}},
             Case{"a=1,b=2", {{"a", "1"}, {"b", "2"}}},
             Case{"net=7,ne=Oslo east,port=3/1",
                  {{"net", "7"}, {"ne", "Oslo east"}, {"port", "3/1"}}},
             Case{"a=x\\cy\\ez", {{"a", "x,y=z"}}},
             Case{"a=\\\\", {{"a", "\\"}}},
             Case{"a=\\c", {{"a", ","}}},
             Case{"a=\\e,b=\\c\\c", {{"a", "="}, {"b", ",,"}}},
             Case{"a=p\\|q", {{"a", "p\\|q"}}},
             Case{"a=\\|", {{"a", "\\|"}}},
             Case{"a=p|q", {{"a", "p|q"}}},
             Case{"12=x", {{"12", "x"}}},  // the factory would not write it
             Case{" = ", {{" ", " "}}},
             Case{"a=1,a=1", {{"a", "1"}, {"a", "1"}}},
             Case{"A|B='\"~", {{"A|B", "'\"~"}}},
         }) {
        SCOPED_TRACE(c.text);
        StrUIDParser parser;
        EXPECT_TRUE(parser.Parse(c.text));
        EXPECT_EQ(PairsOf(parser), c.pairs);
        const std::string moc = c.pairs.empty() ? "" : c.pairs.back().first;
        EXPECT_EQ(parser.GetMOC(), moc);
        EXPECT_EQ(StrUIDParser::GetMOC(c.text), moc);
    }
}

// What is wrong is named with its place; the pairs before it are there.
TEST(UidParser, RefusesEverythingElse) {
    struct Case {
        const char* text;
        const char* reason;
        unsigned long offset;
        Pairs pairs;
    };
    for (const Case& c : {
             Case{"a=1,", "a key is missing", 4, {{"a", "1"}}},
             Case{",", "a key is missing", 0, {}},
             Case{",a=1", "a key is missing", 0, {}},
             Case{"a=1,,b=2", "a key is missing", 4, {{"a", "1"}}},
             Case{"=1", "a key is missing", 0, {}},
             Case{"\\=1", "a key is missing", 0, {}},
             Case{"a", "a key without a value", 1, {{"a", ""}}},
             Case{"a,b=1", "a key without a value", 1, {{"a", ""}}},
             Case{"a\\c=1", "a backslash in a key", 1, {{"a", ""}}},
             Case{"a=", "a value is missing", 2, {{"a", ""}}},
             Case{"a=,b=1", "a value is missing", 2, {{"a", ""}}},
             Case{"a==1", "an '=' in a value", 2, {{"a", ""}}},
             Case{"a=1=2", "an '=' in a value", 3, {{"a", "1"}}},
             Case{"a=1,b=2=", "an '=' in a value", 7, {{"a", "1"}, {"b", "2"}}},
             Case{"a=\\", "an unknown escape", 3, {{"a", ""}}},
             Case{"a=1\\", "an unknown escape", 4, {{"a", "1"}}},
             Case{"a=\\x", "an unknown escape", 3, {{"a", ""}}},
             Case{"a=1\\,", "an unknown escape", 4, {{"a", "1"}}},
             Case{"a=1\\=", "an unknown escape", 4, {{"a", "1"}}},
             Case{"a=1\\C", "an unknown escape", 4, {{"a", "1"}}},
         }) {
        SCOPED_TRACE(c.text);
        StrUIDParser parser;
        UIDFault fault;
        EXPECT_FALSE(parser.Parse(c.text, &fault));
        EXPECT_STREQ(fault.reason, c.reason);
        EXPECT_EQ(fault.offset, c.offset);
        EXPECT_EQ(PairsOf(parser), c.pairs);
        EXPECT_FALSE(parser.Parse(c.text));
        EXPECT_EQ(StrUIDParser::GetMOC(c.text), "");
    }
}

// A null text and a byte outside of 0x20..0x7E leave what was there, the current pair
// included; any other text begins anew.
TEST(UidParser, KeepsTheEarlierResultForUnprintableText) {
    struct Case {
        const char* text;
        unsigned long offset;
        bool keeps;
    };
    for (const Case& c :
         {Case{nullptr, 0, true}, Case{"\x1f", 0, true}, Case{"b=\x7f", 2, true},
          Case{"b=\xc3\xa9", 2, true}, Case{"b=1\n", 3, true}, Case{"\tb=1", 0, true},
          Case{"b=1,", 4, false}, Case{"", 0, false}, Case{"b=1", 0, false}}) {
        SCOPED_TRACE(c.text != nullptr ? c.text : "(null)");
        StrUIDParser parser;
        ASSERT_TRUE(parser.Parse("a=1,c=2"));
        ASSERT_TRUE(parser.Next());
        UIDFault fault;
        const bool parsed = parser.Parse(c.text, &fault);
        EXPECT_EQ(fault.offset, c.offset);
        if (c.keeps) {
            EXPECT_FALSE(parsed);
            EXPECT_STREQ(fault.reason,
                         c.text != nullptr ? "a byte outside of 0x20..0x7E" : "no text");
            EXPECT_EQ(parser.Type(), "a");
            EXPECT_EQ(parser.GetMOC(), "c");
        } else {
            EXPECT_EQ(parser.Type(), "");
            EXPECT_NE(parser.GetMOC(), "c");
        }
    }
}

TEST(UidParser, GoesThroughThePairs) {
    StrUIDParser parser;
    EXPECT_FALSE(parser.Next());
    EXPECT_EQ(parser.Type(), "");
    ASSERT_TRUE(parser.Parse("a=1,b=-2"));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(parser.Type(), "");
        EXPECT_EQ(parser.StrValue(), "");
        EXPECT_EQ(parser.IntValue(), 0);
        EXPECT_EQ(parser.UIntValue(), 0UL);
        EXPECT_TRUE(parser.Next());
        EXPECT_EQ(parser.Type(), "a");
        EXPECT_EQ(parser.IntValue(), 1);
        EXPECT_TRUE(parser.Next());
        EXPECT_EQ(parser.StrValue(), "-2");
        EXPECT_EQ(parser.IntValue(), -2);
        EXPECT_EQ(parser.GetMOC(), "b");  // of the last pair, not the current one
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(parser.Next());
            EXPECT_EQ(parser.Type(), "");
            EXPECT_EQ(parser.IntValue(), 0);
        }
        parser.SetCurToFirst();
    }
    ASSERT_TRUE(parser.Parse(""));
    EXPECT_FALSE(parser.Next());
    EXPECT_EQ(parser.GetMOC(), "");
}

TEST(UidParser, LooksValuesUp) {
    StrUIDParser parser;
    ASSERT_TRUE(parser.Parse("a=1,b=2,a=3,A=4,ab=5"));
    struct Case {
        const char* key;
        unsigned long index;
        const char* value;  // null: not there
    };
    for (const Case& c :
         {Case{"a", 0, "1"}, Case{"a", 1, "3"}, Case{"a", 2, nullptr}, Case{"b", 0, "2"},
          Case{"b", 1, nullptr}, Case{"A", 0, "4"}, Case{"ab", 0, "5"}, Case{"c", 0, nullptr},
          Case{"", 0, nullptr}, Case{nullptr, 0, nullptr},
          Case{"a", std::numeric_limits<unsigned long>::max(), nullptr}}) {
        SCOPED_TRACE(c.key != nullptr ? c.key : "(null)");
        std::string text = "before";
        EXPECT_EQ(parser.GetValue(text, c.key, c.index), c.value != nullptr);
        EXPECT_EQ(text, c.value != nullptr ? c.value : "before");
        long number = 77;
        EXPECT_EQ(parser.GetValue(number, c.key, c.index), c.value != nullptr);
        EXPECT_EQ(number, c.value != nullptr ? std::stol(c.value) : 77);
        unsigned long positive = 77;
        EXPECT_EQ(parser.GetValue(positive, c.key, c.index), c.value != nullptr);
        EXPECT_EQ(positive, c.value != nullptr ? std::stoul(c.value) : 77UL);
    }
}

// A key whose value is missing has the empty value, which is no number.
TEST(UidParser, AKeyWithoutAValueIsFound) {
    StrUIDParser parser;
    ASSERT_FALSE(parser.Parse("a=1,b="));
    std::string text = "before";
    EXPECT_TRUE(parser.GetValue(text, "b", 0));
    EXPECT_EQ(text, "");
    long number = 77;
    EXPECT_FALSE(parser.GetValue(number, "b", 0));
    EXPECT_EQ(number, 77);
}

TEST(UidParser, ReadsNumbers) {
    constexpr long kMost = std::numeric_limits<long>::max();
    constexpr long kLeast = std::numeric_limits<long>::min();
    struct Case {
        const char* value;
        bool is_number;
        long number;
    };
    for (const Case& c : {
             Case{"0", true, 0},
             Case{"-7", true, -7},
             Case{"+7", true, 7},
             Case{"007", true, 7},
             Case{"-", true, 0},
             Case{"+", true, 0},
             Case{"-0", true, 0},
             Case{"12x", false, 0},
             Case{"x12", false, 0},
             Case{"1 ", false, 0},
             Case{" 1", false, 0},
             Case{"1.5", false, 0},
             Case{"--1", false, 0},
             Case{"+-1", false, 0},
             Case{"0x10", false, 0},
             Case{"9223372036854775807", true, kMost},
             Case{"9223372036854775808", true, kMost},
             Case{"-9223372036854775808", true, kLeast},
             Case{"-9223372036854775809", true, kLeast},
             Case{"18446744073709551615", true, kMost},
             Case{"18446744073709551616", true, kMost},
             Case{"-18446744073709551616", true, kLeast},
             Case{"99999999999999999999999999", true, kMost},
             Case{"-99999999999999999999999999", true, kLeast},
             Case{"00000000000000000000000000000012", true, 12},
         }) {
        SCOPED_TRACE(c.value);
        StrUIDParser parser;
        ASSERT_TRUE(parser.Parse((std::string("a=") + c.value).c_str()));
        ASSERT_TRUE(parser.Next());
        EXPECT_EQ(parser.IntValue(), c.number);
        long number = 77;
        EXPECT_EQ(parser.GetValue(number, "a", 0), c.is_number);
        EXPECT_EQ(number, c.is_number ? c.number : 77);

        // The unsigned form is what a stream makes of the same text.
        unsigned long extracted = 0;
        if (c.is_number) {
            std::istringstream(c.value) >> extracted;
        }
        EXPECT_EQ(parser.UIntValue(), extracted);
        unsigned long positive = 77;
        EXPECT_EQ(parser.GetValue(positive, "a", 0), c.is_number);
        EXPECT_EQ(positive, c.is_number ? extracted : 77UL);
    }
}

TEST(UidParser, AnUnsignedMinusOneIsTheLargest) {
    StrUIDParser parser;
    ASSERT_TRUE(parser.Parse("a=-1"));
    unsigned long number = 0;
    EXPECT_TRUE(parser.GetValue(number, "a", 0));
    EXPECT_EQ(number, std::numeric_limits<unsigned long>::max());
}

TEST(UidParser, SplitsAValue) {
    StrUIDParser parser;
    ASSERT_TRUE(parser.Parse("list=a|b\\|c|5,plain=x\\cy"));
    StrSpliter items('|');
    std::string first, second;
    long third = 0;
    EXPECT_TRUE(parser.GetValue(items, "list", 0));
    items >> first >> second >> third;
    EXPECT_EQ(first, "a");
    EXPECT_EQ(second, "b|c");
    EXPECT_EQ(third, 5);
    EXPECT_FALSE(items.HasNext());

    StrSpliter commas(',');
    EXPECT_TRUE(parser.GetValue(commas, "plain", 0));
    commas >> first >> second;
    EXPECT_EQ(first + "/" + second, "x/y");

    // A value that is not there leaves the splitter where it was.
    ASSERT_TRUE(items.Parse("1|2"));
    items >> first;
    EXPECT_FALSE(parser.GetValue(items, "none", 0));
    EXPECT_FALSE(parser.GetValue(items, nullptr, 0));
    items >> second;
    EXPECT_EQ(second, "2");
}

// All decoded keys and values, each with a terminator, have 256 bytes.
TEST(UidParser, Holds256Bytes) {
    const auto value = [](std::size_t length) { return std::string(length, 'v'); };
    struct Case {
        const char* name;
        std::string text;
        bool fits;
    };
    for (const Case& c : {
             Case{"255", "a=" + value(252), true},
             Case{"256", "a=" + value(253), true},
             Case{"257", "a=" + value(254), false},
             Case{"two pairs, 256", "a=" + value(100) + ",b=" + value(150), true},
             Case{"two pairs, 257", "a=" + value(100) + ",b=" + value(151), false},
             Case{"a long key", value(253) + "=1", true},
             Case{"a longer key", value(254) + "=1", false},
             Case{"a key that fills it", value(256) + "=1", false},
             Case{"a key beyond it", value(300), false},
             Case{"a pair that fills it and a comma", "a=" + value(253) + ",", false},
             Case{"a pair that fills it and another", "a=" + value(253) + ",b=1", false},
             Case{"escapes count once", "a=" + value(252) + "\\c", true},
             Case{"escapes count once, 257", "a=" + value(253) + "\\c", false},
             Case{"a bar's escape counts twice", "a=" + value(251) + "\\|", true},
             Case{"a bar's escape over the end", "a=" + value(252) + "\\|", false},
             Case{"a bar's escape in the last byte", "a=" + value(253) + "\\|", false},
             Case{"a bar's escape behind the end", "a=" + value(254) + "\\|", false},
             Case{"a fault behind the end", "a=" + value(254) + "=", false},
             Case{"a million", "a=" + value(1'000'000), false},
         }) {
        SCOPED_TRACE(c.name);
        StrUIDParser parser;
        UIDFault fault;
        EXPECT_EQ(parser.Parse(c.text.c_str(), &fault), c.fits);
        EXPECT_STREQ(fault.reason, c.fits ? "" : "keys and values of more than 256 bytes");
        for (const auto& [key, text] : PairsOf(parser)) {
            EXPECT_LE(key.size() + text.size(), 256U);
        }
    }
}

TEST(UidParser, HoldsAsManyPairsAsFit) {
    std::string text = "k=v";
    for (int i = 1; i < 64; ++i) {
        text += ",k=v";
    }
    StrUIDParser parser;
    EXPECT_TRUE(parser.Parse(text.c_str()));
    EXPECT_EQ(PairsOf(parser).size(), 64U);
    std::string last;
    EXPECT_TRUE(parser.GetValue(last, "k", 63));
    EXPECT_FALSE(parser.GetValue(last, "k", 64));
    EXPECT_FALSE(parser.Parse((text + ",k=v").c_str()));
    EXPECT_EQ(PairsOf(parser).size(), 64U);
}

TEST(UidParser, ParentIsWhatStandsBeforeTheLastComma) {
    struct Case {
        const char* text;
        const char* parent;
    };
    for (const Case& c : {Case{"a=1,b=2", "a=1"}, Case{"a=1,b=2,c=3", "a=1,b=2"}, Case{"a=1", ""},
                          Case{"", ""}, Case{nullptr, ""}, Case{",", ""}, Case{"a=1,", "a=1"},
                          Case{"no,identifier\n", "no"}, Case{"a=x\\cy", ""}}) {
        SCOPED_TRACE(c.text != nullptr ? c.text : "(null)");
        EXPECT_EQ(StrUIDParser::GetParentFDN(c.text), c.parent);
    }
    EXPECT_EQ(StrUIDParser::GetMOC(nullptr), "");
    EXPECT_EQ(StrUIDParser::GetMOC("a=\x01"), "");
}

// A buffer that does not clear is traced, and the parser works on.
TEST(UidParser, TracesABufferThatDoesNotClear) {
    using kelp::secure::FailNth;
    using kelp::secure::Routine;
    const CapturedLog log;
    {
        const FailNth failing(Routine::kMemset, 1, 5);
        StrUIDParser parser;
        EXPECT_TRUE(failing.Fired());
        EXPECT_THAT(log.Texts(), ElementsAre("[Frame]memset_s failed at line 422 errno: 5"));
        EXPECT_TRUE(parser.Parse("a=1"));
        EXPECT_THAT(PairsOf(parser), ElementsAre(Pair("a", "1")));
    }
    {
        StrUIDParser parser;
        EXPECT_TRUE(parser.Parse("a=1,b=2"));
        const FailNth failing(Routine::kMemset, 1, 7);
        EXPECT_TRUE(parser.Parse("c=3"));
        EXPECT_EQ(log.Texts().back(), "[Frame]memset_s failed at line 465 errno: 7");
        EXPECT_THAT(PairsOf(parser), ElementsAre(Pair("c", "3")));
        EXPECT_FALSE(parser.Parse("d"));
        EXPECT_THAT(PairsOf(parser), ElementsAre(Pair("d", "")));
    }
    EXPECT_EQ(log.Texts().size(), 2U);
}

}  // namespace
}  // namespace FrameUtil
