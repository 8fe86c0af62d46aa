#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "kelp/secure.h"
#include "secure/fault.h"

namespace {

constexpr std::size_t kSize = 8;
constexpr char kFill = '#';

// A destination of 8 bytes with a guard behind it.
struct Destination {
    Destination() { std::memset(bytes, kFill, sizeof bytes); }
    bool GuardIsIntact() const {
        for (std::size_t i = kSize; i < sizeof bytes; ++i) {
            if (bytes[i] != kFill) {
                return false;
            }
        }
        return true;
    }
    std::string Bytes() const { return std::string(bytes, kSize); }

    char bytes[2 * kSize];
};

std::string Padded(const std::string& text, char fill) {
    std::string padded = text;
    padded.resize(kSize, fill);
    return padded;
}

// A block that fits is copied and the rest is left alone; one that does not zeroes the
// whole destination and touches nothing behind it.
TEST(MemcpyS, CopiesWhatFitsAndZeroesOtherwise) {
    const struct {
        std::size_t count;
        int result;
        std::string after;
    } cases[] = {
        {0, 0, Padded("", kFill)},
        {1, 0, Padded("a", kFill)},
        {kSize - 1, 0, Padded("abcdefg", kFill)},
        {kSize, 0, "abcdefgh"},
        {kSize + 1, ERANGE, Padded("", '\0')},
        {2 * kSize, ERANGE, Padded("", '\0')},
    };
    const char source[] = "abcdefghijklmnopq";
    for (const auto& c : cases) {
        Destination dest;
        EXPECT_EQ(memcpy_s(dest.bytes, kSize, source, c.count), c.result) << "count " << c.count;
        EXPECT_EQ(dest.Bytes(), c.after) << "count " << c.count;
        EXPECT_TRUE(dest.GuardIsIntact()) << "count " << c.count;
    }
}

TEST(MemcpyS, NullPointers) {
    Destination dest;
    EXPECT_EQ(memcpy_s(nullptr, kSize, "x", 1), EINVAL);
    EXPECT_EQ(memcpy_s(dest.bytes, kSize, nullptr, 1), EINVAL);
    EXPECT_EQ(dest.Bytes(), Padded("", '\0'));
    EXPECT_TRUE(dest.GuardIsIntact());
    EXPECT_EQ(memcpy_s(nullptr, 0, nullptr, 0), 0) << "an empty block into nothing";
}

// Blocks that share a byte are refused, neighbours are not.
TEST(MemcpyS, Overlap) {
    const struct {
        const char* name;
        std::size_t to;
        std::size_t from;
        std::size_t count;
        int result;
    } cases[] = {
        {"the same block", 0, 0, 1, EINVAL},          {"source one byte in", 0, 3, 4, EINVAL},
        {"destination one byte in", 3, 0, 4, EINVAL}, {"source right behind", 0, 4, 4, 0},
        {"source right before", 4, 0, 4, 0},
    };
    for (const auto& c : cases) {
        char block[12] = "abcdefghijk";
        EXPECT_EQ(memcpy_s(block + c.to, c.count, block + c.from, c.count), c.result) << c.name;
    }
}

// A negative length that was made unsigned is no size: nothing is written.
TEST(MemcpyS, ImpossibleSizes) {
    Destination dest;
    EXPECT_EQ(memcpy_s(dest.bytes, static_cast<std::size_t>(-1), "x", 1), ERANGE);
    EXPECT_EQ(memcpy_s(dest.bytes, KELP_SECURE_MAX + 1, "x", 1), ERANGE);
    EXPECT_EQ(dest.Bytes(), Padded("", kFill));
    EXPECT_EQ(memcpy_s(dest.bytes, kSize, "x", static_cast<std::size_t>(-1)), ERANGE);
    EXPECT_EQ(dest.Bytes(), Padded("", '\0'));
}

TEST(MemsetS, SetsWhatFitsAndZeroesOtherwise) {
    const struct {
        std::size_t count;
        int result;
        std::string after;
    } cases[] = {
        {0, 0, Padded("", kFill)},
        {1, 0, Padded("x", kFill)},
        {kSize - 1, 0, Padded("xxxxxxx", kFill)},
        {kSize, 0, "xxxxxxxx"},
        {kSize + 1, ERANGE, Padded("", '\0')},
        {static_cast<std::size_t>(-1), ERANGE, Padded("", '\0')},
    };
    for (const auto& c : cases) {
        Destination dest;
        // Only the low byte of the value counts.
        EXPECT_EQ(memset_s(dest.bytes, kSize, 0x100 + 'x', c.count), c.result) << c.count;
        EXPECT_EQ(dest.Bytes(), c.after) << c.count;
        EXPECT_TRUE(dest.GuardIsIntact()) << c.count;
    }
    EXPECT_EQ(memset_s(nullptr, kSize, 0, 1), EINVAL);
    EXPECT_EQ(memset_s(nullptr, 0, 0, 0), 0);
    Destination dest;
    EXPECT_EQ(memset_s(dest.bytes, KELP_SECURE_MAX + 1, 0, 1), ERANGE);
    EXPECT_EQ(dest.Bytes(), Padded("", kFill));
}

// The destination is a terminated text after every call, and the empty one after a
// failure.
TEST(StrcpyS, LeavesATerminatedText) {
    const struct {
        const char* source;
        int result;
        const char* after;
    } cases[] = {
        {"", 0, ""},
        {"a", 0, "a"},
        {"abcdefg", 0, "abcdefg"},
        {"abcdefgh", ERANGE, ""},
        {"abcdefghi", ERANGE, ""},
        {nullptr, EINVAL, ""},
    };
    for (const auto& c : cases) {
        const char* const name = c.source == nullptr ? "null" : c.source;
        Destination dest;
        EXPECT_EQ(strcpy_s(dest.bytes, kSize, c.source), c.result) << name;
        EXPECT_STREQ(dest.bytes, c.after) << name;
        EXPECT_TRUE(dest.GuardIsIntact()) << name;
    }
}

TEST(StrcpyS, DestinationThatCannotHoldAText) {
    Destination dest;
    EXPECT_EQ(strcpy_s(nullptr, kSize, "x"), EINVAL);
    EXPECT_EQ(strcpy_s(dest.bytes, 0, "x"), ERANGE);
    EXPECT_EQ(strcpy_s(dest.bytes, KELP_SECURE_MAX + 1, "x"), ERANGE);
    EXPECT_EQ(dest.Bytes(), Padded("", kFill));
}

TEST(StrcpyS, Overlap) {
    char block[16] = "abcdef";
    EXPECT_EQ(strcpy_s(block, 8, block + 2), EINVAL);
    EXPECT_STREQ(block, "");
    char same[16] = "abcdef";
    EXPECT_EQ(strcpy_s(same, sizeof same, same), EINVAL);
}

// At most `count` characters, and never a text that was cut for lack of room.
TEST(StrncpyS, CopiesAtMostCount) {
    const struct {
        const char* source;
        std::size_t count;
        int result;
        const char* after;
    } cases[] = {
        {"abc", 0, 0, ""},
        {"abc", 1, 0, "a"},
        {"abc", 3, 0, "abc"},
        {"abc", 100, 0, "abc"},
        {"abcdefghij", kSize - 1, 0, "abcdefg"},
        {"abcdefghij", kSize, ERANGE, ""},
        {"abcdefghij", kSize + 1, ERANGE, ""},
        {"abcdefg", static_cast<std::size_t>(-1), 0, "abcdefg"},
        {nullptr, 0, 0, ""},
        {nullptr, 1, EINVAL, ""},
    };
    for (const auto& c : cases) {
        const std::string name =
            std::string(c.source == nullptr ? "null" : c.source) + " " + std::to_string(c.count);
        Destination dest;
        EXPECT_EQ(strncpy_s(dest.bytes, kSize, c.source, c.count), c.result) << name;
        EXPECT_STREQ(dest.bytes, c.after) << name;
        EXPECT_TRUE(dest.GuardIsIntact()) << name;
    }
    Destination dest;
    EXPECT_EQ(strncpy_s(nullptr, kSize, "x", 1), EINVAL);
    EXPECT_EQ(strncpy_s(dest.bytes, 0, "x", 1), ERANGE);
    EXPECT_EQ(dest.Bytes(), Padded("", kFill));
}

// A source without a terminator is read no further than it is copied.
TEST(StrncpyS, SourceWithoutTerminator) {
    const char source[3] = {'a', 'b', 'c'};
    char dest[4];
    EXPECT_EQ(strncpy_s(dest, sizeof dest, source, sizeof source), 0);
    EXPECT_STREQ(dest, "abc");
}

TEST(StrncpyS, Overlap) {
    char block[16] = "abcdef";
    EXPECT_EQ(strncpy_s(block, 8, block + 2, 4), EINVAL);
    EXPECT_STREQ(block, "");
    char neighbours[16] = "????abcd";
    EXPECT_EQ(strncpy_s(neighbours, 4, neighbours + 4, 3), 0);
    EXPECT_STREQ(neighbours, "abc");
}

// The seam fails the n-th call of one routine, once, as a real failure would look.
TEST(FailNth, FailsOneCallAndNoOther) {
    using kelp::secure::FailNth;
    using kelp::secure::Routine;
    char block[4] = "abc";
    char text[4] = "abc";
    {
        const FailNth fault(Routine::kMemset, 2, 77);
        EXPECT_EQ(strcpy_s(text, sizeof text, "x"), 0) << "another routine";
        EXPECT_EQ(memset_s(block, sizeof block, 'm', 3), 0) << "the first call";
        EXPECT_FALSE(fault.Fired());
        EXPECT_EQ(memset_s(block, sizeof block, 'n', 3), 77);
        EXPECT_EQ(std::string(block, 4), std::string(4, '\0'));
        EXPECT_TRUE(fault.Fired());
        EXPECT_EQ(memset_s(block, sizeof block, 'o', 3), 0) << "the third call";
    }
    const FailNth gone(Routine::kMemset, 1);
    EXPECT_FALSE(gone.Fired());
}

TEST(FailNth, AnyRoutineInTheOrderOfTheCalls) {
    using kelp::secure::FailNth;
    char dest[8];
    int number = 0;
    const auto run = [&] {
        return (memcpy_s(dest, sizeof dest, "a", 1) != 0 ? 1 : 0) +
               (memset_s(dest, sizeof dest, 0, 1) != 0 ? 10 : 0) +
               (strcpy_s(dest, sizeof dest, "a") != 0 ? 100 : 0) +
               (strncpy_s(dest, sizeof dest, "a", 1) != 0 ? 1000 : 0) +
               (snprintf_s(dest, sizeof dest, 7, "%d", 5) == -1 ? 10000 : 0) +
               (sscanf_s("5", "%d", &number) == -1 ? 100000 : 0);
    };
    const int expected[] = {1, 10, 100, 1000, 10000, 100000, 0};
    for (int n = 1; n <= 7; ++n) {
        const FailNth fault(n);
        EXPECT_EQ(run(), expected[n - 1]) << "call " << n;
        EXPECT_EQ(fault.Fired(), n <= 6);
    }
    EXPECT_EQ(run(), 0) << "disarmed";
}

}  // namespace
