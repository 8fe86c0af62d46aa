// What every reader makes of every kind of value: the table at the top of the header.

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "kelp/value.h"

namespace {

using refl::CBinary;
using refl::CNumeric;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Row {
    const char* name;
    TEValue value;
    long long as_long_long;
    unsigned long long as_unsigned_long_long;
    double as_double;
    std::string as_text;
    std::string as_bytes;
};

std::string BytesOf(const CBinary& binary) {
    return binary.empty() ? std::string() : std::string(binary.data(), binary.length());
}

TEST(Conversion, EveryKindThroughEveryReader) {
    const Row rows[] = {
        {"empty", TEValue(), 0, 0, 0, "", ""},
        {"char", TEValue('A'), 65, 65, 65, "A", "A"},
        {"char zero", TEValue('\0'), 0, 0, 0, std::string(1, '\0'), std::string(1, '\0')},
        {"signed char", TEValue(static_cast<signed char>(-1)), -1, ULLONG_MAX, -1, "\xFF", "\xFF"},
        {"unsigned char", TEValue(static_cast<unsigned char>(255)), 255, 255, 255, "\xFF", "\xFF"},
        {"short", TEValue(static_cast<short>(-2)), -2, ULLONG_MAX - 1, -2, "-2", "-2"},
        {"unsigned short", TEValue(static_cast<unsigned short>(65535)), 65535, 65535, 65535,
         "65535", "65535"},
        {"int", TEValue(INT_MIN), INT_MIN, static_cast<unsigned long long>(INT_MIN), INT_MIN,
         "-2147483648", "-2147483648"},
        {"unsigned int", TEValue(UINT_MAX), UINT_MAX, UINT_MAX, UINT_MAX, "4294967295",
         "4294967295"},
        {"long", TEValue(LONG_MAX), LONG_MAX, LONG_MAX, 9223372036854775808.0,
         "9223372036854775807", "9223372036854775807"},
        {"long 2^53+1", TEValue(9007199254740993L), 9007199254740993, 9007199254740993,
         9007199254740992.0, "9007199254740993", "9007199254740993"},
        {"long long", TEValue(LLONG_MIN), LLONG_MIN, 1ULL << 63U, -9223372036854775808.0,
         "-9223372036854775808", "-9223372036854775808"},
        {"unsigned long", TEValue(ULONG_MAX), -1, ULONG_MAX, 18446744073709551616.0,
         "18446744073709551615", "18446744073709551615"},
        {"unsigned long long", TEValue(1ULL << 63U), LLONG_MIN, 1ULL << 63U, 9223372036854775808.0,
         "9223372036854775808", "9223372036854775808"},
        {"float", TEValue(0.1F), 0, 0, static_cast<double>(0.1F), "0.1", "0.1"},
        {"double", TEValue(-2.75), -2, 0, -2.75, "-2.75", "-2.75"},
        {"double 0.1", TEValue(0.1), 0, 0, 0.1, "0.1", "0.1"},
        {"double too large", TEValue(1e300), LLONG_MAX, ULLONG_MAX, 1e300, "1e+300", "1e+300"},
        {"double too small", TEValue(-1e300), LLONG_MIN, 0, -1e300, "-1e+300", "-1e+300"},
        {"double 2^63", TEValue(9223372036854775808.0), LLONG_MAX, 1ULL << 63U,
         9223372036854775808.0, "9223372036854775808", "9223372036854775808"},
        {"double below 2^63", TEValue(9223372036854774784.0), 9223372036854774784,
         9223372036854774784, 9223372036854774784.0, "9223372036854774784", "9223372036854774784"},
        {"infinity", TEValue(kInfinity), LLONG_MAX, ULLONG_MAX, kInfinity, "inf", "inf"},
        {"minus infinity", TEValue(-kInfinity), LLONG_MIN, 0, -kInfinity, "-inf", "-inf"},
        {"text", TEValue("42"), 42, 42, 42, "42", "42"},
        {"text with a tail", TEValue("42abc"), 42, 42, 42, "42abc", "42abc"},
        {"text without a number", TEValue("abc"), 0, 0, 0, "abc", "abc"},
        {"empty text", TEValue(""), 0, 0, 0, "", ""},
        {"binary", TEValue(CBinary("7\0x", 3)), 0, 0, 0, std::string("7\0x", 3),
         std::string("7\0x", 3)},
        {"empty binary", TEValue(CBinary()), 0, 0, 0, "", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.value.As_long_long(), row.as_long_long) << row.name;
        EXPECT_EQ(row.value.As_long(), row.as_long_long) << row.name;
        EXPECT_EQ(row.value.As_unsigned_long_long(), row.as_unsigned_long_long) << row.name;
        EXPECT_EQ(row.value.As_unsigned_long(), row.as_unsigned_long_long) << row.name;
        EXPECT_EQ(row.value.As_double(), row.as_double) << row.name;
        EXPECT_EQ(row.value.As_CNumeric().As<double>(), row.as_double) << row.name;
        EXPECT_EQ(row.value.As_std_string(), row.as_text) << row.name;
        EXPECT_EQ(row.value.As_TEString(), row.as_text) << row.name;
        EXPECT_EQ(BytesOf(row.value.As_CBinary()), row.as_bytes) << row.name;
        EXPECT_EQ(row.value.As_CBinary().data() == nullptr, row.as_bytes.empty()) << row.name;
    }
}

TEST(Conversion, NotANumberReadsAsZero) {
    EXPECT_EQ(TEValue(kNan).As_int(), 0);
    EXPECT_EQ(TEValue(kNan).As_unsigned_long(), 0U);
    EXPECT_TRUE(std::isnan(TEValue(kNan).As_double()));
    EXPECT_TRUE(std::isnan(TEValue(kNan).As_float()));
}

// A whole number read into a narrower type keeps its low bits; a floating one takes the
// nearest value of the type.
TEST(Conversion, NarrowReaders) {
    const TEValue whole(0x1'2345'9ABCLL);
    EXPECT_EQ(whole.As_char(), static_cast<char>(0xBC));
    EXPECT_EQ(whole.As_unsigned_char(), 0xBC);
    EXPECT_EQ(whole.As_short(), static_cast<short>(0x9ABC));
    EXPECT_EQ(whole.As_unsigned_short(), 0x9ABC);
    EXPECT_EQ(whole.As_int(), 0x23459ABC);
    EXPECT_EQ(whole.As_unsigned_int(), 0x23459ABCU);

    EXPECT_EQ(TEValue(1e6).As_char(), CHAR_MAX);
    EXPECT_EQ(TEValue(-1e6).As_char(), CHAR_MIN);
    EXPECT_EQ(TEValue(1e6).As_unsigned_char(), UCHAR_MAX);
    EXPECT_EQ(TEValue(-1.0).As_unsigned_char(), 0);
    EXPECT_EQ(TEValue(1e6).As_short(), SHRT_MAX);
    EXPECT_EQ(TEValue(-1e6).As_short(), SHRT_MIN);
    EXPECT_EQ(TEValue(1e6).As_unsigned_short(), USHRT_MAX);
    EXPECT_EQ(TEValue(1e12).As_int(), INT_MAX);
    EXPECT_EQ(TEValue(-1e12).As_int(), INT_MIN);
    EXPECT_EQ(TEValue(1e12).As_unsigned_int(), UINT_MAX);
    EXPECT_EQ(TEValue(1e300).As_float(), FLT_MAX);
    EXPECT_EQ(TEValue(-1e300).As_float(), -FLT_MAX);
    EXPECT_EQ(TEValue(kInfinity).As_float(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(TEValue(0.1F).As_float(), 0.1F);
}

// How far into a text its number reaches.
TEST(Conversion, NumbersInTexts) {
    const struct {
        const char* text;
        long long whole;
        double floating;
    } cases[] = {
        {" \t\r\n\v\f12", 12, 12},
        {"+12", 12, 12},
        {"-12", -12, -12},
        {"--12", 0, 0},
        {"0012", 12, 12},
        {"12.", 12, 12},
        {"12.9", 12, 12.9},
        {"-12.9", -12, -12.9},
        {".5", 0, 0.5},
        {".", 0, 0},
        {"-", 0, 0},
        {"1e3", 1000, 1000},
        {"1.e3", 1000, 1000},
        {"1E+3", 1000, 1000},
        {"1e", 1, 1},
        {"1e+", 1, 1},
        {"e3", 0, 0},
        {"0x10", 0, 0},
        {"inf", 0, 0},
        {"nan", 0, 0},
        {"1,5", 1, 1},
        {"9223372036854775807", LLONG_MAX, 9223372036854775807.0},
        {"-9223372036854775808", LLONG_MIN, -9223372036854775808.0},
        {"-9223372036854775809", LLONG_MIN, -9223372036854775808.0},
        {"18446744073709551615", -1, 18446744073709551615.0},
        {"18446744073709551616", LLONG_MAX, 18446744073709551616.0},
        {"99999999999999999999999999", LLONG_MAX, 1e26},
        {"1e999", LLONG_MAX, DBL_MAX},
        {"-1e999", LLONG_MIN, -DBL_MAX},
        {"1e-999", 0, 0},
        {"1e99999999999999999999", LLONG_MAX, DBL_MAX},
        {"1e-99999999999999999999", 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TEValue(c.text).As_long_long(), c.whole) << c.text;
        EXPECT_EQ(TEValue(c.text).As_double(), c.floating) << c.text;
    }
    EXPECT_EQ(TEValue("18446744073709551615").As_unsigned_long(), ULONG_MAX);
    EXPECT_EQ(TEValue("-1").As_unsigned_long(), ULONG_MAX);
    EXPECT_EQ(TEValue("4294967301").As_int(), 5) << "the low bits, as of any integer";
    EXPECT_EQ(TEValue(std::string("1\0"
                                  "2",
                                  3))
                  .As_int(),
              1);
    const std::string many_digits(400, '9');
    EXPECT_EQ(TEValue(many_digits).As_double(), DBL_MAX);
    const std::string many_zeroes = "0." + std::string(400, '0') + "1";
    EXPECT_EQ(TEValue(many_zeroes).As_double(), 0);
    EXPECT_EQ(TEValue("0" + many_digits + ".5").As_double(), DBL_MAX);
}

// Whatever 64 bits hold comes back from its text, and every double.
TEST(Conversion, TextsReadBackExactly) {
    for (const long long value :
         {0LL, -1LL, (1LL << 31U), (1LL << 53U) + 1, LLONG_MAX, LLONG_MIN}) {
        EXPECT_EQ(TEValue(TEValue(value).As_std_string()).As_long_long(), value);
        EXPECT_EQ(TEValue(value).As_long_long(), value);
    }
    for (const unsigned long long value : {(1ULL << 63U), ULLONG_MAX}) {
        EXPECT_EQ(TEValue(TEValue(value).As_std_string()).As_unsigned_long_long(), value);
    }
    for (const double value : {0.1, 1.0 / 3, DBL_MAX, DBL_MIN, 5e-324, -1e22, 123456789.125}) {
        EXPECT_EQ(TEValue(TEValue(value).As_std_string()).As_double(), value);
    }
    for (const float value : {0.1F, 1.0F / 3, FLT_MAX, FLT_MIN}) {
        EXPECT_EQ(TEValue(TEValue(value).As_std_string()).As_float(), value);
    }
}

TEST(Numeric, KeepsTheKind) {
    EXPECT_EQ(TEValue(5).As_CNumeric().GetKind(), CNumeric::Kind::kSigned);
    EXPECT_EQ(TEValue(5U).As_CNumeric().GetKind(), CNumeric::Kind::kUnsigned);
    EXPECT_EQ(TEValue(5.0).As_CNumeric().GetKind(), CNumeric::Kind::kDouble);
    EXPECT_EQ(TEValue("5.0").As_CNumeric().GetKind(), CNumeric::Kind::kDouble);
    EXPECT_EQ(TEValue("5").As_CNumeric().GetKind(), CNumeric::Kind::kSigned);
    EXPECT_EQ(TEValue("9223372036854775808").As_CNumeric().GetKind(), CNumeric::Kind::kUnsigned);
    EXPECT_EQ(CNumeric(-3), CNumeric(-3L));
    EXPECT_FALSE(CNumeric(3) == CNumeric(3U));
    EXPECT_FALSE(CNumeric(3) == CNumeric(4));
    EXPECT_FALSE(CNumeric(3U) == CNumeric(4U));
    EXPECT_EQ(CNumeric(0.5), CNumeric(0.5));
    EXPECT_EQ(CNumeric(LLONG_MIN).ToString(), "-9223372036854775808");
    EXPECT_EQ(CNumeric(ULLONG_MAX).ToString(), "18446744073709551615");
    EXPECT_EQ(CNumeric(1.5).ToString(), "1.5");
    EXPECT_EQ(CNumeric().ToString(), "0");
    EXPECT_EQ(TEValue(CNumeric(-3)).GetType(), refl::Enum::DT_LONG_LONG);
    EXPECT_EQ(TEValue(CNumeric(3U)).GetType(), refl::Enum::DT_UNSIGNED_LONG);
    EXPECT_EQ(TEValue(CNumeric(0.5)).GetType(), refl::Enum::DT_DOUBLE);
    EXPECT_EQ(TEValue(CNumeric(-3)).As_long(), -3);
}

}  // namespace
