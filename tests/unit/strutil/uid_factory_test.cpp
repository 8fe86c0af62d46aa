// StrUIDFactory: what it appends, escapes and ignores.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "frameutil/strutil.h"
#include "strutil/uid_escape.h"

namespace FrameUtil {
namespace {

std::string Repeat(const char* text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

TEST(UidFactory, AppendsPairs) {
    StrUIDFactory factory;
    EXPECT_EQ(factory.GetStr(), "");
    factory.Append("a", "1").Append("b", 2L).Append("c", -3).Append("d", 0);
    EXPECT_EQ(factory.GetStr(), "a=1,b=2,c=-3,d=0");
    factory.Append("e", std::numeric_limits<long>::min());
    factory.Append("f", std::numeric_limits<long>::max());
    EXPECT_EQ(factory.GetStr(), "a=1,b=2,c=-3,d=0,e=-9223372036854775808,f=9223372036854775807");
    factory.Clear();
    EXPECT_EQ(factory.GetStr(), "");
    factory.Append("a", "again");
    EXPECT_EQ(factory.GetStr(), "a=again");
}

// Behind "z=1": what a pair adds.
TEST(UidFactory, EscapesValuesAndChecksKeys) {
    struct Case {
        const char* key;
        const char* value;
        const char* added;
    };
    for (const Case& c : {
             Case{"k", "a,b", ",k=a\\cb"},
             Case{"k", "a=b", ",k=a\\eb"},
             Case{"k", "a\\b", ",k=a\\\\b"},
             Case{"k", ",=\\", ",k=\\c\\e\\\\"},
             Case{"k", "p\\|q", ",k=p\\\\|q"},
             Case{"k", "p|q", ",k=p|q"},
             // Not checked, and nothing that a parser takes back.
             Case{"k", "", ",k="},
             Case{"", "v", ",=v"},
             Case{"a,b", "v", ",a,b=v"},
             Case{"a=b", "v", ",a=b=v"},
             Case{"a\\b", "v", ",a\\b=v"},
             Case{"k", "\x01\xff", ",k=\x01\xff"},
             // Ignored.
             Case{nullptr, "v", ""},
             Case{"k", nullptr, ""},
             Case{nullptr, nullptr, ""},
             Case{"12", "x", ""},
             Case{"-12", "x", ""},
             Case{"+", "x", ""},
             Case{"-", "x", ""},
             Case{"k\n", "x", ""},
             Case{"\x7f", "x", ""},
             Case{"\xc3\xa9", "x", ""},
             // Almost numbers.
             Case{"1.2", "x", ",1.2=x"},
             Case{"12a", "x", ",12a=x"},
             Case{" 12", "x", ", 12=x"},
         }) {
        SCOPED_TRACE(c.key != nullptr ? c.key : "(null)");
        StrUIDFactory factory;
        factory.Append("z", 1).Append(c.key, c.value);
        EXPECT_EQ(factory.GetStr(), std::string("z=1") + c.added);
        if (c.value != nullptr && *c.added == '\0') {
            factory.Append(c.key, 5L);
            EXPECT_EQ(factory.GetStr(), "z=1");
        }
    }
}

// A value is escaped while it, with one more for each ',', '=' and backslash, has no more
// than 255 characters.
TEST(UidFactory, LeavesLongValuesAlone) {
    struct Case {
        const char* name;
        std::string value, written;
    };
    for (const Case& c : {
             Case{"255 plain", Repeat("v", 255), Repeat("v", 255)},
             Case{"256 plain", Repeat("v", 256), Repeat("v", 256)},
             Case{"256 with commas", Repeat("v,", 128), Repeat("v,", 128)},
             Case{"127 commas", Repeat(",", 127), Repeat("\\c", 127)},
             Case{"127 commas and one", Repeat(",", 127) + "v", Repeat("\\c", 127) + "v"},
             Case{"128 commas", Repeat(",", 128), Repeat(",", 128)},
             Case{"127 equals signs", Repeat("=", 127), Repeat("\\e", 127)},
             Case{"128 equals signs", Repeat("=", 128), Repeat("=", 128)},
             Case{"127 backslashes", Repeat("\\", 127), Repeat("\\\\", 127)},
             Case{"128 backslashes", Repeat("\\", 128), Repeat("\\", 128)},
             Case{"254 and a comma", Repeat("v", 253) + ",", Repeat("v", 253) + "\\c"},
             Case{"255 and a comma", Repeat("v", 254) + ",", Repeat("v", 254) + ","},
             Case{"a million commas", Repeat(",", 1'000'000), Repeat(",", 1'000'000)},
         }) {
        SCOPED_TRACE(c.name);
        StrUIDFactory factory;
        factory.Append("k", c.value.c_str());
        EXPECT_EQ(factory.GetStr(), "k=" + c.written);
    }
}

// With another separator than ',' commas still count, and separators do not.
TEST(UidFactory, CountsCommasWhateverTheSeparator) {
    struct Case {
        const char* name;
        std::string value, written;
    };
    for (const Case& c : {
             Case{"separators are escaped", "a;b,c", "a\\cb,c"},
             Case{"255 counted", Repeat(",", 127) + ";", Repeat(",", 127) + "\\c"},
             Case{"256 counted", Repeat(",", 128) + ";", Repeat(",", 128) + ";"},
             Case{"255 separators", Repeat(";", 255), Repeat("\\c", 255)},
             Case{"256 separators", Repeat(";", 256), Repeat(";", 256)},
         }) {
        SCOPED_TRACE(c.name);
        std::string room(EscapedRoom(c.value), '#');
        room.resize(
            static_cast<std::size_t>(WriteEscaped(c.value, ';', room.data()) - room.data()));
        EXPECT_EQ(room, c.written);
    }
}

TEST(UidFactory, AppendsWholeIdentifiers) {
    StrUIDFactory factory;
    factory.AppendFDN(nullptr).AppendFDN("");
    EXPECT_EQ(factory.GetStr(), "");
    factory.AppendFDN("a=1,b=2");
    EXPECT_EQ(factory.GetStr(), "a=1,b=2");
    factory.AppendFDN("").AppendFDN(nullptr);
    EXPECT_EQ(factory.GetStr(), "a=1,b=2");
    factory.AppendFDN("not looked at,\\\n").Append("c", 3);
    EXPECT_EQ(factory.GetStr(), "a=1,b=2,not looked at,\\\n,c=3");
}

TEST(UidFactory, CountsNothing) {
    StrUIDFactory factory;
    for (int i = 0; i < 1000; ++i) {
        factory.Append("k", "v");
    }
    const std::string text = factory.GetStr();
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), 999);
}

}  // namespace
}  // namespace FrameUtil
