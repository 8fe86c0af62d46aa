// The build for peers that expect every named value as text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "support/captured_log.h"
#include "support/codec.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::Built;
using support::CodecOf;
using support::Form;

std::string BuiltAsText(const FrameUtil::CEndeCode& codec, CParaSet& para, As as = {},
                        int room = support::kAmple) {
    return Built(codec, para, as, room, Form::kText);
}

// A named value holding the integer 42 is written as the name, then the two octets of the
// text 42 as the value, and afterwards the parameter holds the text 42.
TEST(BuildAsString, ANamedIntegerIsTextAndStaysText) {
    const struct {
        const char* name;
        int value;
        const char* octets;
        const char* afterwards;
    } rows[] = {
        {"42", 42, "30 83 00 00 07 04 01 6e 04 02 34 32", "\"42\""},
        {"0", 0, "30 83 00 00 06 04 01 6e 04 01 30", "\"0\""},
        {"-1", -1, "30 83 00 00 07 04 01 6e 04 02 2d 31", "\"-1\""},
        {"the largest", INT_MAX, "30 83 00 00 0f 04 01 6e 04 0a 32 31 34 37 34 38 33 36 34 37",
         "\"2147483647\""},
        {"the least", INT_MIN, "30 83 00 00 10 04 01 6e 04 0b 2d 32 31 34 37 34 38 33 36 34 38",
         "\"-2147483648\""},
    };
    const auto codec = CodecOf("");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet para("n", row.value);
        CapturedLog log;
        EXPECT_EQ(BuiltAsText(*codec, para, {258}), row.octets);
        EXPECT_EQ(Shape(para), row.afterwards);
        // What an assignment of text over an integer is traced with.
        EXPECT_THAT(
            log.Texts(),
            testing::ElementsAre(
                "[Frame][CParaSet::operator =(const std::string strValue)], m_iValType = 2"));
        EXPECT_EQ(BuiltAsText(*codec, para, {258}), row.octets) << "once more";
        EXPECT_EQ(Built(*codec, para, {258}), row.octets) << "build sees the text";
    }
}

// A named value holding 4294967296 (two to the 32nd) is written as the text 0.
TEST(BuildAsString, ValuesOutsideThe32BitsWrap) {
    const auto codec = CodecOf("");
    CParaSet para("n");
    para = 4294967296L;
    EXPECT_EQ(BuiltAsText(*codec, para, {258}), "30 83 00 00 06 04 01 6e 04 01 30");
    EXPECT_EQ(Shape(para), "\"0\"");
    CParaSet wrapped("n");
    wrapped = 4294967295L;
    EXPECT_EQ(BuiltAsText(*codec, wrapped, {258}), "30 83 00 00 07 04 01 6e 04 02 2d 31");
}

TEST(BuildAsString, OtherNamedValuesAreAsInBuild) {
    const auto codec = CodecOf("");
    void (*const fills[])(CParaSet&) = {
        [](CParaSet& p) { p = "42"; },
        [](CParaSet& p) { p = 42.0; },
        [](CParaSet& p) { p["a"] = 42; },
        [](CParaSet&) {},
    };
    for (const auto fill : fills) {
        CParaSet para("n");
        fill(para);
        const std::string before = Shape(para);
        EXPECT_EQ(BuiltAsText(*codec, para, {258}), Built(*codec, para, {258}));
        EXPECT_EQ(Shape(para), before);
    }
}

// Wherever a named value stands; integers that are not named values stay integers.
TEST(BuildAsString, AtEveryDepth) {
    const auto codec = CodecOf(
        "1100 0 plain 2 -1 -1\n1100 0 item 258 -1 -1\n1100 0 named 257 258 -1\n"
        "1100 0 in 1101 -1 -1\n1100 0 list 257 258 -1\n1100 0 more 257 1101 -1\n"
        "1101 0 x 257 258 161\n1101 0 y 2 -1 -1\n");
    CParaSet para("p");
    para["plain"] = 1;
    para["item"] = 2;
    para["named"]["a"] = 3;
    para["in"]["x"]["b"] = 4;
    para["in"]["y"] = 5;
    para["more"][0]["x"]["c"] = 6;
    para["more"][0]["y"] = 7;
    EXPECT_EQ(BuiltAsText(*codec, para, {1100}).substr(0, 4), "30 8");
    EXPECT_EQ(Shape(para),
              "{in: {x: {b: \"4\"}, y: 5}, item: \"2\", list: -, more: [{x: {c: \"6\"}, y: 7}], "
              "named: {a: \"3\"}, plain: 1}");
    // The elements of a named list are of their own types, no named values.
    CParaSet list("n");
    list[0] = 8;
    EXPECT_EQ(BuiltAsText(*codec, list, {258}), "30 83 00 00 0b 04 01 6e 30 83 00 00 03 02 01 08");
    EXPECT_EQ(Shape(list), "[8]");
}

TEST(BuildAsString, AValueReadTwiceIsTextTwice) {
    const auto codec = CodecOf("1100 0 n 258 -1 -1\n1100 0 n 258 -1 -1\n1100 0 n 2 -1 -1\n");
    CParaSet para("p");
    para["n"] = 7;
    EXPECT_EQ(BuiltAsText(*codec, para, {1100}),
              "30 83 00 00 19 30 83 00 00 06 04 01 6e 04 01 37 30 83 00 00 06 04 01 6e 04 01 37 "
              "02 01 07");
}

// A tree without named values produces output identical to build.
TEST(BuildAsString, WithoutNamedValuesItIsBuild) {
    const FrameUtil::CEndeCode codec(CODEC_EXAMPLE);
    CParaSet para("p");
    para["neId"] = 7;
    para["neName"] = "tokyo";
    para["load"] = 0.25;
    para["location"]["site"] = "x";
    para["location"]["latitude"] = 1.5;
    para["interfaces"][1]["index"] = 2;
    para["interfaces"][1]["addresses"][0] = "10.0.0.1";
    para["vendorData"][0] = 5;
    const std::string expected = Built(codec, para, {2000});
    EXPECT_EQ(expected.substr(0, 4), "30 8");
    EXPECT_EQ(BuiltAsText(codec, para, {2000}), expected);
    for (const As as : {As{}, As{2041}, As{256, -1, 165}, As{257, 2}, As{16}}) {
        CParaSet other("o");
        other[0] = 1;
        EXPECT_EQ(BuiltAsText(codec, other, as), Built(codec, other, as));
    }
}

TEST(BuildAsString, FailsAsBuildDoes) {
    const auto codec = CodecOf("1100 0 a 257 258 -1\n1100 0 b 4 -1 -1\n");
    CParaSet para("p");
    para["a"]["x"] = 1;
    para["a"]["y"] = 2;
    para["b"] = "z";
    std::string last;
    int room = 0;
    while ((last = BuiltAsText(*codec, para, {1100}, room)).starts_with("null")) {
        EXPECT_THAT(last, testing::StartsWith("null: the buffer is too small"));
        ++room;
    }
    EXPECT_EQ(room, 35);
    EXPECT_EQ(Shape(para), "{a: {x: \"1\", y: \"2\"}, b: \"z\"}");
    // Some may have changed after a failure: those that were reached.
    CParaSet partly("p");
    partly["a"]["x"] = 1;
    partly["a"]["y"] = 2;
    EXPECT_EQ(BuiltAsText(*codec, partly, {1100}, 25), "null: the buffer is too small in a.y @21");
    EXPECT_EQ(Shape(partly), "{a: {x: \"1\", y: 2}}");
}

}  // namespace
