#include <gtest/gtest.h>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

// True is written as FF; every non-zero octet reads as true.
TEST(AsnBool, IsOneOctet) {
    EXPECT_EQ(Hex(Encoded(AsnBool(false))), "01 01 00");
    EXPECT_EQ(Hex(Encoded(AsnBool(true))), "01 01 ff");
    for (int octet = 0; octet < 256; ++octet) {
        AsnBool read(octet == 0);
        EXPECT_EQ(Decode(Octets("01 01") + static_cast<char>(octet), read), "");
        EXPECT_EQ(static_cast<bool>(read), octet != 0) << octet;
    }
}

TEST(AsnBool, RefusesOtherLengthsAndForms) {
    const struct {
        const char* octets;
        const char* why;
    } rows[] = {
        {"01 00", "Bad Boolean at offset 2 (asn1)"},
        {"01 02 00 00", "Bad Boolean at offset 4 (asn1)"},
        {"01 02 ff ff", "Bad Boolean at offset 4 (asn1)"},
        {"21 03 01 01 ff", "Unexpected Tag at offset 0 (asn1)"},
        {"01 80 ff 00 00", "Indefinite Primitive at offset 2 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        AsnBool read(true);
        EXPECT_EQ(Decode(Octets(row.octets), read), row.why);
        EXPECT_FALSE(read) << "cleared";
    }
}

TEST(AsnBool, PrintsClearsAndCopies) {
    AsnBool value(true);
    EXPECT_EQ(Printed(value), "true\n");
    const std::unique_ptr<AsnType> clone = value.Clone();
    value.Clear();
    EXPECT_EQ(Printed(value), "false\n");
    value.CopyFrom(*clone);
    EXPECT_TRUE(value);
}

}  // namespace
}  // namespace asn1_test
