#include "kelpctl/paraset/ber_header.h"

#include <gtest/gtest.h>

#include <string>

#include "kelpctl/paraset/octets_text.h"
#include "support/octets.h"

namespace {

using kelpctl::BerHeader;
using support::Octets;

TEST(BerHeader, ReadsEveryForm) {
    const struct {
        const char* octets;
        unsigned number;
        std::size_t header;
        std::size_t contents;
        bool indefinite;
    } cases[] = {
        {"02 00", 2, 2, 0, false},
        {"02 01 07", 2, 2, 1, false},
        {"30 81 01 00", 16, 3, 1, false},
        {"30 84 00 00 00 01 00", 16, 6, 1, false},
        {"30 89 00 00 00 00 00 00 00 00 01 00", 16, 11, 1, false},
        {"30 80", 16, 2, 0, true},
        {"9f 1f 00", 31, 3, 0, false},
        {"bf 81 00 80", 128, 4, 0, true},
    };
    for (const auto& c : cases) {
        BerHeader header;
        ASSERT_EQ(ReadBerHeader(Octets(c.octets), header), nullptr) << c.octets;
        EXPECT_EQ(header.number, c.number) << c.octets;
        EXPECT_EQ(header.octets, c.header) << c.octets;
        EXPECT_EQ(header.contents, c.contents) << c.octets;
        EXPECT_EQ(header.indefinite, c.indefinite) << c.octets;
    }
}

TEST(BerHeader, RefusesWhatIsNone) {
    const struct {
        const char* octets;
        const char* reason;
    } cases[] = {
        {"", "the input ends inside an element's header"},
        {"02", "the input ends inside an element's header"},
        {"1f 81", "the input ends inside an element's header"},
        {"02 82 00", "the input ends inside an element's header"},
        {"02 01", "the length exceeds the input"},
        {"02 88 ff ff ff ff ff ff ff ff", "the length exceeds the input"},
        {"02 89 01 00 00 00 00 00 00 00 00", "the length has more than eight octets"},
        {"02 80", "the length of a primitive element is indefinite"},
        {"1f 81 81 81 81 01 00", "the tag number has more than four octets"},
    };
    for (const auto& c : cases) {
        BerHeader header;
        const char* reason = ReadBerHeader(Octets(c.octets), header);
        ASSERT_NE(reason, nullptr) << c.octets;
        EXPECT_STREQ(reason, c.reason) << c.octets;
    }
}

TEST(OctetsText, ReadsPairsOfDigits) {
    std::string why;
    EXPECT_EQ(kelpctl::OctetsOfText(" 3003\n02 01\t0A ", why), Octets("30 03 02 01 0a"));
    EXPECT_EQ(kelpctl::OctetsOfText("", why), "");
    for (const auto& [text, at] : {std::pair("0", "0"), {"30 0", "3"}, {"3g", "0"}, {"3 0", "0"}}) {
        EXPECT_FALSE(kelpctl::OctetsOfText(text, why)) << text;
        EXPECT_EQ(why, std::string("no pair of hexadecimal digits at byte ") + at);
    }
}

TEST(OctetsText, WritesLinesOfSixteen) {
    EXPECT_EQ(kelpctl::TextOfOctets(""), "");
    EXPECT_EQ(kelpctl::TextOfOctets(std::string(16, '\xff')).size(), 48U);
    EXPECT_EQ(kelpctl::TextOfOctets(std::string(17, '\x01')).substr(45), "01\n01\n");
}

}  // namespace
