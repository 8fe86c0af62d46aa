// From a parameter set to octets: each type, each header, each rule of a description, octet
// by octet.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "support/captured_log.h"
#include "support/codec.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::Built;
using support::CodecOf;
using support::Element;
using support::Hex;

constexpr const char* kNoRoom = "null: the buffer is too small";
constexpr const char* kNoSuchType = "null: the type cannot be written";

struct Case {
    const char* name;
    void (*fill)(CParaSet&);
    As as;
    std::string octets;  // or why not
};

template <std::size_t n>
void Check(const FrameUtil::CEndeCode& codec, const Case (&rows)[n]) {
    for (const Case& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet para("para");
        row.fill(para);
        EXPECT_EQ(Built(codec, para, row.as), row.octets);
    }
}

// ---- scalars

TEST(Build, Scalars) {
    const Case rows[] = {
        {"integer 0", [](CParaSet& p) { p = 0; }, {}, "02 01 00"},
        {"integer -1", [](CParaSet& p) { p = -1; }, {}, "02 01 ff"},
        {"integer 127", [](CParaSet& p) { p = 127; }, {}, "02 01 7f"},
        {"integer 128", [](CParaSet& p) { p = 128; }, {}, "02 02 00 80"},
        {"integer -128", [](CParaSet& p) { p = -128; }, {}, "02 01 80"},
        {"integer -129", [](CParaSet& p) { p = -129; }, {}, "02 02 ff 7f"},
        {"the largest integer", [](CParaSet& p) { p = INT_MAX; }, {}, "02 04 7f ff ff ff"},
        {"the least integer", [](CParaSet& p) { p = INT_MIN; }, {}, "02 04 80 00 00 00"},
        {"empty text", [](CParaSet& p) { p = ""; }, {}, "04 00"},
        {"text", [](CParaSet& p) { p = "eth0"; }, {}, "04 04 65 74 68 30"},
        {"text with a zero octet",
         [](CParaSet& p) { p = std::string("a\0b", 3); },
         {},
         "04 03 61 00 62"},
        {"0.0 has no contents", [](CParaSet& p) { p = 0.0; }, {}, "09 00"},
        {"1.0", [](CParaSet& p) { p = 1.0; }, {}, "09 03 80 00 01"},
        {"-0.5", [](CParaSet& p) { p = -0.5; }, {}, "09 03 c0 ff 01"},
        {"10.0", [](CParaSet& p) { p = 10.0; }, {}, "09 03 80 01 05"},
        {"infinity",
         [](CParaSet& p) { p = std::numeric_limits<double>::infinity(); },
         {},
         "09 01 40"},
        {"minus infinity",
         [](CParaSet& p) { p = -std::numeric_limits<double>::infinity(); },
         {},
         "09 01 41"},
        {"the longest real, of ten octets",
         [](CParaSet& p) { p = -0x1.fffffffffffffp-1000; },
         {},
         "09 0a c1 fb e4 1f ff ff ff ff ff ff"},
    };
    Check(*CodecOf(""), rows);
}

TEST(Build, TheTypeArgumentConverts) {
    const Case rows[] = {
        {"text as integer", [](CParaSet& p) { p = "42"; }, {2}, "02 01 2a"},
        {"text that is no number", [](CParaSet& p) { p = "x"; }, {2}, "02 01 00"},
        {"a double as integer is -1", [](CParaSet& p) { p = 7.0; }, {2}, "02 01 ff"},
        {"a structure as integer is -1", [](CParaSet& p) { p["a"] = 1; }, {2}, "02 01 ff"},
        {"an integer as real", [](CParaSet& p) { p = 10; }, {9}, "09 03 80 01 05"},
        {"text as real is 0", [](CParaSet& p) { p = "1.5"; }, {9}, "09 00"},
        // A size, and no octets to give.
        {"an integer as text", [](CParaSet& p) { p = 7; }, {4}, "04 04 00 00 00 00"},
        {"a double as text", [](CParaSet& p) { p = 7.5; }, {4}, "04 08 00 00 00 00 00 00 00 00"},
        {"a list of two as text", [](CParaSet& p) { p[1] = 7; }, {4}, "04 02 00 00"},
        {"a structure of one as text", [](CParaSet& p) { p["a"] = 7; }, {4}, "04 01 00"},
    };
    Check(*CodecOf(""), rows);
}

// The tag octet is the low eight bits of the tag, whatever the tag came from.
TEST(Build, Tags) {
    const Case rows[] = {
        {"of the type", [](CParaSet& p) { p = 7; }, {2, -1, -1}, "02 01 07"},
        {"given", [](CParaSet& p) { p = 7; }, {2, -1, 0x82}, "82 01 07"},
        {"given, for the value's own type", [](CParaSet& p) { p = 7; }, {-1, -1, 0x82}, "82 01 07"},
        {"0", [](CParaSet& p) { p = 7; }, {2, -1, 0}, "00 01 07"},
        {"above eight bits", [](CParaSet& p) { p = 7; }, {2, -1, 0x182}, "82 01 07"},
        {"negative", [](CParaSet& p) { p = 7; }, {2, -1, -2}, "fe 01 07"},
        {"of a structure", [](CParaSet& p) { p["a"] = 1; }, {48, 7, 0xa1}, "a1 83 00 00 00"},
        {"of a key", [](CParaSet& p) { p["a"] = 1; }, {5000, -1, 0xa1}, "a1 83 00 00 00"},
        {"a key's own", [](CParaSet& p) { p["a"] = 1; }, {5000, -1, -1}, "30 83 00 00 00"},
        {"of a list", [](CParaSet& p) { p[0] = 1; }, {257, 2, 0xa1}, "a1 83 00 00 03 02 01 01"},
        {"a list's own", [](CParaSet& p) { p[0] = 1; }, {257, 2, -1}, "30 83 00 00 03 02 01 01"},
        {"of a named value",
         [](CParaSet& p) { p = 1; },
         {258, -1, 0xa1},
         "a1 83 00 00 09 04 04 70 61 72 61 02 01 01"},
        {"a named value's own",
         [](CParaSet& p) { p = 1; },
         {258, -1, -1},
         "30 83 00 00 09 04 04 70 61 72 61 02 01 01"},
        {"of a wrapper", [](CParaSet& p) { p = 1; }, {256, -1, 0xa5}, "a5 03 02 01 01"},
        {"a wrapper's own is 0", [](CParaSet& p) { p = 1; }, {256, -1, -1}, "00 03 02 01 01"},
    };
    Check(*CodecOf(""), rows);
}

TEST(Build, AParameterThatIsNotValuedIsNothing) {
    const auto codec = CodecOf("1100 0 id 2 -1 -1\n");
    for (const As as :
         {As{}, As{2}, As{48, 1100}, As{1100}, As{256}, As{257, 2}, As{258}, As{77}}) {
        CParaSet para("para");
        EXPECT_EQ(Built(*codec, para, as), "") << as.type;
        EXPECT_EQ(Built(*codec, para, as, 0), "") << as.type;
        EXPECT_EQ(Built(*codec, para, as, -1), "") << as.type;
    }
}

TEST(Build, AnyOtherTypeFails) {
    const auto codec = CodecOf("");
    for (const int type : {0, 1, 3, 5, 6, 10, 12, 16, 49, 160, 255, 259, 1000, 1023, -2, INT_MIN}) {
        CParaSet para("para", 7);
        EXPECT_EQ(Built(*codec, para, {type}), kNoSuchType + std::string(" @0")) << type;
    }
    CParaSet reserved("para", 7);
    reserved.SetType(CParaSet::PARA_RESERVED);
    EXPECT_EQ(Built(*codec, reserved), kNoSuchType + std::string(" @0"));
    EXPECT_EQ(Built(*codec, reserved, {256}), "00 02 05 00") << "a wrapper around null";
}

// ---- headers

TEST(Build, APrimitiveLengthIsTheShortest) {
    const auto codec = CodecOf("");
    const struct {
        std::size_t size;
        const char* header;
    } rows[] = {
        {0, "04 00"},
        {1, "04 01"},
        {127, "04 7f"},
        {128, "04 81 80"},
        {255, "04 81 ff"},
        {256, "04 82 01 00"},
        {65535, "04 82 ff ff"},
        {65536, "04 83 01 00 00"},
        {0xffffff, "04 83 ff ff ff"},
        {0x1000000, "04 84 01 00 00 00"},
    };
    for (const auto& row : rows) {
        CParaSet para("para", std::string(row.size, 'x').c_str());
        const std::string header = support::Octets(row.header);
        std::string why;
        const int needed = static_cast<int>(header.size() + row.size);
        const std::string octets = support::Build(*codec, para, {}, needed, why);
        EXPECT_EQ(why, "");
        EXPECT_EQ(Hex(octets.substr(0, header.size())), row.header);
        EXPECT_TRUE(octets.substr(header.size()) == std::string(row.size, 'x')) << row.size;
        EXPECT_EQ(Built(*codec, para, {}, needed - 1), kNoRoom + std::string(" @0")) << row.size;
    }
}

// The tag, 0x83 and three octets, even around nothing.
TEST(Build, AConstructedHeaderHasFiveOctets) {
    const Case rows[] = {
        {"a key with no present children",
         [](CParaSet& p) { p["x"] = 1; },
         {1100},
         "30 83 00 00 00"},
        {"an unknown key", [](CParaSet& p) { p["x"] = 1; }, {48, 9999}, "30 83 00 00 00"},
        {"a structure without a description",
         [](CParaSet& p) { p["x"] = 1; },
         {},
         "30 83 00 00 00"},
        {"a resource",
         [](CParaSet& p) {
             const AsnDistinguishedResource resource = Resource("NE=1");
             p = &resource;
         },
         {},
         "30 83 00 00 00"},
        {"an empty list",
         [](CParaSet& p) {
             p[0] = 1;
             p.remove(0);
         },
         {},
         "30 83 00 00 00"},
        {"a list of named values without any",
         [](CParaSet& p) { p = 5; },
         {257, 258},
         "30 83 00 00 00"},
        {"a named value of one octet",
         [](CParaSet& p) {
             p = "";
             p.SetName("");
         },
         {258},
         "30 83 00 00 04 04 00 04 00"},
    };
    Check(*CodecOf("1100 0 id 2 -1 -1\n1100 0 other 4 -1 -1\n"), rows);
}

TEST(Build, FewerThanFiveFreeOctetsFail) {
    const auto codec = CodecOf("1100 0 id 2 -1 -1\n");
    CParaSet structure("para");
    structure["x"] = 1;
    CParaSet list("para");
    list[0];
    const struct {
        const char* name;
        CParaSet& para;
        As as;
        int needed;
    } rows[] = {
        {"a key", structure, {1100}, 5},
        {"a sequence", structure, {48, 1100}, 5},
        {"a list", list, {257, 2}, 5},
        {"a list of its value's type", list, {}, 5},
        {"a list of named values", list, {257, 258}, 5},
        {"a named value", structure, {258}, 16},
        {"a wrapper", structure, {256}, 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const int room : {INT_MIN, -1, 0, 1, 2, 3, 4}) {
            EXPECT_EQ(Built(*codec, row.para, row.as, room).substr(0, 29), kNoRoom) << room;
        }
        EXPECT_EQ(Built(*codec, row.para, row.as, row.needed - 1).substr(0, 29), kNoRoom);
        EXPECT_NE(Built(*codec, row.para, row.as, row.needed).substr(0, 4), "null");
    }
}

TEST(Build, NoBufferIsNoRoom) {
    const auto codec = CodecOf("");
    for (const int room : {0, 5, 100, -1}) {
        CParaSet para("para", 7);
        FrameUtil::CodecFault fault;
        int len = room;
        EXPECT_EQ(codec->build(para, nullptr, len, -1, -1, -1, &fault), nullptr);
        EXPECT_EQ(len, room);
        EXPECT_EQ(support::TextOf(fault), "the buffer is too small @0");
        EXPECT_EQ(codec->buildAsString(para, nullptr, len), nullptr);
    }
}

// ---- descriptions

TEST(Build, ItemsInTheFilesOrder) {
    const Case rows[] = {
        {"all present, though the names sort otherwise",
         [](CParaSet& p) {
             p["a"] = 1;
             p["m"] = "x";
             p["z"] = 1.0;
         },
         {1100},
         "30 83 00 00 0b 09 03 80 00 01 04 01 78 02 01 01"},
        {"one is missing, one not valued",
         [](CParaSet& p) {
             p["z"];
             p["a"] = 1;
         },
         {1100},
         "30 83 00 00 03 02 01 01"},
        {"what is not described is not written",
         [](CParaSet& p) {
             p["a"] = 1;
             p["b"] = 2;
         },
         {1100},
         "30 83 00 00 03 02 01 01"},
        {"an item twice is written twice",
         [](CParaSet& p) { p["a"] = 1; },
         {1101},
         "30 83 00 00 06 02 01 01 02 01 01"},
        {"48 with a key", [](CParaSet& p) { p["a"] = 1; }, {48, 1100}, "30 83 00 00 03 02 01 01"},
        {"a small key is one behind 48 only",
         [](CParaSet& p) { p["a"] = 1; },
         {48, 7},
         "30 83 00 00 03 82 01 01"},
        {"nested keys, of either spelling",
         [](CParaSet& p) {
             p["in"]["a"] = 1;
             p["on"]["a"] = 2;
         },
         {1102},
         "30 83 00 00 10 30 83 00 00 03 02 01 01 a1 83 00 00 03 02 01 02"},
        {"a scalar as structure", [](CParaSet& p) { p = 5; }, {1100}, "30 83 00 00 00"},
    };
    Check(*CodecOf("1100 0 z 9 -1 -1\n1100 0 m 4 -1 -1\n1100 0 a 2 -1 -1\n"
                   "1101 0 a 2 -1 -1\n1101 0 a 2 -1 -1\n"
                   "7 0 a 2 -1 130\n"
                   "1102 0 in 1100 -1 -1\n1102 0 on 48 1100 161\n"),
          rows);
}

// However many items a key has, each finds its own child, in the file's order, and whatever
// the structure has not is entered.
TEST(Build, DescriptionsOfEverySize) {
    for (const int items : {1, 2, 31, 32, 33, 34, 100, 1000}) {
        SCOPED_TRACE(items);
        std::string table;
        CParaSet all("para");
        CParaSet some("para");
        std::string all_octets;
        std::string some_octets;
        for (int i = 0; i < items; ++i) {
            const int number = i * 37 % 1009;  // neither rising nor falling
            const std::string name = "n" + std::to_string(number);
            table += "1100 0 " + name + " 2 -1 -1\n";
            all[name] = i % 100;
            all_octets += {'\x02', '\x01', static_cast<char>(i % 100)};
            if (i % 3 == 0) {
                some[name] = i % 100;
                some_octets += {'\x02', '\x01', static_cast<char>(i % 100)};
            }
        }
        all["a"] = some["a"] = 1;  // in front of them all, and behind
        all["z"] = some["z"] = 1;
        const auto codec = CodecOf(table);
        std::string why;
        EXPECT_EQ(support::Build(*codec, all, {1100}, 5000, why).substr(5), all_octets);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(support::Build(*codec, some, {1100}, 5000, why).substr(5), some_octets);
            EXPECT_EQ(some.GetMapValue().size(), static_cast<std::size_t>(items) + 2);
        }
    }
}

// Names of every length, and others that differ from them in one octet only.
TEST(Build, ANameIsItselfInEveryOctet) {
    for (std::size_t size = 1; size <= 40; ++size) {
        const std::string name(size, 'n');
        const auto codec = CodecOf("1100 0 " + name + " 2 -1 -1\n");
        CParaSet para(name.c_str());
        para[name] = 7;
        EXPECT_EQ(Built(*codec, para, {1100}), "30 83 00 00 03 02 01 07") << size;
        CParaSet others("para");
        for (std::size_t at = 0; at < size; ++at) {
            std::string other = name;
            other[at] = 'o';
            others[other] = 7;
            other[at] = 'm';
            others[other] = 7;
        }
        others[name + "n"] = 7;
        others[name.substr(1) + "."];  // ends in a dot: a child without a name below it
        EXPECT_EQ(Built(*codec, others, {1100}), "30 83 00 00 00") << size;
        // As a name of a named value it is written whole.
        std::string why;
        para.SetType(CParaSet::PARA_INT);
        EXPECT_EQ(support::Build(*codec, para, {258}, 100, why).substr(5, 2 + size),
                  Element(4, name));
    }
}

// A description item of type 5 always writes 05 00, whether or not a child of that name
// exists.
TEST(Build, AnItemOfTypeNull) {
    const auto codec = CodecOf("1100 0 spare 5 -1 -1\n1101 0 spare 5 77 130\n");
    for (const int key : {1100, 1101}) {
        CParaSet without("para");
        without["x"] = 1;
        EXPECT_EQ(Built(*codec, without, {key}), "30 83 00 00 02 05 00");
        EXPECT_EQ(without.GetMapValue().count("spare"), 0u);
        CParaSet with("para");
        with["spare"] = 7;
        EXPECT_EQ(Built(*codec, with, {key}), "30 83 00 00 02 05 00");
        EXPECT_EQ(Built(*codec, with, {key}, 6), kNoRoom + std::string(" in spare @5"));
    }
}

// A missing child described as type 16 or 257 with a tag below 128 writes 30 00.
TEST(Build, AMissingList) {
    const struct {
        const char* item;
        const char* contents;  // of the structure
    } rows[] = {
        {"257 2 -1", "30 00"},   {"257 258 -1", "30 00"}, {"257 2 0", "30 00"},
        {"257 2 127", "30 00"},  {"257 2 128", ""},       {"257 2 161", ""},
        {"16 -1 -1", "30 00"},   {"16 -1 127", "30 00"},  {"16 -1 128", ""},
        {"258 -1 -1", ""},       {"48 1100 -1", ""},      {"2 -1 -1", ""},
        {"4 -1 127", ""},        {"256 -1 -1", ""},       {"1100 -1 -1", ""},
        {"257 2 -200", "30 00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.item);
        const auto codec = CodecOf("1100 0 list " + std::string(row.item) + "\n");
        CParaSet missing("para");
        missing["x"] = 1;
        const std::string empty = "30 83 00 00 00";
        const std::string expected =
            *row.contents == '\0' ? empty : "30 83 00 00 02 " + std::string(row.contents);
        EXPECT_EQ(Built(*codec, missing, {1100}), expected);
        EXPECT_EQ(Built(*codec, missing, {1100}), expected) << "with the entry that is there now";
        if (expected != empty) {
            EXPECT_EQ(Built(*codec, missing, {1100}, 6), kNoRoom + std::string(" in list @5"));
        }
        // It is there, and has no value: nothing is written.
        CParaSet not_valued("para");
        not_valued["list"];
        EXPECT_EQ(Built(*codec, not_valued, {1100}), empty);
    }
}

TEST(Build, AnItemOfType16ThatIsThereCannotBeWritten) {
    const auto codec = CodecOf("1100 0 list 16 -1 -1\n");
    CParaSet para("para");
    para["list"][0] = 1;
    EXPECT_EQ(Built(*codec, para, {1100}), kNoSuchType + std::string(" in list @5"));
}

TEST(Build, MissingNamesBecomeEntriesWithoutAChild) {
    const auto codec = CodecOf("1100 0 b 2 -1 -1\n1100 0 a 2 -1 -1\n1100 0 c 257 2 -1\n");
    CParaSet para("para");
    para["b"] = 1;
    EXPECT_EQ(Built(*codec, para, {1100}), "30 83 00 00 05 02 01 01 30 00");
    EXPECT_EQ(Shape(para), "{a: -, b: 1, c: -}");
    // Those before the failure, after one.
    CParaSet partly("para");
    partly["b"] = 1;
    EXPECT_EQ(Built(*codec, partly, {1100}, 8).substr(0, 4), "null");
    EXPECT_EQ(Shape(partly), "{a: -, b: 1, c: -}");
}

// ---- lists, named values, wrappers

TEST(Build, Lists) {
    const Case rows[] = {
        {"of integers",
         [](CParaSet& p) { p[1] = 2, p[0] = 1; },
         {257, 2},
         "30 83 00 00 06 02 01 01 02 01 02"},
        {"slots that are null, elements that are not valued",
         [](CParaSet& p) { p[4] = 2, p[1], p[2] = 1; },
         {257, 2},
         "30 83 00 00 06 02 01 01 02 01 02"},
        {"of each value's own type",
         [](CParaSet& p) { p[0] = 1, p[1] = "x", p[2][0] = 2; },
         {},
         "30 83 00 00 0e 02 01 01 04 01 78 30 83 00 00 03 02 01 02"},
        {"of structures",
         [](CParaSet& p) { p[0]["a"] = 1, p[1]["b"] = 2; },
         {257, 1100},
         "30 83 00 00 0d 30 83 00 00 03 02 01 01 30 83 00 00 00"},
        {"of lists",
         [](CParaSet& p) { p[0][0] = 1; },
         {257, 257},
         "30 83 00 00 08 30 83 00 00 03 02 01 01"},
        {"of wrappers", [](CParaSet& p) { p[0] = 1; }, {257, 256}, "30 83 00 00 05 00 03 02 01 01"},
        {"of nulls",
         [](CParaSet& p) { p[0] = 1; },
         {257, 5},
         kNoSuchType + std::string(" in [0] @5")},
        {"of a structure's children: it has no list",
         [](CParaSet& p) { p["a"] = 1; },
         {257, 2},
         "30 83 00 00 00"},
        {"of named values, in name order",
         [](CParaSet& p) { p["b"] = 2, p["a"] = "x", p["c"], p["d"] = 1, p.clear("d"); },
         {257, 258},
         "30 83 00 00 16 30 83 00 00 06 04 01 61 04 01 78 30 83 00 00 06 04 01 62 02 01 02"},
        {"of named values, of an array's elements: they have no names",
         [](CParaSet& p) { p[0] = 1; },
         {257, 258},
         "30 83 00 00 00"},
    };
    Check(*CodecOf("1100 0 a 2 -1 -1\n"), rows);
}

TEST(Build, NamedValues) {
    const Case rows[] = {
        {"an integer stays one",
         [](CParaSet& p) { p = 42; },
         {258},
         "30 83 00 00 09 04 04 70 61 72 61 02 01 2a"},
        {"its own name, not the key it is known by",
         [](CParaSet& p) { p["key"] = 1, p["key"].SetName("n"); },
         {257, 258},
         "30 83 00 00 0b 30 83 00 00 06 04 01 6e 02 01 01"},
        {"a structure has no description there",
         [](CParaSet& p) { p["a"] = 1; },
         {258, 1100},
         "30 83 00 00 0b 04 04 70 61 72 61 30 83 00 00 00"},
        {"a list",
         [](CParaSet& p) { p[0] = 1; },
         {258},
         "30 83 00 00 0e 04 04 70 61 72 61 30 83 00 00 03 02 01 01"},
        {"an empty name",
         [](CParaSet& p) { p = 1, p.SetName(""); },
         {258},
         "30 83 00 00 05 04 00 02 01 01"},
        {"a type that cannot be written",
         [](CParaSet& p) { p.SetType(CParaSet::PARA_RESERVED); },
         {258},
         kNoSuchType + std::string(" @11")},
    };
    Check(*CodecOf("1100 0 a 2 -1 -1\n"), rows);
    CParaSet long_name("para", 1);
    long_name.SetName(std::string(200, 'n'));
    EXPECT_THAT(Built(*CodecOf(""), long_name, {258}),
                testing::StartsWith("30 83 00 00 ce 04 81 c8 6e 6e"));
}

TEST(Build, Wrappers) {
    const Case rows[] = {
        {"a string", [](CParaSet& p) { p = "x"; }, {256, -1, 165}, "a5 03 04 01 78"},
        {"a list", [](CParaSet& p) { p[0] = 1; }, {256, -1, 165}, "a5 08 30 83 00 00 03 02 01 01"},
        {"a structure, without a description",
         [](CParaSet& p) { p["a"] = 1; },
         {256, 1100, 165},
         "a5 05 30 83 00 00 00"},
        {"of something that has no type",
         [](CParaSet& p) { p.SetType(CParaSet::PARA_RESERVED); },
         {256, -1, 165},
         "a5 02 05 00"},
    };
    Check(*CodecOf("1100 0 a 2 -1 -1\n"), rows);
}

// Contents of 127 octets fit the reserved header; more fail instead of spoiling the stream.
TEST(Build, AWrapperHoldsUpTo127Octets) {
    const auto codec = CodecOf("1100 0 w 256 -1 165\n");
    for (const int text : {124, 125, 126, 127, 200}) {
        CParaSet para("para");
        para["w"] = std::string(static_cast<std::size_t>(text), 'x');
        const std::string built = Built(*codec, para, {1100});
        if (text <= 125) {
            EXPECT_THAT(built, testing::HasSubstr(" a5 ")) << text;
            CParaSet back("back");
            EXPECT_EQ(support::Parse(*codec, support::Octets(built), back, {1100}), "");
            EXPECT_EQ(Shape(back), Shape(para));
        } else {
            EXPECT_EQ(built, "null: the contents do not fit the reserved header in w @5") << text;
        }
    }
}

TEST(Build, AStructureHoldsUpTo16777215Octets) {
    const auto codec = CodecOf("1100 0 a 4 -1 -1\n");
    constexpr std::size_t kMost = 0xffffff;
    constexpr int kRoom = 0x1000100;
    const struct {
        const char* name;
        As as;
        std::size_t overhead;  // of the contents beyond the text
        void (*fill)(CParaSet&, const std::string&);
    } rows[] = {
        {"a key", {1100}, 5, [](CParaSet& p, const std::string& text) { p["a"] = text; }},
        {"a list", {257, 4}, 5, [](CParaSet& p, const std::string& text) { p[0] = text; }},
        {"a named value", {258}, 11, [](CParaSet& p, const std::string& text) { p = text; }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::size_t text = kMost - row.overhead;
        std::string why;
        {
            CParaSet para("para");
            row.fill(para, std::string(text, 'x'));
            const std::string octets = support::Build(*codec, para, row.as, kRoom, why);
            EXPECT_EQ(Hex(octets.substr(0, 5)), "30 83 ff ff ff") << why;
            EXPECT_EQ(octets.size(), kMost + 5);
        }
        CParaSet para("para");
        row.fill(para, std::string(text + 1, 'x'));
        EXPECT_EQ(support::Build(*codec, para, row.as, kRoom, why), "");
        EXPECT_EQ(why, "the contents do not fit the reserved header @0");
    }
}

// ---- failures

TEST(Build, AFaultNamesTheChildAndTheOctet) {
    const auto codec = CodecOf(
        "1100 0 ne 1101 -1 -1\n1101 0 id 2 -1 -1\n1101 0 ports 257 257 -1\n"
        "1102 0 named 257 258 -1\n1102 0 no 3 -1 -1\n");
    CParaSet para("para");
    para["ne.id"] = 7;
    para["ne.ports"][0];
    para["ne.ports"][2][1] = 300;
    EXPECT_EQ(Built(*codec, para, {1100}, 22), kNoRoom + std::string(" in ne.ports[2] @18"));
    EXPECT_EQ(Built(*codec, para, {1100}, 26), kNoRoom + std::string(" in ne.ports[2][1] @23"));
    CParaSet other("para");
    other["named"]["x"].SetType(CParaSet::PARA_RESERVED);
    EXPECT_EQ(Built(*codec, other, {1102}), kNoSuchType + std::string(" in named.x @18"));
    CParaSet third("para");
    third["no"] = 1;
    EXPECT_EQ(Built(*codec, third, {1102}), kNoSuchType + std::string(" in no @7"));
    int len = 3;
    unsigned char octets[3];
    EXPECT_EQ(codec->build(para, octets, len, 1100), nullptr) << "nobody asks why";
}

// What a build writes as text of a number, in a tree or not, stays as it was.
TEST(Build, LeavesTheTreeAsItIsButForTheEntries) {
    const auto codec = CodecOf("1100 0 named 257 258 -1\n1100 0 n 4 -1 -1\n1100 0 s 2 -1 -1\n");
    CParaSet para("para");
    para["named"]["i"] = 42;
    para["n"] = 7;
    para["s"] = "12";
    const std::string before = Shape(para);
    CapturedLog log;
    EXPECT_NE(Built(*codec, para, {1100}).substr(0, 4), "null");
    EXPECT_EQ(Shape(para), before);
    EXPECT_THAT(log.Texts(), testing::IsEmpty());
}

}  // namespace
