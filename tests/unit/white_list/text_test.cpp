// What the lines of a white-list file mean.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/white_list_text.h"
#include "support/sweeps.h"

namespace FrameUtil {
namespace {

using testing::ElementsAreArray;
using namespace std::string_literals;

std::vector<std::string> Texts(const std::vector<WhiteListEntry>& entries) {
    std::vector<std::string> texts;
    for (const WhiteListEntry& entry : entries) {
        texts.push_back(entry.text);
    }
    return texts;
}

TEST(WhiteListText, WhatLinesMean) {
    const struct {
        const char* name;
        std::string contents;
        std::vector<std::string> entries;
    } cases[] = {
        {"nothing", "", {}},
        {"an entry", "2167\n", {"2167"}},
        {"no line end behind the last", "2167\n2168", {"2167", "2168"}},
        {"an entry between blanks, a comment, an empty line, a tab",
         "  2167 \t\n# 2168\n\n\t\n",
         {"2167"}},
        {"CR LF", "2167\r\n2168\r\n\r\n", {"2167", "2168"}},
        {"blanks inside", "21 67\n", {"21 67"}},
        {"the file's order, and entries twice", "9999\n1000\n9999\n", {"9999", "1000", "9999"}},
        {"a comment behind blanks", " \t# 2167\n", {}},
        {"a number sign inside", "2167 # x\n", {"2167 # x"}},
        {"only blanks of each kind", " \n\t\n\r\n \t\r \n", {}},
        {"other white space is visible", "\v2167\f\n", {"\v2167\f"}},
        {"a byte-order mark",
         "\xEF\xBB\xBF"
         "2167\n",
         {"2167"}},
        {"a byte-order mark later",
         "1\n\xEF\xBB\xBF"
         "2\n",
         {"1",
          "\xEF\xBB\xBF"
          "2"}},
        {"a zero octet",
         "21\0"
         "67\n"s,
         {"21\0"
          "67"s}},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(Texts(ReadWhiteList(c.contents)), ElementsAreArray(c.entries)) << c.name;
    }
}

// White space at the end stays behind an entry of one character, wherever the entry began
// in its line: the last visible character is the first one then.
TEST(WhiteListText, SingleCharactersKeepWhatStandsBehind) {
    const struct {
        const char* line;
        const char* entry;
    } cases[] = {
        {"7", "7"},     {"7 ", "7 "},      {"7 \t ", "7 \t "}, {"7\r", "7\r"},
        {" 7 ", "7 "},  {"\t 7\t", "7\t"}, {" 7", "7"},        {"12 ", "12"},
        {"12\r", "12"}, {" 12 \t", "12"},  {"7 7 ", "7 7"},    {"x \r", "x \r"},
    };
    for (const auto& c : cases) {
        for (const std::string end : {"", "\n"}) {
            EXPECT_THAT(Texts(ReadWhiteList(c.line + end)), testing::ElementsAre(c.entry))
                << '"' << c.line << '"';
        }
    }
    EXPECT_THAT(ReadWhiteList("# \n#\t\n #  "), testing::IsEmpty()) << "also a comment of one";
}

TEST(WhiteListText, EntriesKnowTheirLines) {
    const auto entries = ReadWhiteList("# head\r\n1000\n\n\n2000\r\n3000");
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].line, 2u);
    EXPECT_EQ(entries[1].line, 5u);
    EXPECT_EQ(entries[2].line, 6u);
}

// A command code in decimal, as the check of a message writes it.
TEST(WhiteListText, CommandCodes) {
    for (const char* entry : {"0", "7", "2167", "65536", "4294967295"}) {
        EXPECT_TRUE(IsCommandCode(entry)) << entry;
    }
    for (const std::string entry : {"", "4294967296", "99999999999999999999", "-1", "+1", "007",
                                    "00", "0x10", "7 ", "7\r", "1.0", "1e3", "abc", "21 67"}) {
        EXPECT_FALSE(IsCommandCode(entry)) << entry;
    }
    EXPECT_FALSE(IsCommandCode("7\0"s));
}

TEST(WhiteListText, DamagedOctets) {
    const std::string good = "\xEF\xBB\xBF# x\r\n 2167 \n7 \n\n#\n\t12\t";
    std::size_t entries = 0;
    const auto check = [&](std::string_view contents) {
        for (const WhiteListEntry& entry : ReadWhiteList(contents)) {
            EXPECT_FALSE(entry.text.empty() || entry.text.front() == '#');
            ++entries;
        }
    };
    support::EachTruncation(good, check);
    support::EachBitFlipped(good, [&](std::string_view text, std::size_t) { check(text); });
    support::EachOctetReplaced(good, check);
    EXPECT_GT(entries, good.size());
}

}  // namespace
}  // namespace FrameUtil
