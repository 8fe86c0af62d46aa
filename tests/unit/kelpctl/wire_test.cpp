#include "kelpctl/wire.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kelpctl::OutlineOf;

TEST(Outline, NamesTheOuterElements) {
    const struct {
        const char* name;
        std::string octets;
        const char* outline;
    } cases[] = {
        {"integer alone", {"\x30\x03\x02\x01\x07", 5}, "5 octets: 30 SEQUENCE { 02 INTEGER (1) }"},
        {"tagged",
         {"\x30\x08\x02\x01\x00\xa1\x03\x30\x01\x00", 10},
         "10 octets: 30 SEQUENCE { 02 INTEGER (1), a1 [1] (3) }"},
        {"empty", {"\x30\x00", 2}, "2 octets: 30 SEQUENCE { }"},
        {"indefinite inside",
         {"\x30\x04\xa1\x80\x00\x00", 6},
         "6 octets: 30 SEQUENCE { a1 [1] ... }"},
        {"nothing", "", "0 octets: not BER: Unexpected End at offset 0 (asn1)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(OutlineOf(c.octets.data(), c.octets.size()), c.outline) << c.name;
    }
}

TEST(Outline, EveryCutIsSurvived) {
    FrameUtil::AsnCommonResponse response;
    response.ver.Emplace("1.2");
    response.tables.Ensure().Append().rows.Append().Append().iVal.Emplace(5);
    AsnBuffer octets;
    ASSERT_TRUE(AsnEncode(response, octets));
    for (std::size_t length = 0; length < octets.size(); ++length) {
        EXPECT_NE(OutlineOf(octets.data(), length).find("not BER"), std::string::npos) << length;
    }
}

TEST(ObservedResponse, DecodesAndRemembers) {
    FrameUtil::AsnCommonResponse response;
    response.retCode = 11;
    response.ver.Emplace("1.2");
    AsnBuffer octets;
    ASSERT_TRUE(AsnEncode(response, octets));
    kelpctl::ObservedResponse observed;
    ASSERT_TRUE(AsnDecode(octets.data(), octets.size(), observed));
    EXPECT_EQ(observed.record.retCode, 11);
    EXPECT_EQ(observed.outline, "12 octets: 30 SEQUENCE { 02 INTEGER (1), a1 [1] (5) }");
    EXPECT_EQ(observed.outline, OutlineOf(octets.data(), octets.size()));
    EXPECT_FALSE(AsnDecode(octets.data(), octets.size() - 1, observed));
    EXPECT_EQ(observed.outline, "");
}

}  // namespace
