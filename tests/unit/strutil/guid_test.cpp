// The text of a 16-byte identifier and back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "frameutil/strutil.h"
#include "support/captured_log.h"
#include "support/octets.h"

namespace FrameUtil {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Guid, HalvesAreNumbersWithoutLeadingZeros) {
    for (const char* octets : {
             "00112233445566778899aabbccddeeff",
             "10112233445566778899aabbccddeeff",
             "0f112233445566778899aabbccddeeff",
             "ff112233445566770899aabbccddeeff",
             "ffffffffffffffffffffffffffffffff",
             "00000000000000000000000000000000",
             "00000000000000010000000000000002",
             "80000000000000000000000000000000",
         }) {
        SCOPED_TRACE(octets);
        const CapturedLog log;
        // What leading zeros leave of each half.
        const std::string whole = octets;
        const auto half = [&](std::size_t at) {
            const std::string digits = whole.substr(at, 16);
            const std::size_t begin = digits.find_first_not_of('0');
            return begin == std::string::npos ? "0" : digits.substr(begin);
        };
        const std::string expected = half(0) + half(16);
        EXPECT_EQ(GetGUIDBy16Bytes(support::Octets(octets).c_str()), expected);
        if (expected.size() == 32) {
            EXPECT_THAT(log.Texts(), IsEmpty());
        } else {
            EXPECT_THAT(log.Texts(), ElementsAre("[Frame][GetGUIDBy16Bytes] new_guid_32 " +
                                                 expected + " is not 32 len"));
        }
    }
}

TEST(Guid, ShortTexts) {
    EXPECT_EQ(GetGUIDBy16Bytes(support::Octets("00000000000000010000000000000002").c_str()), "12");
    EXPECT_EQ(GetGUIDBy16Bytes(support::Octets("00000000000000000000000000000000").c_str()), "00");
    EXPECT_EQ(GetGUIDBy16Bytes(support::Octets("00112233445566778899aabbccddeeff").c_str()),
              "112233445566778899aabbccddeeff");
}

TEST(Guid, NullIsSixteenZeros) {
    const CapturedLog log;
    EXPECT_EQ(GetGUIDBy16Bytes(nullptr), "0000000000000000");
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST(Guid, ConvertsBack) {
    struct Case {
        const char* text;
        const char* octets;
    };
    for (const Case& c :
         {Case{"00112233445566778899aabbccddeeff", "00112233445566778899aabbccddeeff"},
          Case{"00112233445566778899AABBCCDDEEFF", "00112233445566778899aabbccddeeff"},
          Case{"00000000000000000000000000000001", "00000000000000000000000000000001"}}) {
        SCOPED_TRACE(c.text);
        const CapturedLog log;
        std::string bytes(17, '#');
        ConvertTo16BytesByGUID(c.text, bytes.data());
        EXPECT_EQ(support::Hex(bytes), support::Hex(support::Octets(c.octets) + "#"));
        EXPECT_THAT(log.Texts(), IsEmpty());
    }
}

// What is no identifier is traced and writes nothing.
TEST(Guid, RefusesOtherTexts) {
    constexpr const char* kLength = " remove - is not 32 len";
    constexpr const char* kDigits = " is not hexadecimal";
    struct Case {
        const char* text;
        const char* why;
    };
    for (const Case& c : {
             Case{"", kLength},
             Case{"00112233445566778899aabbccddeef", kLength},
             Case{"00112233445566778899aabbccddeeff0", kLength},
             Case{"00112233-4455-6677-8899-aabbccddeeff", kLength},
             Case{"00112233445566778899aabbccddeefg", kDigits},
             Case{"g0112233445566778899aabbccddeeff", kDigits},
             Case{" 0112233445566778899aabbccddeeff", kDigits},
             Case{"0x112233445566778899aabbccddeeff", kDigits},
             Case{"-0112233445566778899aabbccddeeff", kDigits},
             Case{"00112233-4455-6677-8899-aabbccdd", kDigits},
         }) {
        SCOPED_TRACE(c.text);
        const CapturedLog log;
        std::string bytes(16, '#');
        ConvertTo16BytesByGUID(c.text, bytes.data());
        EXPECT_EQ(bytes, std::string(16, '#'));
        EXPECT_THAT(log.Texts(), ElementsAre("[Frame][ConvertTo16BytesByGUID] guid " +
                                             std::string(c.text) + c.why));
        ConvertTo16BytesByGUID(c.text, nullptr);
        EXPECT_EQ(log.Texts().size(), 1U);
    }
}

// Bytes 0 and 8 from 0x10 on: nothing is lost.
TEST(Guid, RoundTrip) {
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i) {
        std::string bytes(16, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        bytes[0] = static_cast<char>(0x10 + random() % 0xf0);
        bytes[8] = static_cast<char>(0x10 + random() % 0xf0);
        const std::string text = GetGUIDBy16Bytes(bytes.c_str());
        ASSERT_EQ(text.size(), 32U);
        std::string back(16, '#');
        ConvertTo16BytesByGUID(text, back.data());
        ASSERT_EQ(support::Hex(back), support::Hex(bytes));
    }
}

}  // namespace
}  // namespace FrameUtil
