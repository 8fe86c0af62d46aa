#include "kelpctl/arguments.h"

#include <gmock/gmock.h>

#include "frameutil/records.h"

namespace {

using kelpctl::AddObject;
using kelpctl::AddPair;
using kelpctl::Arguments;
using testing::HasSubstr;
using testing::VariantWith;

// A value's look decides its type: codes and prefixes that only resemble numbers are text.
TEST(Pairs, AreTypedByTheirLook) {
    const struct {
        const char* pair;
        kelpctl::ArgumentValue value;
    } cases[] = {
        {"a=0", 0},
        {"a=-7", -7},
        {"a=2147483647", 2147483647},
        {"a=-2147483648", -2147483647 - 1},
        {"a=1.5", 1.5},
        {"a=-0.25", -0.25},
        {"a=6.02e+23", 6.02e23},
        {"a=007", std::string("007")},
        {"a=00", std::string("00")},
        {"a=+1", std::string("+1")},
        {"a=2E10", std::string("2E10")},
        {"a=.5", std::string(".5")},
        {"a=1.", std::string("1.")},
        {"a=1.3.6", std::string("1.3.6")},
        {"a=1.0e999", std::string("1.0e999")},
        {"a=-", std::string("-")},
        {"a=", std::string()},
        {"a=true", std::string("true")},
        {"a=b=c", std::string("b=c")},
        {"a=\u00c4", std::string("\u00c4")},
        {"a:=42", 42},
        {"a:=\"42\"", std::string("42")},
        {"a:=1e3", 1000.0},
        {"a:=1.0", 1.0},
        {"a:=-3", -3},
        {"a:=true", 1},
        {"a:=false", 0},
        {"a:=\"x\\ny\"", std::string("x\ny")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pair);
        Arguments arguments;
        std::string why;
        ASSERT_TRUE(AddPair(c.pair, arguments, why)) << why;
        ASSERT_EQ(arguments.size(), 1U);
        EXPECT_EQ(arguments[0].name, "a");
        EXPECT_EQ(arguments[0].value, c.value);
    }
}

TEST(Pairs, MalformedOnesAreNamed) {
    const struct {
        const char* pair;
        const char* why;
    } cases[] = {
        {"", "malformed argument ''"},
        {"x", "malformed argument 'x': expected key=value or key:=json"},
        {"=1", "malformed argument '=1'"},
        {":=1", "malformed argument ':=1'"},
        {"\x1b=1", "argument '\\x1b': a name is"},
        {"a.b=1", "argument 'a.b': a name is"},
        {"##UserID=1", "argument '##UserID': a name is"},
        {"1a=1", "argument '1a': a name is"},
        {"a=2147483648", "argument 'a': 2147483648 does not fit an integer of 32 bits"},
        {"a:=5000000000", "argument 'a': 5000000000 does not fit"},
        {"a:=123456789012345678901234567890", "does not fit"},
        {"a:={", "argument 'a': malformed JSON"},
        {"a:=", "argument 'a': malformed JSON"},
        {"a:=null", "argument 'a': neither a text, a number, true nor false"},
        {"a:=[1]", "argument 'a': neither"},
        {"a:=\"x\\u0000\"", "argument 'a': a text with a zero octet"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pair);
        Arguments arguments;
        std::string why;
        EXPECT_FALSE(AddPair(c.pair, arguments, why));
        EXPECT_THAT(why, HasSubstr(c.why));
        EXPECT_TRUE(arguments.empty());
    }
}

TEST(Pairs, ANameIsGivenOnce) {
    Arguments arguments;
    std::string why;
    ASSERT_TRUE(AddPair("a=1", arguments, why));
    EXPECT_FALSE(AddPair("a=2", arguments, why));
    EXPECT_EQ(why, "argument 'a': given twice");
    EXPECT_FALSE(AddObject(R"({"b":1,"a":2})", arguments, why));
    EXPECT_EQ(arguments.size(), 1U);
}

TEST(Objects, HoldTextsAndNumbers) {
    Arguments arguments;
    std::string why;
    ASSERT_TRUE(AddObject(R"({"a":1,"b":2.5,"c":"007"})", arguments, why)) << why;
    ASSERT_EQ(arguments.size(), 3U);
    EXPECT_THAT(arguments[0].value, VariantWith<std::int32_t>(1));
    EXPECT_THAT(arguments[1].value, VariantWith<double>(2.5));
    EXPECT_THAT(arguments[2].value, VariantWith<std::string>("007"));
    for (const char* text : {"[]", "1", "{\"a\":{}}", "{\"a\":1,\"a\":2}", "{", ""}) {
        Arguments none;
        EXPECT_FALSE(AddObject(text, none, why)) << text;
        EXPECT_TRUE(none.empty()) << text;
    }
}

TEST(Request, CarriesOneRowOrNothing) {
    FrameUtil::CParaSet parameters("request");
    kelpctl::FillRequest({{"n", 5}, {"d", 0.5}, {"t", std::string("x")}}, 9, parameters);
    FrameUtil::AsnCommonRequest request;
    parameters.Para2CommonReqAsn(request);
    FrameUtil::CParaSet received("received");
    received.CommonReqAsn2Para(request);
    EXPECT_EQ(received["##UserID"].asInt(), 9);
    EXPECT_EQ(received.GetRowCount(), 1);
    EXPECT_EQ(received["n"].asInt(), 5);
    EXPECT_EQ(received["d"].asDouble(), 0.5);
    EXPECT_STREQ(received["t"].asString(), "x");

    FrameUtil::CParaSet bare("request");
    kelpctl::FillRequest({}, 0, bare);
    FrameUtil::AsnCommonRequest nothing;
    bare.Para2CommonReqAsn(nothing);
    EXPECT_FALSE(static_cast<bool>(nothing.tables));
}

}  // namespace
