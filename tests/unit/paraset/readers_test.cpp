// Reading scalars: asInt, asDouble, asString, asResID and value(), on each type.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <locale>
#include <string>

#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;

// The fields are 3, 2.5 and "old"; a reader looks at the one that the type shows.
TEST(Readers, LookAtTheTypesField) {
    struct {
        CParaSet::ValueType type;
        int as_int;
        double as_double;
        const char* as_string;
    } const rows[] = {
        {CParaSet::PARA_NULL, -1, 0.0, nullptr},
        {CParaSet::PARA_DOUBLE, -1, 2.5, "2.5"},
        {CParaSet::PARA_INT, 3, 3.0, "3"},
        {CParaSet::PARA_STRING, 0, 0.0, "old"},
        {CParaSet::PARA_ARRAY, -1, 0.0, nullptr},
        {CParaSet::PARA_STRUCT, -1, 0.0, nullptr},
        {CParaSet::PARA_RESERVED, -1, 0.0, nullptr},
        {CParaSet::PARA_RESID, -1, 0.0, nullptr},
        {kUnknownType, -1, 0.0, nullptr},
    };
    ASSERT_EQ(std::size(rows), std::size(kEveryType));
    for (const auto& row : rows) {
        SCOPED_TRACE(NameOf(row.type));
        CParaSet node("n");
        MakeNode(node, row.type);
        EXPECT_EQ(node.asInt(), row.as_int);
        EXPECT_EQ(node.asDouble(), row.as_double);
        EXPECT_EQ(FieldsOf(node), (Fields{row.type, 3, 2.5, "old"}));
        EXPECT_STREQ(node.asString(), row.as_string);
        const char* left = row.as_string == nullptr ? "old" : row.as_string;
        EXPECT_EQ(FieldsOf(node), (Fields{row.type, 3, 2.5, left}));
    }
}

TEST(AsInt, ReadsTheNumberThatAStringBeginsWith) {
    const struct {
        const char* name;
        std::string text;
        int number;
    } rows[] = {
        {"digits and letters", "42abc", 42},
        {"empty", "", 0},
        {"no number", "abc", 0},
        {"negative", "-12", -12},
        {"plus sign", "+12", 12},
        {"blanks before", " \t\n12", 12},
        {"a sign alone", "-", 0},
        {"fraction", "1.9", 1},
        {"exponent", "1e3", 1},
        {"hexadecimal", "0x10", 0},
        {"octal is decimal", "010", 10},
        {"zero byte inside", std::string("1\0002", 3), 1},
        {"largest", "2147483647", INT_MAX},
        {"one above", "2147483648", INT_MIN},
        {"low 32 bits", "4294967301", 5},
        {"low 32 bits of a negative", "-4294967301", -5},
        {"largest of 64 bits", "9223372036854775807", -1},
        {"beyond 64 bits", "99999999999999999999", -1},
        {"below 64 bits", "-99999999999999999999", 0},
        {"a long number", std::string(100000, '9'), -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet node("n");
        node = row.text;
        EXPECT_EQ(node.asInt(), row.number);
        EXPECT_EQ(node.type(), CParaSet::PARA_STRING);
    }
}

TEST(AsInt, OfADoubleIsNoNumber) {
    CParaSet node("n");
    node = 3.0;
    EXPECT_EQ(node.asInt(), -1);
}

TEST(AsDouble, OfAStringIsNoNumber) {
    CParaSet node("n", "1.5");
    EXPECT_EQ(node.asDouble(), 0.0);
}

TEST(AsString, WritesIntegers) {
    for (const int value : {0, 7, -12, INT_MAX, INT_MIN}) {
        CParaSet node("n", value);
        EXPECT_EQ(node.asString(), std::to_string(value));
        EXPECT_EQ(node.type(), CParaSet::PARA_INT);
        std::string out = "out";
        EXPECT_EQ(node.getBytes(out), 3) << "the node is still an integer";
        EXPECT_EQ(out, "out");
        EXPECT_EQ(node.count(), 1);
        EXPECT_EQ(node.size(), 4);
        EXPECT_EQ(FieldsOf(node).text, std::to_string(value));
    }
}

TEST(AsString, WritesDoublesWithSixDigits) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const char* text;
    } rows[] = {
        {0.1, "0.1"},
        {1234567.0, "1.23457e+06"},
        {123456.0, "123456"},
        {999999.5, "1e+06"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1.0 / 3.0, "0.333333"},
        {100.0, "100"},
        {-2.50, "-2.5"},
        {0.0, "0"},
        {-0.0, "-0"},
        {1e300, "1e+300"},
        {-1e-300, "-1e-300"},
        {std::numeric_limits<double>::max(), "1.79769e+308"},
        {std::numeric_limits<double>::denorm_min(), "4.94066e-324"},
        {kInfinity, "inf"},
        {-kInfinity, "-inf"},
        {std::nan(""), "nan"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        CParaSet node("n");
        node = row.value;
        EXPECT_STREQ(node.asString(), row.text);
        EXPECT_EQ(node.type(), CParaSet::PARA_DOUBLE);
        EXPECT_EQ(FieldsOf(node).text, row.text);
    }
}

class DecimalComma : public std::numpunct<char> {
  protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(AsString, DoesNotAskTheLocale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    CParaSet real("r");
    real = 12345.5;
    CParaSet integer("i", 1234567);
    EXPECT_STREQ(real.asString(), "12345.5");
    EXPECT_STREQ(integer.asString(), "1234567");
    std::locale::global(before);
}

TEST(AsString, PointsAtAllOfAString) {
    CParaSet node("n");
    const std::string text("a\0b", 3);
    node = text;
    EXPECT_EQ(std::string(node.asString(), 4), std::string("a\0b\0", 4));
    EXPECT_EQ(node.asString(), node.asString());
}

TEST(AsResID, DoesNotAskTheType) {
    const AsnDistinguishedResource resource = Resource("dn");
    CParaSet node("n");
    EXPECT_EQ(node.asResID(), nullptr);
    node = &resource;
    AsnDistinguishedResource* record = node.asResID();
    for (const auto type : kEveryType) {
        node.SetType(type);
        EXPECT_EQ(node.asResID(), record);
    }
    record->resDN = "changed in place";
    EXPECT_EQ(node.asResID()->resDN.str(), "changed in place");
}

TEST(Value, IsTheScalarAsAVariant) {
    CParaSet integer("i", INT_MIN);
    EXPECT_EQ(integer.value().GetType(), refl::Enum::DT_INT);
    EXPECT_EQ(integer.value().As_int(), INT_MIN);
    CParaSet real("r");
    real = 2.5;
    EXPECT_EQ(real.value().GetType(), refl::Enum::DT_DOUBLE);
    EXPECT_EQ(real.value().As_double(), 2.5);
    CParaSet text("t");
    for (const std::string& bytes :
         {std::string(), std::string("a\0b", 3), std::string(100, 'x')}) {
        text = bytes;
        EXPECT_EQ(text.value().GetType(), refl::Enum::DT_TEXT);
        EXPECT_EQ(text.value().As_std_string(), bytes);
    }
}

TEST(Value, OfAnyOtherTypeIsRefused) {
    for (const auto type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        const bool scalar = type == CParaSet::PARA_INT || type == CParaSet::PARA_DOUBLE ||
                            type == CParaSet::PARA_STRING;
        EXPECT_EQ(CodeOf([&] { node.value(); }), scalar ? 0 : -1);
    }
}

}  // namespace
