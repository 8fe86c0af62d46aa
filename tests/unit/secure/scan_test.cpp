#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cstring>
#include <string>

#include "kelp/secure.h"

namespace {

// Whole numbers: what is read, and the nearest value when the type cannot hold it.
TEST(SscanfS, WholeNumbers) {
    const struct {
        const char* text;
        const char* format;
        int result;
        long long value;
    } cases[] = {
        {"12", "%lld", 1, 12},
        {"  -12abc", "%lld", 1, -12},
        {"+5", "%lld", 1, 5},
        {"12345", "%3lld", 1, 123},
        {"0x1F", "%lli", 1, 31},
        {"017", "%lli", 1, 15},
        {"0x", "%lli", 1, 0},
        {"9223372036854775807", "%lld", 1, LLONG_MAX},
        {"9223372036854775808", "%lld", 1, LLONG_MAX},
        {"99999999999999999999999", "%lld", 1, LLONG_MAX},
        {"-9223372036854775808", "%lld", 1, LLONG_MIN},
        {"-99999999999999999999999", "%lld", 1, LLONG_MIN},
        {"x", "%lld", 0, 7},
        {"-", "%lld", 0, 7},
        {"", "%lld", -1, 7},
        {"   ", "%lld", -1, 7},
        {"a=5", "a=%lld", 1, 5},
        {"b=5", "a=%lld", 0, 7},
        {"a", "a=%lld", -1, 7},
        {"a  5", "a %lld", 1, 5},
        {"%5", "%%%lld", 1, 5},
        {"1 2", "%*d %lld", 1, 2},
    };
    for (const auto& c : cases) {
        long long value = 7;
        EXPECT_EQ(sscanf_s(c.text, c.format, &value), c.result) << c.text << " by " << c.format;
        EXPECT_EQ(value, c.value) << c.text << " by " << c.format;
    }
}

TEST(SscanfS, EveryWidthOfInteger) {
    char c = 0;
    signed char sc = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned u = 0;
    long l = 0;
    unsigned long ul = 0;
    long long ll = 0;
    unsigned long long ull = 0;
    EXPECT_EQ(sscanf_s("65 -128 255 -32768 65535 -2147483648 4294967295 -5 5 -6 6",
                       "%hhd %hhd %hhu %hd %hu %d %u %ld %lu %lld %llu", &c, &sc, &uc, &s, &us, &i,
                       &u, &l, &ul, &ll, &ull),
              11);
    EXPECT_EQ(c, 'A');
    EXPECT_EQ(sc, -128);
    EXPECT_EQ(uc, 255);
    EXPECT_EQ(s, -32768);
    EXPECT_EQ(us, 65535);
    EXPECT_EQ(i, INT_MIN);
    EXPECT_EQ(u, UINT_MAX);
    EXPECT_EQ(l, -5);
    EXPECT_EQ(ul, 5U);
    EXPECT_EQ(ll, -6);
    EXPECT_EQ(ull, 6U);

    EXPECT_EQ(sscanf_s("70000 -1 ff 77 128", "%hd %u %lx %lo %hhd", &s, &u, &ul, &ul, &sc), 5);
    EXPECT_EQ(s, SHRT_MAX);
    EXPECT_EQ(u, 0U) << "the nearest value of an unsigned type to -1";
    EXPECT_EQ(sc, 127);
    std::size_t size = 0;
    EXPECT_EQ(sscanf_s("18446744073709551616", "%zu", &size), 1);
    EXPECT_EQ(size, SIZE_MAX);
}

TEST(SscanfS, FloatingNumbers) {
    const struct {
        const char* text;
        const char* format;
        int result;
        double value;
    } cases[] = {
        {"1.5", "%lf", 1, 1.5},         {"+1.5e3x", "%lg", 1, 1500},
        {"-.25", "%le", 1, -0.25},      {"1e999", "%lf", 1, DBL_MAX},
        {"-1e999", "%lf", 1, -DBL_MAX}, {"1e-999", "%lf", 1, 0},
        {"12.75", "%4lf", 1, 12.7},     {"x", "%lf", 0, 7},
        {"+-1", "%lf", 0, 7},           {"", "%lf", -1, 7},
    };
    for (const auto& c : cases) {
        double value = 7;
        EXPECT_EQ(sscanf_s(c.text, c.format, &value), c.result) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
    float narrow = 0;
    EXPECT_EQ(sscanf_s("1e300", "%f", &narrow), 1);
    EXPECT_EQ(narrow, FLT_MAX);
    EXPECT_EQ(sscanf_s("-1e300", "%f", &narrow), 1);
    EXPECT_EQ(narrow, -FLT_MAX);
}

// A text goes into its buffer with its terminator or not at all.
TEST(SscanfS, TextsKnowTheirBuffers) {
    const struct {
        const char* text;
        const char* format;
        std::size_t size;
        int result;
        const char* after;
    } cases[] = {
        {"abc def", "%s", 8, 1, "abc"},
        {"  abc", "%s", 8, 1, "abc"},
        {"abcdefg", "%s", 8, 1, "abcdefg"},
        {"abcdefgh", "%s", 8, 0, ""},
        {"abcdefgh", "%7s", 8, 1, "abcdefg"},
        {"abc", "%s", 1, 0, ""},
        {"abc", "%s", 0, 0, "before"},
        {"", "%s", 8, -1, "before"},
        {"host:80", "%[^:]", 8, 1, "host"},
        {":80", "%[^:]", 8, 0, "before"},
        {"]x", "%[]]", 8, 1, "]"},
        {"ax]y", "%[^]]", 8, 1, "ax"},
        {"a-z9_", "%[a-z-]", 8, 1, "a-z"},
        {"0123456789", "%[0-9]", 8, 0, ""},
    };
    for (const auto& c : cases) {
        char buffer[16] = "before\0########";
        EXPECT_EQ(sscanf_s(c.text, c.format, buffer, c.size), c.result)
            << c.text << " by " << c.format;
        EXPECT_STREQ(buffer, c.after) << c.text << " by " << c.format;
        EXPECT_EQ(buffer[8], '#') << c.text << " by " << c.format;
    }
}

// %c stores bare characters: exactly as many as its width, blanks too, no terminator.
TEST(SscanfS, Characters) {
    char three[4] = "###";
    EXPECT_EQ(sscanf_s(" a b", "%3c", three, 3), 1);
    EXPECT_EQ(std::string(three, 4), std::string(" a \0", 4));
    char one = '#';
    EXPECT_EQ(sscanf_s("x", "%c", &one, 1), 1);
    EXPECT_EQ(one, 'x');
    EXPECT_EQ(sscanf_s("ab", "%3c", three, 3), -1) << "the text ends too early";
    EXPECT_EQ(sscanf_s("abc", "%3c", three, 2), 0) << "the buffer is too small";
}

TEST(SscanfS, SeveralValuesAndThePosition) {
    char host[16];
    int port = 0;
    int position = 0;
    EXPECT_EQ(sscanf_s("nms.local:8443/x", "%15[^:]:%d%n", host, sizeof host, &port, &position), 2);
    EXPECT_STREQ(host, "nms.local");
    EXPECT_EQ(port, 8443);
    EXPECT_EQ(position, 14);
    EXPECT_EQ(sscanf_s("nms:", "%15[^:]:%d", host, sizeof host, &port), 1);
    EXPECT_EQ(sscanf_s("nms:x", "%15[^:]:%d", host, sizeof host, &port), 1);
}

// The types of the arguments are known, so a call that C would answer with a damaged
// stack is refused.
TEST(SscanfS, ArgumentsThatDoNotFitTheFormat) {
    int number = 7;
    short narrow = 7;
    char text[8] = "before";
    int* const nowhere = nullptr;
    const char* const no_text = nullptr;
    EXPECT_EQ(sscanf_s("5", "%d", &narrow), -1);
    EXPECT_EQ(sscanf_s("5", "%ld", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%u", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%d"), -1);
    EXPECT_EQ(sscanf_s("5", "%d", nowhere), -1);
    EXPECT_EQ(sscanf_s("5", "%s", text), -1) << "a buffer without its size";
    EXPECT_EQ(sscanf_s("5", "%f", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%lllld", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%q", &number), -1);
    EXPECT_EQ(sscanf_s("5", "%[", text, sizeof text), -1);
    EXPECT_EQ(sscanf_s("5", "%[a", text, sizeof text), -1);
    EXPECT_EQ(sscanf_s("5", "%99999999999d", &number), -1);
    EXPECT_EQ(sscanf_s(no_text, "%d", &number), -1);
    EXPECT_EQ(sscanf_s("5", no_text, &number), -1);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(narrow, 7);
    EXPECT_STREQ(text, "before");
    EXPECT_EQ(sscanf_s("abc", "abc"), 0) << "nothing to store is no error";
}

}  // namespace
