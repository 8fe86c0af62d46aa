// REAL in decimal form: NR1, NR2 and NR3 of ISO 6093.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string Decimal(char form, std::string_view text) {
    return Element(9, std::string(1, form).append(text));
}

// The double that `text` in form `form` reads as; a NaN, which no text is, if it fails.
double Read(char form, std::string_view text, std::string* why = nullptr) {
    AsnReal read;
    const std::string failure = Decode(Decimal(form, text), read);
    if (why != nullptr) {
        *why = failure;
    }
    return failure.empty() ? static_cast<double>(read) : std::numeric_limits<double>::quiet_NaN();
}

std::uint64_t Bits(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

struct Row {
    char form;
    const char* text;
    double value;
};

TEST(AsnRealDecimal, ReadsEveryForm) {
    const Row rows[] = {
        // NR1: an integer.
        {1, "0", 0.0},
        {1, "4902", 4902.0},
        {1, "-42", -42.0},
        {1, "+42", 42.0},
        {1, "  42", 42.0},
        {1, "   +0", 0.0},
        {1, "-0", -0.0},
        {1, "000042", 42.0},
        {1, "123456789012345678901234567890", 123456789012345678901234567890.0},
        // NR2: a decimal mark, which may be a comma.
        {2, "1.5", 1.5},
        {2, "1,5", 1.5},
        {2, "-0.25", -0.25},
        {2, "  +10.0", 10.0},
        {2, "5.", 5.0},
        {2, ".5", 0.5},
        {2, ",5", 0.5},
        {2, "0.1", 0.1},
        {2, "-0.0", -0.0},
        {2, "42", 42.0},
        // NR3: an exponent.
        {3, "1.5E3", 1500.0},
        {3, "1,5E3", 1500.0},
        {3, "1.5e3", 1500.0},
        {3, "+0.56E+4", 5600.0},
        {3, "-3.14159E-2", -0.0314159},
        {3, "  5.E0", 5.0},
        {3, "1E5", 100000.0},
        {3, "1.E-5", 1e-5},
        {3, ".5E1", 5.0},
        {3, "0E99999999999999999999", 0.0},
        {3, "1.5E0003", 1500.0},
        {3, "1.5", 1.5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        std::string why;
        const double read = Read(row.form, row.text, &why);
        EXPECT_EQ(why, "");
        EXPECT_EQ(Bits(read), Bits(row.value)) << read;
    }
}

// Beyond a double's range: infinity or zero, with the text's sign.
TEST(AsnRealDecimal, OverflowsAndUnderflows) {
    const Row rows[] = {
        {3, "1.7976931348623157E308", 0x1.fffffffffffffp1023},
        {3, "1.7976931348623158E308", 0x1.fffffffffffffp1023},
        {3, "1.7976931348623159E308", kInfinity},
        {3, "1E309", kInfinity},
        {3, "-1E309", -kInfinity},
        {3, "1E99999999999999999999", kInfinity},
        {3, "0.001E312", kInfinity},
        {3, "0.001E311", 1e308},
        {3, "2.2250738585072014E-308", 0x1p-1022},
        {3, "2.2250738585072011E-308", 0x0.fffffffffffffp-1022},
        {3, "4.9406564584124654E-324", 0x1p-1074},
        {3, "2.4703282292062328E-324", 0x1p-1074},
        {3, "2.4703282292062327E-324", 0.0},
        {3, "-1E-400", -0.0},
        {3, "1E-99999999999999999999", 0.0},
        {3, "1000E-400", 0.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        std::string why;
        const double read = Read(row.form, row.text, &why);
        EXPECT_EQ(why, "");
        EXPECT_EQ(Bits(read), Bits(row.value)) << read;
    }
}

TEST(AsnRealDecimal, RefusesOtherTexts) {
    const struct {
        char form;
        std::string text;
    } rows[] = {
        {1, ""},        {1, " "},       {1, "-"},
        {1, "+-1"},     {1, "1 "},      {1, "1 2"},
        {1, "1.5"},     {1, "1E5"},     {1, "0x10"},
        {1, "inf"},     {1, "nan"},     {1, "- 1"},
        {1, "\t1"},     {2, ""},        {2, "."},
        {2, ","},       {2, "1.2.3"},   {2, "1.5E3"},
        {2, "1 .5"},    {2, "1. 5"},    {3, ""},
        {3, "E5"},      {3, ".E5"},     {3, "1E"},
        {3, "1.5E+"},   {3, "1.5E-"},   {3, "1.5E+-3"},
        {3, "1.5E3 "},  {3, "1.5E3.0"}, {3, "1.5D3"},
        {3, "1.5 E3"},  {3, "--1E5"},   {3, "infinity"},
        {3, "0x1.8p3"}, {0, "1"},       {4, "1"},
        {0x21, "1"},    {0x3f, "1"},    {1, std::string("1\0", 2)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        std::string why;
        Read(row.form, row.text, &why);
        EXPECT_THAT(why, testing::StartsWith("Bad Real at offset "));
    }
}

TEST(AsnRealDecimal, ReadsTextsOf100KB) {
    const std::size_t many = 100'000;
    const std::string zeros(many, '0');
    const std::string nines(many, '9');
    const struct {
        const char* name;
        char form;
        std::string text;
        double value;
    } rows[] = {
        {"zeros in front", 1, zeros + "42", 42.0},
        {"a huge integer", 1, nines, kInfinity},
        {"a long fraction", 2, "0." + zeros + "1", 0.0},
        {"a fraction next to 1", 2, "0." + nines, 1.0},
        {"zeros behind", 2, "1.5" + zeros, 1.5},
        {"a tie but for its last digit", 2, "9007199254740993." + zeros + "1",
         0x1.0000000000001p53},
        {"brought back by its exponent", 3, "0." + zeros + "15E100001", 1.5},
        {"brought back the other way", 3, "15" + zeros + ".E-100001", 1.5},
        {"blanks in front", 1, std::string(many, ' ') + "7", 7.0},
        {"exponent with zeros in front", 3, "1.5E" + zeros + "2", 150.0},
        {"exponent of many digits", 3, "1.5E-" + nines, 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string why;
        const double read = Read(row.form, row.text, &why);
        EXPECT_EQ(why, "");
        EXPECT_EQ(Bits(read), Bits(row.value)) << read;
    }
    std::string why;
    Read(3, zeros + "x", &why);
    EXPECT_THAT(why, testing::StartsWith("Bad Real at offset "));
}

// The C library is the second opinion on texts of up to 40 digits.
TEST(AsnRealDecimal, RoundsLikeTheCLibrary) {
    std::mt19937_64 random(1605);
    for (int i = 0; i < 50'000; ++i) {
        std::string text;
        const auto digits = [&](std::size_t most) {
            for (std::size_t k = random() % most; k != 0; --k) {
                text += static_cast<char>('0' + random() % 10);
            }
        };
        text += static_cast<char>('0' + random() % 10);
        digits(20);
        text += '.';
        digits(20);
        text += 'E';
        text += std::to_string(static_cast<int>(random() % 700) - 350);
        ASSERT_EQ(Bits(Read(3, text)), Bits(std::strtod(text.c_str(), nullptr))) << text;
    }
}

}  // namespace
}  // namespace asn1_test
