// REAL in binary form and its special values, both ways.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// Equal also in the sign of zero, and a NaN to a NaN.
MATCHER_P(IsDouble, expected, "") {
    if (std::isnan(expected)) {
        return std::isnan(static_cast<double>(arg));
    }
    return std::bit_cast<std::uint64_t>(static_cast<double>(arg)) ==
           std::bit_cast<std::uint64_t>(expected);
}

// What is written: base 2, an odd mantissa, the shortest exponent, or a special value.
TEST(AsnReal, WritesBaseTwoWithAnOddMantissa) {
    const struct {
        double value;
        const char* octets;
    } rows[] = {
        {0.0, "09 00"},
        {-0.0, "09 01 43"},
        {1.0, "09 03 80 00 01"},
        {-1.0, "09 03 c0 00 01"},
        {2.0, "09 03 80 01 01"},
        {0.5, "09 03 80 ff 01"},
        {10.0, "09 03 80 01 05"},
        {0.15625, "09 03 80 fb 05"},
        {-118.625, "09 04 c0 fd 03 b5"},
        {255.0, "09 03 80 00 ff"},
        {257.0, "09 04 80 00 01 01"},
        {0.1, "09 09 80 c9 0c cc cc cc cc cc cd"},
        {3.141592653589793, "09 09 80 d0 03 24 3f 6a 88 85 a3"},
        {0x1p127, "09 03 80 7f 01"},
        {0x1p128, "09 04 81 00 80 01"},
        {0x1p-128, "09 03 80 80 01"},
        {0x1p-129, "09 04 81 ff 7f 01"},
        {9007199254740991.0, "09 09 80 00 1f ff ff ff ff ff ff"},
        {std::numeric_limits<double>::max(), "09 0a 81 03 cb 1f ff ff ff ff ff ff"},
        {std::numeric_limits<double>::min(), "09 04 81 fc 02 01"},
        {std::numeric_limits<double>::denorm_min(), "09 04 81 fb ce 01"},
        {0x0.fffffffffffffp-1022, "09 0a 81 fb ce 0f ff ff ff ff ff ff"},
        {kInfinity, "09 01 40"},
        {-kInfinity, "09 01 41"},
        {kNotANumber, "09 01 42"},
        {-kNotANumber, "09 01 42"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        EXPECT_EQ(Hex(Encoded(AsnReal(row.value))), row.octets);
        AsnReal read(7.0);
        EXPECT_EQ(Decode(Octets(row.octets), read), "");
        EXPECT_THAT(read, IsDouble(row.value));
    }
}

// What is read: every base, scale factor, exponent length and mantissa length.
TEST(AsnReal, ReadsEveryBinaryForm) {
    const struct {
        const char* name;
        const char* octets;
        double value;
    } rows[] = {
        {"base 2", "80 03 05", 40.0},
        {"base 8", "90 03 05", 5 * 512.0},
        {"base 16", "a0 03 05", 5 * 4096.0},
        {"base 8, negative exponent", "90 ff 08", 1.0},
        {"base 16, negative exponent", "a0 fe 01", 1.0 / 256},
        {"negative", "c0 03 05", -40.0},
        {"negative, base 16", "e0 01 01", -16.0},
        {"scale 1", "84 00 01", 2.0},
        {"scale 2", "88 00 01", 4.0},
        {"scale 3", "8c 00 01", 8.0},
        {"scale 3, base 8", "9c 01 01", 64.0},
        {"scale 3, base 16, negative", "ec ff 03", -1.5},
        {"exponent of 2 octets", "81 00 03 05", 40.0},
        {"exponent of 2 octets, negative", "81 ff ff 02", 1.0},
        {"exponent of 3 octets", "82 00 00 03 05", 40.0},
        {"exponent of 3 octets, negative", "82 ff ff ff 02", 1.0},
        {"exponent of 1 octet, counted", "83 01 03 05", 40.0},
        {"exponent of 4 octets", "83 04 00 00 00 03 05", 40.0},
        {"exponent of 8 octets, negative", "83 08 ff ff ff ff ff ff ff ff 02", 1.0},
        {"even mantissa", "80 00 02", 2.0},
        {"mantissa with leading zeros", "80 00 00 00 00 05", 5.0},
        {"mantissa of 8 octets", "80 00 80 00 00 00 00 00 00 00", 0x1p63},
        {"mantissa of 9 octets", "80 00 01 00 00 00 00 00 00 00 00", 0x1p64},
        {"mantissa of 12 octets", "80 00 01 00 00 00 00 00 00 00 00 00 00 00", 0x1p88},
        {"long mantissa, small exponent", "81 ff a8 01 00 00 00 00 00 00 00 00 00 00 00", 1.0},
        {"mantissa 0", "80 05 00", 0.0},
        {"mantissa 0, negative", "c0 05 00", -0.0},
        {"mantissa 0 of 9 octets", "80 05 00 00 00 00 00 00 00 00 00", 0.0},
        {"mantissa 0, huge exponent", "82 7f ff ff 00", 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnReal read(7.0);
        EXPECT_EQ(Decode(Element(9, Octets(row.octets)), read), "");
        EXPECT_THAT(read, IsDouble(row.value));
    }
}

// One rounding, to nearest, ties to even, whatever lies below the last bit.
TEST(AsnReal, RoundsOnceToNearestEven) {
    const struct {
        const char* name;
        const char* octets;
        double value;
    } rows[] = {
        {"2^53 + 1: tie, down", "80 00 20 00 00 00 00 00 01", 0x1p53},
        {"2^53 + 3: tie, up", "80 00 20 00 00 00 00 00 03", 0x1.0000000000002p53},
        {"2^54 + 1: below half", "80 00 40 00 00 00 00 00 01", 0x1p54},
        {"2^54 + 3: above half", "80 00 40 00 00 00 00 00 03", 0x1.0000000000001p54},
        {"all ones: up to a power", "80 00 ff ff ff ff ff ff ff ff", 0x1p64},
        {"tie, and a bit 8 octets below", "80 00 20 00 00 00 00 00 01 00 00 00 00 00 00 00 01",
         0x1.0000000000001p117},
        {"tie, and zeros below", "80 00 20 00 00 00 00 00 01 00 00 00 00 00 00 00 00", 0x1p117},
        {"largest double", "81 03 cb 1f ff ff ff ff ff ff", 0x1.fffffffffffffp1023},
        {"half a unit above: to infinity", "81 03 ca 3f ff ff ff ff ff ff", kInfinity},
        {"less than half a unit above", "81 03 c9 7f ff ff ff ff ff fd", 0x1.fffffffffffffp1023},
        {"2^1024", "81 04 00 01", kInfinity},
        {"-2^1024", "c1 04 00 01", -kInfinity},
        {"2^1023", "81 03 ff 01", 0x1p1023},
        {"2^-1074", "81 fb ce 01", 0x1p-1074},
        {"2^-1075: tie, down to zero", "81 fb cd 01", 0.0},
        {"-2^-1075", "c1 fb cd 01", -0.0},
        {"3 * 2^-1076: above half", "81 fb cc 03", 0x1p-1074},
        {"3 * 2^-1075: tie, up to even", "81 fb cd 03", 0x1p-1073},
        {"2^-1075 and a little", "81 fb c5 01 01", 0x1p-1074},
        {"2^-1076", "81 fb cc 01", 0.0},
        {"subnormal, 52 bits kept", "81 fb cd 1f ff ff ff ff ff ff", 0x1p-1022},
        {"subnormal, tie", "81 fb cd 01 00 00 00 01", 0x1p-1043},
        {"exponent 2^23 - 1", "82 7f ff ff 01", kInfinity},
        {"exponent -2^23", "82 80 00 00 01", 0.0},
        {"exponent of 9 octets", "83 09 01 00 00 00 00 00 00 00 00 01", kInfinity},
        {"exponent of 9 octets, negative", "c3 09 fe 00 00 00 00 00 00 00 00 01", -0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnReal read(7.0);
        EXPECT_EQ(Decode(Element(9, Octets(row.octets)), read), "");
        EXPECT_THAT(read, IsDouble(row.value)) << static_cast<double>(read);
    }
}

TEST(AsnReal, ReadsExponentsOf255Octets) {
    const std::string head = Octets("83 ff");
    const struct {
        const char* name;
        std::string exponent;
        double value;
    } rows[] = {
        {"3", std::string(254, '\0') + '\3', 40.0},
        {"-1", std::string(255, '\xff'), 2.5},
        {"2^2032", '\1' + std::string(254, '\0'), kInfinity},
        {"-2^2039", '\x80' + std::string(254, '\0'), 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnReal read(7.0);
        EXPECT_EQ(Decode(Element(9, head + row.exponent + '\5'), read), "");
        EXPECT_THAT(read, IsDouble(row.value));
    }
}

// A mantissa of a megabyte and the exponent that brings it back.
TEST(AsnReal, ReadsAMantissaOfAMegabyte) {
    const std::size_t zeros = 1 << 20;
    const auto exponent = -static_cast<std::int32_t>(zeros * 8);
    std::string content = Octets("82");
    for (const int shift : {16, 8, 0}) {
        content += static_cast<char>(exponent >> shift);
    }
    AsnReal read;
    EXPECT_EQ(Decode(Element(9, content + '\3' + std::string(zeros, '\0')), read), "");
    EXPECT_THAT(read, IsDouble(3.0));
}

TEST(AsnReal, ReadsSpecialValues) {
    const struct {
        const char* octets;
        double value;
    } rows[] = {
        {"09 00", 0.0},           {"09 01 40", kInfinity},
        {"09 01 41", -kInfinity}, {"09 01 42", kNotANumber},
        {"09 01 43", -0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        AsnReal read(7.0);
        EXPECT_EQ(Decode(Octets(row.octets), read), "");
        EXPECT_THAT(read, IsDouble(row.value));
    }
}

TEST(AsnReal, RefusesBadForms) {
    const struct {
        const char* name;
        const char* octets;
    } rows[] = {
        {"base 3, which is reserved", "09 03 b0 00 01"},
        {"no exponent", "09 01 80"},
        {"no mantissa", "09 02 80 00"},
        {"no second exponent octet", "09 02 81 00"},
        {"exponent of 2 octets, no mantissa", "09 03 81 00 00"},
        {"exponent of 3 octets, no mantissa", "09 04 82 00 00 00"},
        {"exponent's length missing", "09 01 83"},
        {"exponent of 0 octets", "09 03 83 00 01"},
        {"exponent of 255 octets, 2 there", "09 04 83 ff 00 01"},
        {"exponent counted, no mantissa", "09 03 83 01 00"},
        {"reserved special value", "09 01 44"},
        {"another one", "09 01 7f"},
        {"special value with a bit too many", "09 01 60"},
        {"special value and an octet", "09 02 40 00"},
        {"minus zero and an octet", "09 02 43 00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnReal read(7.0);
        EXPECT_THAT(Decode(Octets(row.octets), read), testing::StartsWith("Bad Real at offset "));
        EXPECT_THAT(read, IsDouble(0.0)) << "cleared";
    }
    EXPECT_EQ(WhyNot<AsnReal>(Octets("29 03 80 00 01")), "Unexpected Tag at offset 0 (asn1)");
}

// Every double comes back bit for bit.
TEST(AsnReal, ReadsBackEveryDouble) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 200'000; ++i) {
        std::uint64_t bits = random();
        if (i % 4 == 0) {
            bits &= ~std::uint64_t{0} << i % 60;  // few mantissa bits
        }
        if (i % 16 == 1) {
            bits &= ~(std::uint64_t{0x7ff} << 52);  // subnormal
        }
        const auto value = std::bit_cast<double>(bits);
        AsnReal read(7.0);
        ASSERT_EQ(Decode(Encoded(AsnReal(value)), read), "") << i;
        ASSERT_THAT(read, IsDouble(value)) << i;
    }
}

// The C library reads hexadecimal numbers of any length with one correct rounding: an
// independent opinion on mantissas of up to 20 octets at every exponent that matters.
TEST(AsnReal, RoundsLikeTheCLibrary) {
    std::mt19937_64 random(1848);
    for (int i = 0; i < 100'000; ++i) {
        const std::size_t octets = 1 + random() % 20;
        std::string mantissa;
        for (std::size_t k = 0; k < octets; ++k) {
            // Runs of zeros and ones make ties and carries.
            mantissa += static_cast<char>(i % 3 == 0 ? random() : random() % 4 == 0 ? random() : 0);
        }
        if (i % 5 == 0) {
            mantissa.assign(octets, '\xff');
            mantissa.back() = static_cast<char>(random());
        }
        const auto exponent = static_cast<int>(random() % 2400) - 1250;
        std::string content = Octets("81");
        content += static_cast<char>(exponent >> 8);
        content += static_cast<char>(exponent);

        std::string text = "0x";
        for (const char c : mantissa) {
            text += Hex({&c, 1});
        }
        text += "p" + std::to_string(exponent);
        AsnReal read(7.0);
        ASSERT_EQ(Decode(Element(9, content + mantissa), read), "") << text;
        ASSERT_THAT(read, IsDouble(std::strtod(text.c_str(), nullptr))) << text;
    }
}

TEST(AsnReal, PrintsClearsAndCopies) {
    EXPECT_EQ(Printed(AsnReal(0.1)), "0.1\n");
    EXPECT_EQ(Printed(AsnReal(-1e300)), "-1e+300\n");
    EXPECT_EQ(Printed(AsnReal(kInfinity)), "inf\n");
    AsnReal value(2.5);
    const std::unique_ptr<AsnType> clone = value.Clone();
    value.Clear();
    EXPECT_THAT(value, IsDouble(0.0));
    value.CopyFrom(*clone);
    EXPECT_THAT(value, IsDouble(2.5));
}

// The contents alone, for writers that have a header of their own: what an encoding has
// behind its header, and never more than kMaxOctets.
TEST(AsnReal, ContentsAreThoseOfTheEncoding) {
    std::mt19937_64 random(5);
    std::vector<double> values{0.0,         -0.0,      1.0,
                               -0.1,        kInfinity, -kInfinity,
                               kNotANumber, 0x1p-1074, -0x1.fffffffffffffp1023};
    for (int i = 0; i < 2000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
    }
    for (const double value : values) {
        unsigned char contents[AsnReal::kMaxOctets];
        const std::size_t count = AsnReal(value).Contents(contents);
        ASSERT_LE(count, sizeof contents) << value;
        EXPECT_EQ(Element(9, {reinterpret_cast<const char*>(contents), count}),
                  Encoded(AsnReal(value)))
            << value;
    }
}

}  // namespace
}  // namespace asn1_test
