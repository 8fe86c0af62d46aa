#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/mman.h>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

struct ReadLength {
    std::string why;
    std::size_t octets = 0;
    bool indefinite = false;
};

ReadLength Read(std::string_view input) {
    AsnReader in(input.data(), input.size());
    try {
        const AsnReader::Length length = in.ReadLength();
        return {"", length.octets, length.indefinite};
    } catch (const CSM_Exception& failure) {
        return {failure.Describe()};
    }
}

// Definite lengths in every form that fits the octets behind them.
TEST(AsnLength, ReadsEveryForm) {
    const struct {
        const char* octets;
        std::size_t content;
    } rows[] = {
        {"00", 0},
        {"01", 1},
        {"7f", 127},
        {"81 00", 0},
        {"81 05", 5},
        {"81 80", 128},
        {"81 ff", 255},
        {"82 01 00", 256},
        {"82 00 05", 5},
        {"83 01 00 00", 65536},
        {"84 00 00 00 05", 5},
        {"85 00 00 00 00 05", 5},
        {"88 00 00 00 00 00 00 00 05", 5},
        {"89 00 00 00 00 00 00 00 00 05", 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        const ReadLength exact = Read(Octets(row.octets) + std::string(row.content, 'x'));
        EXPECT_EQ(exact.why, "");
        EXPECT_EQ(exact.octets, row.content);
        EXPECT_FALSE(exact.indefinite);
        if (row.content != 0) {
            const ReadLength beyond = Read(Octets(row.octets) + std::string(row.content - 1, 'x'));
            EXPECT_THAT(beyond.why, testing::StartsWith("Length Beyond Input at offset "));
        }
    }
    std::string padded(1, '\xfe');  // 126 octets of length
    padded += std::string(125, '\0') + '\5' + "12345";
    EXPECT_EQ(Read(padded).octets, 5U);
}

TEST(AsnLength, IndefiniteIsOneOctet) {
    const ReadLength length = Read(Octets("80"));
    EXPECT_EQ(length.why, "");
    EXPECT_TRUE(length.indefinite);
}

TEST(AsnLength, RefusesWhatLies) {
    const struct {
        const char* name;
        std::string octets;
        const char* why;
    } rows[] = {
        {"missing", "", "Unexpected End at offset 0 (asn1)"},
        {"cut", Octets("82 01"), "Unexpected End at offset 2 (asn1)"},
        {"rest and one", Octets("02 78"), "Length Beyond Input at offset 1 (asn1)"},
        {"rest and one, long", Octets("81 02 78"), "Length Beyond Input at offset 0 (asn1)"},
        {"2^32 - 1", Octets("84 ff ff ff ff"), "Length Beyond Input at offset 0 (asn1)"},
        {"2^31", Octets("84 80 00 00 00"), "Length Beyond Input at offset 0 (asn1)"},
        {"2^39", Octets("85 80 00 00 00 00"), "Length Beyond Input at offset 0 (asn1)"},
        {"2^64 - 1", Octets("88 ff ff ff ff ff ff ff ff"),
         "Length Beyond Input at offset 0 (asn1)"},
        {"2^64", Octets("89 01 00 00 00 00 00 00 00 00"), "Length Beyond Input at offset 0 (asn1)"},
        {"the reserved form", '\xff' + std::string(200, '\0'), "Bad Length at offset 0 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Read(row.octets).why, row.why);
    }
}

// A length is refused before anything is reserved for it.
TEST(AsnLength, LiesInsideARecordFailWhereTheyStand) {
    const struct {
        const char* octets;
        const char* why;
    } rows[] = {
        {"30 84 ff ff ff ff", "Length Beyond Input at offset 1 (asn1)"},
        {"30 84 80 00 00 00", "Length Beyond Input at offset 1 (asn1)"},
        {"30 83 ff ff ff 02 01 05", "Length Beyond Input at offset 1 (asn1)"},
        {"30 03 02 02 05", "Length Beyond Input at offset 4 (asn1)"},
        {"30 ff 02 01 05", "Bad Length at offset 1 (asn1)"},
        {"30 04 02 01 05", "Length Beyond Input at offset 2 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        EXPECT_EQ(WhyNot<ASNULList>(Octets(row.octets)), row.why);
    }
}

// Lengths from 2^31 on are not mistaken for negative ones. The octets behind them are
// the kernel's page of zeros, which costs no memory.
TEST(AsnLength, Above31Bits) {
    const std::size_t content = std::size_t{1} << 31;
    const std::size_t size = content + 4096;
    void* const map = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    const std::string header = Octets("04 84 80 00 00 00");
    header.copy(static_cast<char*>(map), header.size());
    AsnReader in(map, header.size() + content);
    const AsnReader::Scope outer = in.Enter(in.ReadIdentifier(), "asn1");
    EXPECT_EQ(in.TakeContent().size(), content);
    in.Leave(outer);
    EXPECT_TRUE(in.AtEnd());
    munmap(map, size);
}

}  // namespace
}  // namespace asn1_test
