// Nesting is counted, not measured: 128 levels are read on a stack of 256 KB, one more
// is refused, and so are a hundred thousand, at the same octet.
#include <gtest/gtest.h>

#include "support/asn1_coding.h"
#include "support/small_stack.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

std::string NestedSegments(std::size_t levels) {
    std::string octets = Octets("04 01 61");
    while (--levels != 0) {
        octets = Element(0x24, octets);
    }
    return octets;
}

// Chain ::= SEQUENCE { next [0] Chain OPTIONAL }: two levels a link.
std::string NestedChain(std::size_t links) {
    std::string octets = Octets("30 00");
    while (--links != 0) {
        octets = Element(0x30, Element(0xa0, octets));
    }
    return octets;
}

TEST(Depth, LimitIs128) {
    const struct {
        const char* name;
        std::string octets;
        const char* why;
    } rows[] = {
        {"127 levels of segments", NestedSegments(127), ""},
        {"128", NestedSegments(128), ""},
        {"129", NestedSegments(129), "Too Deep at offset 345 (asn1)"},
        {"indefinite, 127 and the last", Repeat(Octets("24 80"), 127) + Octets("04 01 61"), ""},
        {"indefinite, 128 and the last", Repeat(Octets("24 80"), 128) + Octets("04 01 61"),
         "Too Deep at offset 258 (asn1)"},
        {"100 000 levels", Repeat(Octets("24 80"), 100'000), "Too Deep at offset 258 (asn1)"},
    };
    for (const auto& row : rows) {
        std::string why;
        OnSmallStack([&] { why = WhyNot<AsnOcts>(row.octets); });
        EXPECT_EQ(why, row.why) << row.name;
    }
}

TEST(Depth, OfRecordsInRecords) {
    const struct {
        const char* name;
        std::string octets;
        const char* why;
    } rows[] = {
        {"127 levels", NestedChain(64), ""},
        {"129 levels", NestedChain(65), "Too Deep"},
        {"100 000 records", Repeat(Octets("30 80 a0 80"), 50'000), "Too Deep"},
        {"100 000 tags", Octets("30 80") + Repeat(Octets("a0 80"), 100'000), "Unexpected Tag"},
        {"100 000 lengths that lie", Repeat(Octets("30 84 7f ff ff ff"), 100'000),
         "Length Beyond Input"},
    };
    for (const auto& row : rows) {
        std::string why;
        OnSmallStack([&] { why = WhyNot<Chain>(row.octets); });
        EXPECT_EQ(why.substr(0, why.find(" at offset")), row.why) << row.name;
    }
}

// The deepest record that is read is also written, copied, printed and cleared.
TEST(Depth, TheDeepestRecordIsAsGoodAsAnyOther) {
    const std::string octets = NestedChain(64);
    OnSmallStack([&] {
        Chain chain;
        EXPECT_EQ(Decode(octets, chain), "");
        EXPECT_EQ(Encoded(chain), octets);
        Chain copy;
        copy.Assign(chain);
        EXPECT_EQ(Encoded(copy), octets);
        EXPECT_NE(Printed(copy), "");
        copy.Clear();
        EXPECT_EQ(Hex(Encoded(copy)), "30 00");
    });
}

}  // namespace
}  // namespace asn1_test
