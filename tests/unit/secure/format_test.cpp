#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <string>

#include "kelp/secure.h"

namespace {

// What is cut, where, and what the result says: the count and the buffer's size limit
// the text independently.
TEST(SnprintfS, CutsAtTheSmallerLimit) {
    const struct {
        const char* text;
        std::size_t size;
        std::size_t count;
        int result;
        const char* after;
    } cases[] = {
        {"", 8, 7, 0, ""},
        {"a", 8, 7, 1, "a"},
        {"abcdefg", 8, 7, 7, "abcdefg"},
        {"abcdefgh", 8, 7, -1, "abcdefg"},
        {"abcdefghi", 8, 7, -1, "abcdefg"},
        {"abc", 8, 0, -1, ""},
        {"", 8, 0, 0, ""},
        {"abc", 8, 2, -1, "ab"},
        {"abc", 8, 3, 3, "abc"},
        {"abcdefgh", 8, 8, -1, "abcdefg"},
        {"abcdefgh", 8, 1000, -1, "abcdefg"},
        {"abcdefgh", 8, static_cast<std::size_t>(-1), -1, "abcdefg"},
        {"", 1, 0, 0, ""},
        {"a", 1, 1, -1, ""},
    };
    for (const auto& c : cases) {
        const std::string name = std::string(c.text) + " into " + std::to_string(c.size) + ", " +
                                 std::to_string(c.count);
        char buffer[16];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(snprintf_s(buffer, c.size, c.count, "%s", c.text), c.result) << name;
        EXPECT_STREQ(buffer, c.after) << name;
        for (std::size_t i = c.size; i < sizeof buffer; ++i) {
            EXPECT_EQ(buffer[i], '#') << name << " at " << i;
        }
    }
}

TEST(SnprintfS, BadArguments) {
    char buffer[8] = "before";
    // Through a pointer, since a compiler refuses a null format where it sees one.
    int (*const format)(char*, std::size_t, std::size_t, const char*, ...) = snprintf_s;
    EXPECT_EQ(snprintf_s(nullptr, 8, 7, "%d", 1), -1);
    EXPECT_EQ(snprintf_s(buffer, 0, 7, "%d", 1), -1);
    EXPECT_EQ(snprintf_s(buffer, KELP_SECURE_MAX + 1, 7, "%d", 1), -1);
    EXPECT_STREQ(buffer, "before") << "a destination without a believable size is not touched";
    EXPECT_EQ(format(buffer, 8, 7, nullptr, 1), -1);
    EXPECT_STREQ(buffer, "");
}

// A conversion that fails in the middle leaves no half text.
TEST(SnprintfS, FailingConversion) {
    char buffer[8] = "before";
    const wchar_t no_character[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(snprintf_s(buffer, sizeof buffer, 7, "ab%ls", no_character), -1);
    EXPECT_STREQ(buffer, "");
}

TEST(SnprintfS, CountsEmbeddedZeroes) {
    char buffer[8];
    EXPECT_EQ(snprintf_s(buffer, sizeof buffer, 7, "a%cb", 0), 3);
    EXPECT_EQ(std::string(buffer, 4), std::string("a\0b\0", 4));
}

}  // namespace
