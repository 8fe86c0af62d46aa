// Where contents end: definite lengths, end-of-contents octets, the end of the input.
#include <gtest/gtest.h>

#include <vector>

#include "support/asn1_coding.h"

namespace asn1_test {
namespace {

using namespace support;

std::vector<std::int64_t> ValuesOf(const ASNULList& list) {
    return {list.begin(), list.end()};
}

// However a list's length is written, its elements are the same.
TEST(ContentsEnd, OfAList) {
    const struct {
        const char* name;
        const char* octets;
        std::vector<std::int64_t> values;
    } rows[] = {
        {"definite", "30 06 02 01 01 02 01 02", {1, 2}},
        {"indefinite", "30 80 02 01 01 02 01 02 00 00", {1, 2}},
        {"indefinite, ends with the input", "30 80 02 01 01 02 01 02", {1, 2}},
        {"indefinite, empty", "30 80 00 00", {}},
        {"indefinite, empty, ends with the input", "30 80", {}},
        {"definite, empty", "30 00", {}},
        {"definite, long form", "30 81 03 02 01 01", {1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASNULList list;
        EXPECT_EQ(Decode(Octets(row.octets), list), "");
        EXPECT_EQ(ValuesOf(list), row.values);
    }
}

using Lists = AsnSeqOf<ASNULList>;

// Lists in a list, each with its own way of ending.
TEST(ContentsEnd, OfNestedLists) {
    const struct {
        const char* name;
        const char* octets;
        std::size_t lists;
    } rows[] = {
        {"both definite", "30 05 30 03 02 01 01", 1},
        {"both indefinite", "30 80 30 80 02 01 01 00 00 00 00", 1},
        {"two indefinite inside", "30 80 30 80 00 00 30 80 00 00 00 00", 2},
        {"indefinite inside definite", "30 07 30 80 02 01 01 00 00", 1},
        {"definite inside indefinite", "30 80 30 03 02 01 01 00 00", 1},
        {"the input ends both", "30 80 30 80 02 01 01", 1},
        {"the input ends the outer one", "30 80 30 80 02 01 01 00 00", 1},
        {"the input ends the inner one with its definite list", "30 05 30 80 02 01 01", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Lists lists;
        EXPECT_EQ(Decode(Octets(row.octets), lists), "");
        EXPECT_EQ(lists.Count(), row.lists);
    }
}

TEST(ContentsEnd, RefusesMisplacedOnes) {
    const struct {
        const char* name;
        const char* octets;
        const char* why;
    } rows[] = {
        {"end of contents in a definite list", "30 02 00 00", "Unexpected Tag at offset 2 (asn1)"},
        {"behind an element of a definite list", "30 04 30 00 00 00",
         "Unexpected Tag at offset 4 (asn1)"},
        {"a lone zero", "30 80 30 00 00", "Unexpected Tag at offset 4 (asn1)"},
        {"zero and something", "30 80 30 00 00 01", "Unexpected Tag at offset 4 (asn1)"},
        {"zero and 80", "30 80 00 80 00 00", "Unexpected Tag at offset 2 (asn1)"},
        {"one too many", "30 80 00 00 00 00", "Octets Behind Element at offset 4 (asn1)"},
        {"nothing but end of contents", "00 00", "Unexpected Tag at offset 0 (asn1)"},
        {"a list that ends the list around it", "30 80 30 02 00 00 00 00",
         "Unexpected Tag at offset 4 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(WhyNot<Lists>(Octets(row.octets)), row.why);
    }
}

// Only the end of the whole input stands for missing end-of-contents octets. A definite
// length that ends first means that one of the two lies.
TEST(ContentsEnd, IsNotTheEndOfADefiniteLengthInside) {
    using ListsOfLists = AsnSeqOf<Lists>;
    const std::string inner = Octets("30 05 30 80 02 01 01");  // its inner list is open
    EXPECT_EQ(WhyNot<Lists>(inner), "");
    EXPECT_EQ(WhyNot<ListsOfLists>(Element(0x30, inner)), "");
    EXPECT_EQ(WhyNot<ListsOfLists>(Element(0x30, inner + Octets("30 00"))),
              "Unexpected End at offset 9 (asn1)");
    EXPECT_EQ(WhyNot<ListsOfLists>(IndefiniteElement(0x30, inner)),
              "Unexpected End at offset 9 (asn1)");
}

// Long runs of zeros are end-of-contents octets for the reader's loop, not for its
// recursion, and are refused at the first one that ends nothing.
TEST(ContentsEnd, MegabytesOfZerosFailAtTheFirst) {
    const std::string zeros(1 << 20, '\0');
    EXPECT_EQ(WhyNot<Lists>(zeros), "Unexpected Tag at offset 0 (asn1)");
    EXPECT_EQ(WhyNot<Lists>(Octets("30 80") + zeros), "Octets Behind Element at offset 4 (asn1)");
    EXPECT_EQ(WhyNot<Lists>(Element(0x30, zeros)), "Unexpected Tag at offset 5 (asn1)");
    EXPECT_EQ(WhyNot<AsnOcts>(Element(0x24, zeros)), "Unexpected Tag at offset 5 (asn1)");
    EXPECT_EQ(WhyNot<AsnOcts>(Octets("24 80") + zeros), "Octets Behind Element at offset 4 (asn1)");
}

}  // namespace
}  // namespace asn1_test
