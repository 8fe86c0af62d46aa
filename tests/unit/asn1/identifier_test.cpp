#include <gtest/gtest.h>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

// What reading one identifier says of `octets`; the identifier in `*identifier`.
std::string ReadIdentifier(const std::string& octets, AsnIdentifier* identifier = nullptr) {
    AsnReader in(octets.data(), octets.size());
    try {
        const AsnIdentifier peeked = in.PeekIdentifier();
        EXPECT_EQ(in.Offset(), 0U);
        const AsnIdentifier read = in.ReadIdentifier();
        EXPECT_EQ(read, peeked);
        EXPECT_EQ(in.Offset(), octets.size());
        if (identifier != nullptr) {
            *identifier = read;
        }
        return "";
    } catch (const CSM_Exception& failure) {
        return failure.Describe();
    }
}

// Identifiers are one octet, or several when the tag number is 31 or more; both ways.
TEST(AsnIdentifier, OfOneOctetAndOfSeveral) {
    const struct {
        const char* octets;
        int number;
        bool constructed;
    } rows[] = {
        {"80", 0, false},
        {"a0", 0, true},
        {"9e", 30, false},
        {"be", 30, true},
        {"9f 1f", 31, false},
        {"bf 1f", 31, true},
        {"9f 7f", 127, false},
        {"9f 81 00", 128, false},
        {"bf ff 7f", 16383, true},
        {"9f 81 80 00", 16384, false},
        {"bf 87 ff ff ff 7f", 2147483647, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        AsnIdentifier read = 0;
        EXPECT_EQ(ReadIdentifier(Octets(row.octets), &read), "");
        EXPECT_EQ(read, AsnContextIdentifier(row.number, row.constructed));
        AsnBuffer out;
        out.PrependHeader(read, 0);
        EXPECT_EQ(Hex({reinterpret_cast<const char*>(out.data()), out.size()}),
                  std::string(row.octets) + " 00");
    }
}

TEST(AsnIdentifier, OfTheLargestTagNumber) {
    AsnIdentifier read = 0;
    EXPECT_EQ(ReadIdentifier(Octets("9f 8f ff ff ff 7f"), &read), "");
    EXPECT_EQ(read, 0x9f | std::uint64_t{0xffffffff} << 8);
}

TEST(AsnIdentifier, RefusesBadForms) {
    const struct {
        const char* name;
        const char* octets;
        const char* why;
    } rows[] = {
        {"nothing", "", "Unexpected End at offset 0 (asn1)"},
        {"cut behind its first octet", "9f", "Unexpected End at offset 1 (asn1)"},
        {"cut in its number", "9f 81", "Unexpected End at offset 2 (asn1)"},
        {"a leading zero digit", "9f 80 1f", "Bad Tag at offset 0 (asn1)"},
        {"a number for one octet", "9f 1e", "Bad Tag at offset 0 (asn1)"},
        {"0", "9f 00", "Bad Tag at offset 0 (asn1)"},
        {"2^32", "9f 90 80 80 80 00", "Bad Tag at offset 0 (asn1)"},
        {"2^64 and more", "9f ff ff ff ff ff ff ff ff ff ff 7f", "Bad Tag at offset 0 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ReadIdentifier(Octets(row.octets)), row.why);
    }
}

// The form bit stands in the identifier whatever its length: an element of a long tag
// may have an indefinite length exactly when it is constructed.
TEST(AsnIdentifier, LongOnesKeepTheirForm) {
    const std::string octets = Octets("bf 1f 80 00 00");
    AsnReader in(octets.data(), octets.size());
    const AsnReader::Scope outer = in.Enter(in.ReadIdentifier(), "asn1");
    EXPECT_TRUE(in.AtEnd());
    in.Leave(outer);
    EXPECT_EQ(in.Offset(), 5U);

    const std::string primitive = Octets("9f 1f 80 00 00");
    AsnReader refuses(primitive.data(), primitive.size());
    const AsnIdentifier identifier = refuses.ReadIdentifier();
    EXPECT_THROW(refuses.Enter(identifier, "asn1"), CSM_Exception);
}

}  // namespace
}  // namespace asn1_test
