#include <gtest/gtest.h>

#include <utility>

#include "support/asn1_coding.h"
#include "support/sweeps.h"

namespace asn1_test {
namespace {

using namespace support;

// An octet string is written in primitive form with the shortest length there is.
TEST(AsnOcts, WritesTheShortestLength) {
    const struct {
        std::size_t octets;
        const char* header;
    } rows[] = {
        {0, "04 00"},
        {1, "04 01"},
        {127, "04 7f"},
        {128, "04 81 80"},
        {255, "04 81 ff"},
        {256, "04 82 01 00"},
        {65535, "04 82 ff ff"},
        {65536, "04 83 01 00 00"},
        {16777215, "04 83 ff ff ff"},
        {16777216, "04 84 01 00 00 00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        const AsnOcts value(std::string(row.octets, 'x'));
        const std::string octets = Encoded(value);
        const std::string header = Octets(row.header);
        ASSERT_EQ(octets.size(), header.size() + row.octets);
        EXPECT_EQ(Hex(octets.substr(0, header.size())), row.header);
        AsnOcts read;
        EXPECT_EQ(Decode(octets, read), "");
        EXPECT_EQ(read.str(), value.str());
    }
}

TEST(AsnOcts, KeepsEveryOctetAtEverySize) {
    for (const std::size_t size : support::SizesAroundPowersOfTwo(18)) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            text[i] = static_cast<char>(i * 7);
        }
        AsnOcts read("former");
        EXPECT_EQ(Decode(Encoded(AsnOcts(text)), read), "") << size;
        EXPECT_EQ(read.str(), text) << size;
    }
}

// A sender may cut an octet string into segments, and segments into segments.
TEST(AsnOcts, JoinsSegments) {
    const struct {
        const char* name;
        std::string octets;
        std::string value;
    } rows[] = {
        {"no segment", Octets("24 00"), ""},
        {"no segment, indefinite", Octets("24 80 00 00"), ""},
        {"empty segments", Octets("24 04 04 00 04 00"), ""},
        {"one", Octets("24 03 04 01 61"), "a"},
        {"two", Octets("24 06 04 01 61 04 01 62"), "ab"},
        {"two, indefinite", Octets("24 80 04 01 61 04 01 62 00 00"), "ab"},
        {"a zero octet", Octets("24 06 04 01 00 04 01 00"), std::string(2, '\0')},
        {"nested", Octets("24 08 24 03 04 01 61 04 01 62"), "ab"},
        {"indefinite in definite", Octets("24 0a 24 80 04 01 61 00 00 04 01 62"), "ab"},
        {"definite in indefinite", Octets("24 80 24 03 04 01 61 04 01 62 00 00"), "ab"},
        {"indefinite in indefinite", Octets("24 80 24 80 04 01 61 00 00 04 01 62 00 00"), "ab"},
        {"ends with the input", Octets("24 80 04 01 61"), "a"},
        {"both end with the input", Octets("24 80 24 80 04 01 61"), "a"},
        {"a thousand", Element(0x24, Repeat(Octets("04 01 7a"), 1000)), std::string(1000, 'z')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnOcts read("former");
        EXPECT_EQ(Decode(row.octets, read), "");
        EXPECT_EQ(read.str(), row.value);
        AsnOcts again;
        EXPECT_EQ(Decode(Encoded(read), again), "");
        EXPECT_EQ(again.str(), row.value);
    }
}

TEST(AsnOcts, RefusesWhatIsNoSegment) {
    const struct {
        const char* name;
        std::string octets;
        const char* why;
    } rows[] = {
        {"an integer inside", Octets("24 03 02 01 05"), "Unexpected Tag at offset 2 (asn1)"},
        {"after a segment", Octets("24 06 04 01 61 02 01 05"), "Unexpected Tag at offset 5 (asn1)"},
        {"end of contents in a definite length", Octets("24 05 04 01 61 00 00"),
         "Unexpected Tag at offset 5 (asn1)"},
        {"a lone zero", Octets("24 80 04 01 61 00"), "Unexpected Tag at offset 5 (asn1)"},
        {"zero and something", Octets("24 80 04 01 61 00 01"), "Unexpected Tag at offset 5 (asn1)"},
        {"indefinite and primitive", Octets("04 80 61 00 00"),
         "Indefinite Primitive at offset 2 (asn1)"},
        {"a segment indefinite and primitive", Octets("24 80 04 80 61 00 00 00 00"),
         "Indefinite Primitive at offset 4 (asn1)"},
        {"a segment beyond its string", Octets("24 03 04 02 61 62"),
         "Length Beyond Input at offset 4 (asn1)"},
        {"a context tag", Octets("84 01 61"), "Unexpected Tag at offset 0 (asn1)"},
        {"end missing inside a definite length", Octets("24 08 24 80 04 01 61 24 80 00 04 00"),
         "Unexpected Tag at offset 9 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnOcts read("former");
        EXPECT_EQ(Decode(row.octets, read), row.why);
        EXPECT_TRUE(read.empty()) << "cleared";
    }
}

// What cannot be shown, and what ends a text, is printed in hex.
TEST(AsnOcts, PrintsOctetsThatCannotBeShownInHex) {
    EXPECT_EQ(Printed(AsnOcts("eth0")), "\"eth0\"\n");
    EXPECT_EQ(Printed(AsnOcts(std::string("a\0\n\x7f\"\\b", 7))),
              "\"a\\x00\\x0a\\x7f\\x22\\x5cb\"\n");
    EXPECT_EQ(Printed(AsnOcts("M\xc3\xbcnchen")), "\"M\xc3\xbcnchen\"\n");
}

TEST(AsnOcts, TakesAndGivesTexts) {
    AsnOcts value("one");
    value = std::string("two");
    EXPECT_EQ(value.str(), "two");
    value = std::string_view("three");
    EXPECT_EQ(value.size(), 5U);
    value = "four";
    const std::string& text = value;
    EXPECT_EQ(text, "four");
    const std::unique_ptr<AsnType> clone = value.Clone();
    value.Clear();
    EXPECT_TRUE(value.empty());
    value.CopyFrom(*clone);
    EXPECT_EQ(value.str(), "four");
    value.str() += '\0';
    EXPECT_EQ(Hex(Encoded(value)), "04 05 66 6f 75 72 00");
}

// Taking what it holds, whole or in part, edited in place or not, and taking nothing.
TEST(AsnOcts, TakesAPartOfItself) {
    const std::string_view nothing;
    for (const std::size_t size : {5U, 40U, 600U}) {
        SCOPED_TRACE(size);
        for (const bool edited : {false, true}) {
            AsnOcts value(std::string(size, 'x') + "end");
            if (edited) {
                value.str() += "!";
            }
            const std::string former(value.view());
            const AsnOcts& itself = value;
            value = itself;
            EXPECT_EQ(value.view(), former);
            value = value.view().substr(size);
            EXPECT_EQ(value.view(), former.substr(size));
            value = nothing;
            EXPECT_TRUE(value.empty());
            EXPECT_EQ(Hex(Encoded(value)), "04 00");
        }
    }
}

// What editing in place changed is what is encoded, copied and moved.
TEST(AsnOcts, EditedInPlaceIsItsValue) {
    AsnOcts value("abc");
    value.str()[1] = '\0';
    EXPECT_EQ(Hex(Encoded(value)), "04 03 61 00 63");
    const AsnOcts copy(value);
    EXPECT_EQ(Hex(Encoded(copy)), "04 03 61 00 63");
    AsnOcts moved(std::move(value));
    EXPECT_EQ(Hex(Encoded(moved)), "04 03 61 00 63");
    moved = "d";
    EXPECT_EQ(Hex(Encoded(moved)), "04 01 64");
    moved.str() = "longer than before";
    EXPECT_EQ(Decode(Octets("04 01 65"), moved), "");
    EXPECT_EQ(moved.str(), "e");
}

}  // namespace
}  // namespace asn1_test
