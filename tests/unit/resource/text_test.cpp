// What the contents of a resource file mean, and what is refused in which line.

#include "resource/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/sweeps.h"

namespace {

using kelp::resource::Entry;
using kelp::resource::Fault;
using kelp::resource::kMaxLine;
using testing::ElementsAreArray;
using namespace std::string_literals;

using Texts = std::vector<std::pair<std::string, std::string>>;

Texts Copies(const std::vector<Entry>& entries) {
    Texts texts;
    for (const Entry& entry : entries) {
        texts.emplace_back(entry.key, entry.value);
    }
    return texts;
}

// Lines of "key=value"; blanks at the ends of both, empty lines and comments mean nothing.
TEST(ResourceText, WhatLinesMean) {
    const struct {
        const char* name;
        std::string text;
        Texts texts;
    } cases[] = {
        {"nothing", "", {}},
        {"one line end", "\n", {}},
        {"an entry", "a=b\n", {{"a", "b"}}},
        {"no line end behind the last", "a=b\nc=d", {{"a", "b"}, {"c", "d"}}},
        {"CR LF", "a=b\r\nc=d\r\n", {{"a", "b"}, {"c", "d"}}},
        {"a byte-order mark",
         "\xEF\xBB\xBF"
         "a=b",
         {{"a", "b"}}},
        {"blanks around both", " \ta \t= \tb\t \n", {{"a", "b"}}},
        {"blanks inside both", "a b= c\t d", {{"a b", "c\t d"}}},
        {"more equals signs", "a=b=c==", {{"a", "b=c=="}}},
        {"an empty text", "a=\nb= \t", {{"a", ""}, {"b", ""}}},
        {"a comment", "#a=b\n  # c=d\n\t#\n", {}},
        {"a number sign that is none", "a#=#b # c", {{"a#", "#b # c"}}},
        {"lines of blanks", " \n\t\n\r\n \r\n", {}},
        {"nothing is an escape", "a=\\n\\t\\\\%s%n", {{"a", "\\n\\t\\\\%s%n"}}},
        {"all planes of Unicode", "\u00fc=\u6771\U0001F600", {{"\u00fc", "\u6771\U0001F600"}}},
        {"the order is kept", "b=1\na=2", {{"b", "1"}, {"a", "2"}}},
        {"the longest line",
         "a=" + std::string(kMaxLine - 2, 'x') + "\r\n",
         {{"a", std::string(kMaxLine - 2, 'x')}}},
    };
    for (const auto& c : cases) {
        std::vector<Entry> entries;
        Fault fault;
        EXPECT_TRUE(kelp::resource::Parse(c.text, entries, fault)) << c.name << ": " << fault.what;
        EXPECT_THAT(Copies(entries), ElementsAreArray(c.texts)) << c.name;
    }
}

// A file is refused for the first line that is at fault, whatever stands before it.
TEST(ResourceText, WhatIsRefused) {
    const struct {
        const char* name;
        std::string line;
        std::string what;
    } cases[] = {
        {"no equals sign", "abc", "there is no '=' in the line"},
        {"no key", "=b", "there is no key in front of the '='"},
        {"a key of blanks", " \t=b", "there is no key in front of the '='"},
        {"a key again", " first =2", "the key \"first\" stands in line 1 already"},
        {"zero octet", "a=b\0c"s, "there is a control character (octet 4 of the line)"},
        {"escape character",
         "\x1b"
         "a=b",
         "there is a control character (octet 1 of the line)"},
        {"delete", "a=\x7f", "there is a control character (octet 3 of the line)"},
        {"a CR inside", "a=b\rc=d", "there is a control character (octet 4 of the line)"},
        {"two CRs", "a=b\r\r", "there is a control character (octet 4 of the line)"},
        {"Latin-1", "a=M\xfcnchen", "the line is not UTF-8 (octet 4 of the line)"},
        {"Latin-1 in a comment", "# M\xfcnchen", "the line is not UTF-8 (octet 4 of the line)"},
        {"a character cut", "a=\xE6\x9D", "the line is not UTF-8 (octet 3 of the line)"},
        {"overlong", "a=\xC0\xAF", "the line is not UTF-8 (octet 3 of the line)"},
        {"surrogate", "a=\xED\xA0\x80", "the line is not UTF-8 (octet 3 of the line)"},
        {"a byte-order mark later",
         "\xEF\xBB\xBF"
         "a=b",
         "there is a byte-order mark (octet 1 of the line)"},
        {"too long", "a=" + std::string(kMaxLine - 1, 'x'), "the line is longer than 65536 octets"},
        {"UTF-16",
         "\xff\xfe"
         "a\0=\0b\0"s,
         "the line is not UTF-8 (octet 1 of the line)"},
    };
    for (const auto& c : cases) {
        for (const std::string after : {"", "\n", "\r\n", "\nalso bad\n"}) {
            std::vector<Entry> entries;
            Fault fault;
            EXPECT_FALSE(kelp::resource::Parse("first=1\n\n" + c.line + after, entries, fault))
                << c.name;
            EXPECT_EQ(fault.line, 3u) << c.name;
            EXPECT_EQ(fault.what, c.what) << c.name;
            EXPECT_TRUE(entries.empty()) << c.name;
        }
    }
}

TEST(ResourceText, SecondByteOrderMarkIsRefused) {
    std::vector<Entry> entries;
    Fault fault;
    EXPECT_FALSE(
        kelp::resource::Parse("\xEF\xBB\xBF\xEF\xBB\xBF"
                              "a=b",
                              entries, fault));
    EXPECT_EQ(fault.line, 1u);
    EXPECT_EQ(fault.what, "there is a byte-order mark (octet 1 of the line)");
}

// Whatever becomes of a file's octets, nothing beyond them is read, and a refusal has a
// line and a reason.
TEST(ResourceText, DamagedOctets) {
    const std::string good = "\xEF\xBB\xBF# \u00fc\r\na.desc = b\n\nc=\u6771=d\r\n";
    const auto check = [](std::string_view text) {
        std::vector<Entry> entries;
        Fault fault;
        const bool accepted = kelp::resource::Parse(text, entries, fault);
        EXPECT_EQ(accepted, fault.what.empty());
        EXPECT_EQ(accepted, fault.line == 0);
        EXPECT_TRUE(accepted || entries.empty());
    };
    support::EachTruncation(good, check);
    support::EachBitFlipped(good, [&](std::string_view text, std::size_t) { check(text); });
    support::EachOctetReplaced(good, check);
}

}  // namespace
