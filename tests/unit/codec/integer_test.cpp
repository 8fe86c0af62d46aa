// The contents of an INTEGER over all 64 bits, although a parameter keeps 32 of them.
#include "codec/integer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "support/octets.h"

namespace {

using FrameUtil::codec::IntegerOctets;
using FrameUtil::codec::kMaxInteger;
using FrameUtil::codec::ReadInteger;
using FrameUtil::codec::WriteInteger;

std::string Written(std::int64_t value) {
    unsigned char octets[kMaxInteger];
    const std::size_t count = IntegerOctets(value);
    EXPECT_EQ(WriteInteger(octets, value, count), octets + count);
    return {reinterpret_cast<const char*>(octets), count};
}

std::optional<std::int64_t> Read(const std::string& octets) {
    return ReadInteger({reinterpret_cast<const unsigned char*>(octets.data()), octets.size()});
}

TEST(CodecInteger, IsWrittenInTheFewestOctets) {
    const struct {
        std::int64_t value;
        const char* octets;
    } rows[] = {
        {0, "00"},
        {1, "01"},
        {-1, "ff"},
        {127, "7f"},
        {128, "00 80"},
        {-128, "80"},
        {-129, "ff 7f"},
        {255, "00 ff"},
        {256, "01 00"},
        {-256, "ff 00"},
        {32767, "7f ff"},
        {32768, "00 80 00"},
        {-32768, "80 00"},
        {-32769, "ff 7f ff"},
        {std::numeric_limits<std::int32_t>::max(), "7f ff ff ff"},
        {std::numeric_limits<std::int32_t>::min(), "80 00 00 00"},
        {std::int64_t{1} << 31, "00 80 00 00 00"},
        {std::int64_t{1} << 55, "00 80 00 00 00 00 00 00"},
        {-(std::int64_t{1} << 55), "80 00 00 00 00 00 00"},
        {std::numeric_limits<std::int64_t>::max(), "7f ff ff ff ff ff ff ff"},
        {std::numeric_limits<std::int64_t>::min(), "80 00 00 00 00 00 00 00"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(support::Hex(Written(row.value)), row.octets) << row.value;
        EXPECT_EQ(Read(support::Octets(row.octets)), row.value) << row.octets;
    }
}

TEST(CodecInteger, ReadsWhatItWroteAtEveryPowerOfTwo) {
    for (int power = 0; power < 64; ++power) {
        for (const std::int64_t near : {-2, -1, 0, 1, 2}) {
            const auto value = static_cast<std::int64_t>((std::uint64_t{1} << power) +
                                                         static_cast<std::uint64_t>(near));
            const std::string octets = Written(value);
            EXPECT_EQ(Read(octets), value) << value;
            // One octet less would be another number.
            if (octets.size() > 1) {
                EXPECT_NE(Read(octets.substr(1)), value) << value;
            }
        }
    }
}

TEST(CodecInteger, LongerThanNeededIsRead) {
    const struct {
        const char* octets;
        std::int64_t value;
    } rows[] = {
        {"00 00", 0},
        {"ff ff", -1},
        {"00 7f", 127},
        {"ff 80", -128},
        {"00 00 00 00 00 00 00 05", 5},
        {"ff ff ff ff ff ff ff fb", -5},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Read(support::Octets(row.octets)), row.value) << row.octets;
    }
}

TEST(CodecInteger, NoOctetsAndMoreThanEightAreNone) {
    EXPECT_EQ(Read(""), std::nullopt);
    EXPECT_EQ(Read(std::string(9, '\0')), std::nullopt);
    EXPECT_EQ(Read(std::string(1000, '\xff')), std::nullopt);
}

}  // namespace
