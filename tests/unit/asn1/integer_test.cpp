#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

// An INTEGER is written in the fewest octets that keep its sign, and reads back.
TEST(AsnInt, WritesTheFewestOctets) {
    const struct {
        std::int64_t value;
        const char* octets;
    } rows[] = {
        {0, "02 01 00"},
        {1, "02 01 01"},
        {-1, "02 01 ff"},
        {127, "02 01 7f"},
        {128, "02 02 00 80"},
        {-128, "02 01 80"},
        {-129, "02 02 ff 7f"},
        {255, "02 02 00 ff"},
        {256, "02 02 01 00"},
        {32767, "02 02 7f ff"},
        {32768, "02 03 00 80 00"},
        {-32768, "02 02 80 00"},
        {-32769, "02 03 ff 7f ff"},
        {8388607, "02 03 7f ff ff"},
        {-8388608, "02 03 80 00 00"},
        {2147483647, "02 04 7f ff ff ff"},
        {2147483648, "02 05 00 80 00 00 00"},
        {-2147483648, "02 04 80 00 00 00"},
        {-2147483649, "02 05 ff 7f ff ff ff"},
        {4294967295, "02 05 00 ff ff ff ff"},
        {4294967296, "02 05 01 00 00 00 00"},
        {kMax >> 8, "02 07 7f ff ff ff ff ff ff"},
        {(kMax >> 8) + 1, "02 08 00 80 00 00 00 00 00 00"},
        {kMin >> 8, "02 07 80 00 00 00 00 00 00"},
        {(kMin >> 8) - 1, "02 08 ff 7f ff ff ff ff ff ff"},
        {kMax, "02 08 7f ff ff ff ff ff ff ff"},
        {kMin, "02 08 80 00 00 00 00 00 00 00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(Hex(Encoded(AsnInt(row.value))), row.octets);
        AsnInt read;
        EXPECT_EQ(Decode(Octets(row.octets), read), "");
        EXPECT_EQ(static_cast<std::int64_t>(read), row.value);
    }
}

// Peers that pad, write long lengths or use an odd form of length are understood.
TEST(AsnInt, ReadsLongerFormsToo) {
    const struct {
        const char* octets;
        std::int64_t value;
    } rows[] = {
        {"02 02 00 01", 1},
        {"02 02 ff ff", -1},
        {"02 08 00 00 00 00 00 00 00 00", 0},
        {"02 08 ff ff ff ff ff ff ff fe", -2},
        {"02 81 01 05", 5},
        {"02 82 00 01 05", 5},
        {"02 88 00 00 00 00 00 00 00 01 05", 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        AsnInt read;
        EXPECT_EQ(Decode(Octets(row.octets), read), "");
        EXPECT_EQ(static_cast<std::int64_t>(read), row.value);
    }
}

TEST(AsnInt, RefusesWhatIsNoIntegerOf64Bits) {
    const struct {
        const char* name;
        std::string octets;
        const char* why;
    } rows[] = {
        {"no octet", Octets("02 00"), "Bad Integer at offset 2 (asn1)"},
        {"9 octets", Element(2, std::string(9, '\0')), "Bad Integer at offset 11 (asn1)"},
        {"2^64", Octets("02 09 01 00 00 00 00 00 00 00 00"), "Bad Integer at offset 11 (asn1)"},
        {"1000 octets", Element(2, std::string(1000, '\1')), "Bad Integer at offset 1004 (asn1)"},
        {"constructed", Octets("22 03 02 01 05"), "Unexpected Tag at offset 0 (asn1)"},
        {"another type", Octets("0a 01 05"), "Unexpected Tag at offset 0 (asn1)"},
        {"another class", Octets("82 01 05"), "Unexpected Tag at offset 0 (asn1)"},
        {"indefinite", Octets("02 80 05 00 00"), "Indefinite Primitive at offset 2 (asn1)"},
        {"shorter than it says", Octets("02 02 05"), "Length Beyond Input at offset 2 (asn1)"},
        {"longer than it says", Octets("02 01 05 05"), "Octets Behind Element at offset 3 (asn1)"},
        {"nothing", "", "Unexpected End at offset 0 (asn1)"},
        {"an identifier", Octets("02"), "Unexpected End at offset 1 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnInt read(77);
        EXPECT_EQ(Decode(row.octets, read), row.why);
        EXPECT_EQ(static_cast<std::int64_t>(read), 0) << "cleared";
    }
}

// Around every power of two, and at every distance from it that needs a carry.
TEST(AsnInt, ReadsBackAroundThePowersOfTwo) {
    for (unsigned power = 0; power < 63; ++power) {
        for (std::int64_t near = -2; near <= 2; ++near) {
            const std::int64_t value = (std::int64_t{1} << power) + near;
            for (const std::int64_t signed_value : {value, -value}) {
                AsnInt read;
                const std::string octets = Encoded(AsnInt(signed_value));
                EXPECT_EQ(Decode(octets, read), "");
                EXPECT_EQ(static_cast<std::int64_t>(read), signed_value);
                // The nine highest bits are not all equal: no octet less would do.
                if (octets.size() > 3) {
                    EXPECT_NE((octets[2] & 0xff) << 1 | (octets[3] >> 7 & 1), 0x000);
                    EXPECT_NE((octets[2] & 0xff) << 1 | (octets[3] >> 7 & 1), 0x1ff);
                }
            }
        }
    }
}

TEST(AsnInt, PrintsClearsAndCopies) {
    AsnInt value(-42);
    EXPECT_EQ(Printed(value), "-42\n");
    const std::unique_ptr<AsnType> clone = value.Clone();
    value.Clear();
    EXPECT_EQ(static_cast<std::int64_t>(value), 0);
    value.CopyFrom(*clone);
    EXPECT_EQ(static_cast<std::int64_t>(value), -42);
}

}  // namespace
}  // namespace asn1_test
