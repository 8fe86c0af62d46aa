#include <gtest/gtest.h>

#include <utility>

#include "support/asn1_coding.h"
#include "support/sweeps.h"

namespace asn1_test {
namespace {

using namespace support;

void Put(AsnBuffer& out, std::string_view octets) {
    octets.copy(reinterpret_cast<char*>(out.Prepend(octets.size())), octets.size());
}

std::string Contents(const AsnBuffer& out) {
    return {reinterpret_cast<const char*>(out.data()), out.size()};
}

// Octets go in front of those that are there, however often the buffer has to grow.
TEST(AsnBuffer, IsFilledFromBehind) {
    AsnBuffer out;
    EXPECT_EQ(out.size(), 0U);
    std::string expected;
    for (int i = 0; i < 2000; ++i) {
        const std::string piece(static_cast<std::size_t>(i % 17), static_cast<char>(i));
        Put(out, piece);
        expected.insert(0, piece);
    }
    EXPECT_EQ(Contents(out), expected);
}

TEST(AsnBuffer, ClearKeepsTheMemoryAndSetsTheLimit) {
    AsnBuffer out;
    Put(out, std::string(1000, 'x'));
    const unsigned char* const end = out.data() + out.size();
    out.Clear();
    EXPECT_EQ(out.size(), 0U);
    Put(out, "abc");
    EXPECT_EQ(Contents(out), "abc");
    EXPECT_EQ(out.data() + 3, end) << "the same memory";
    out.Clear(2);
    EXPECT_THROW(Put(out, "abc"), CSM_Exception);
    EXPECT_EQ(out.size(), 0U);
    Put(out, "ab");
    EXPECT_EQ(Contents(out), "ab");
    EXPECT_THROW(Put(out, "c"), CSM_Exception);
    EXPECT_EQ(Contents(out), "ab");
    out.Clear(2000);
    Put(out, std::string(2000, 'y'));
    EXPECT_EQ(out.size(), 2000U);
}

// The limit holds to the octet, on fresh memory and on memory that is there already.
TEST(AsnBuffer, LimitHoldsToTheOctet) {
    for (const std::size_t limit : support::SizesAroundPowersOfTwo(12)) {
        for (const bool fresh : {true, false}) {
            AsnBuffer out;
            if (!fresh) {
                Put(out, std::string(limit * 2, 'x'));
            }
            out.Clear(limit);
            for (std::size_t i = 0; i < limit; ++i) {
                Put(out, "x");
            }
            EXPECT_EQ(out.size(), limit);
            try {
                out.Prepend(1);
                ADD_FAILURE() << limit;
            } catch (const CSM_Exception& failure) {
                EXPECT_EQ(failure.Describe(),
                          "Too Long at offset " + std::to_string(limit) + " (asn1)");
            }
            EXPECT_EQ(out.size(), limit);
        }
    }
    AsnBuffer out;
    EXPECT_THROW(out.Prepend(AsnBuffer::kDefaultLimit + 1), CSM_Exception);
    EXPECT_THROW(out.Prepend(SIZE_MAX), CSM_Exception);
    EXPECT_EQ(out.size(), 0U);
}

TEST(AsnBuffer, WritesTheShortestHeader) {
    const struct {
        AsnIdentifier identifier;
        std::size_t content;
        const char* octets;
    } rows[] = {
        {0x04, 0, "04 00"},
        {0x04, 127, "04 7f"},
        {0x04, 128, "04 81 80"},
        {0x30, 255, "30 81 ff"},
        {0x30, 256, "30 82 01 00"},
        {0x30, 65535, "30 82 ff ff"},
        {0x30, 65536, "30 83 01 00 00"},
        {0x30, 0x7fffffff, "30 84 7f ff ff ff"},
        {0x30, 0x80000000, "30 84 80 00 00 00"},
        {0x30, 0x100000000, "30 85 01 00 00 00 00"},
        {0x30, SIZE_MAX, "30 88 ff ff ff ff ff ff ff ff"},
        {AsnContextIdentifier(31, true), 5, "bf 1f 05"},
        {AsnContextIdentifier(31, false), 128, "9f 1f 81 80"},
        {0x9f | AsnIdentifier{0xffffffff} << 8, SIZE_MAX,
         "9f 8f ff ff ff 7f 88 ff ff ff ff ff ff ff ff"},
    };
    for (const auto& row : rows) {
        AsnBuffer out;
        out.PrependHeader(row.identifier, row.content);
        EXPECT_EQ(Hex(Contents(out)), row.octets);
    }
}

TEST(AsnBuffer, MovesItsContents) {
    AsnBuffer from;
    Put(from, "abc");
    AsnBuffer to(std::move(from));
    EXPECT_EQ(Contents(to), "abc");
    EXPECT_EQ(from.size(), 0U);  // NOLINT(bugprone-use-after-move): empty and usable
    Put(from, "x");
    EXPECT_EQ(Contents(from), "x");
    from = std::move(to);
    EXPECT_EQ(Contents(from), "abc");
    EXPECT_EQ(to.size(), 0U);  // NOLINT(bugprone-use-after-move)
    to.Clear(1);
    Put(to, "y");
    EXPECT_EQ(Contents(to), "y");
}

}  // namespace
}  // namespace asn1_test
