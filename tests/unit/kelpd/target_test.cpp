// A target's path and query are decoded once, and what could be read in two ways is refused.

#include "kelpd/http/target.h"

#include <gmock/gmock.h>

namespace kelpd {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(Target, DecodesPathAndQuery) {
    Target target;
    ASSERT_TRUE(
        ParseTarget("/mq/a%20b/%E6%9D%B1%E4%BA%AC+?most=5&name=a+b%26c&x&=v&&most=6", target));
    EXPECT_THAT(target.segments, ElementsAre("mq", "a b", "\u6771\u4eac+"));
    EXPECT_THAT(target.query, ElementsAre(Pair("most", "5"), Pair("name", "a b&c"), Pair("x", ""),
                                          Pair("", "v"), Pair("most", "6")));
}

TEST(Target, RootHasNoSegments) {
    for (const char* text : {"/", "/?", "/?&"}) {
        Target target;
        target.segments = {"left from before"};
        ASSERT_TRUE(ParseTarget(text, target)) << text;
        EXPECT_THAT(target.segments, IsEmpty()) << text;
        EXPECT_THAT(target.query, IsEmpty()) << text;
    }
}

TEST(Target, RefusesWhatIsAmbiguous) {
    using namespace std::string_view_literals;
    struct Case {
        const char* name;
        std::string_view text;
    };
    const Case cases[] = {
        {"nothing", ""},
        {"no slash", "rest"},
        {"asterisk", "*"},
        {"another host", "https://other/rest"},
        {"authority", "//other/rest"},
        {"empty segment", "/a//b"},
        {"trailing slash", "/a/"},
        {"dot", "/a/./b"},
        {"dots", "/a/../b"},
        {"last dots", "/a/.."},
        {"encoded dots", "/a/%2e%2E/b"},
        {"encoded slash", "/a%2fb"},
        {"backslash", "/a\\b"},
        {"encoded backslash", "/a%5cb"},
        {"half escape", "/a%4"},
        {"escape at the end", "/a%"},
        {"no hexadecimal", "/a%4g"},
        {"sign in an escape", "/a%+4"},
        {"zero", "/a%00"},
        {"raw zero", "/a\0b"sv},
        {"line break", "/a%0d%0a"},
        {"delete", "/a%7f"},
        {"no UTF-8", "/%ff"},
        {"overlong", "/%c0%af"},
        {"surrogate", "/%ed%a0%80"},
        {"fragment", "/a#b"},
        {"fragment in the query", "/a?b#c"},
        {"half escape in the query", "/a?b=%4"},
        {"zero in the query", "/a?b%00=1"},
        {"no UTF-8 in the query", "/a?b=%80"},
    };
    for (const Case& c : cases) {
        Target target;
        EXPECT_FALSE(ParseTarget(c.text, target)) << c.name;
    }
}

std::string Repeat(std::string_view text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST(Target, CountsHaveLimits) {
    Target target;
    EXPECT_TRUE(ParseTarget(Repeat("/a", kMostSegments), target));
    EXPECT_FALSE(ParseTarget(Repeat("/a", kMostSegments + 1), target));
    EXPECT_TRUE(ParseTarget("/?" + Repeat("a&", kMostParameters), target));
    EXPECT_FALSE(ParseTarget("/?" + Repeat("a&", kMostParameters + 1), target));
}

std::string Escaped(unsigned octet) {
    constexpr char kHex[] = "0123456789abcdef";
    return {'%', kHex[octet >> 4], kHex[octet & 15]};
}

TEST(Target, EveryEscapedOctetIsItselfOrRefused) {
    for (unsigned octet = 0; octet < 256; ++octet) {
        const bool good =
            octet >= 0x20 && octet < 0x7F && octet != '/' && octet != '\\' && octet != '.';
        Target target;
        ASSERT_EQ(ParseTarget("/" + Escaped(octet), target), good) << octet;
        if (good) {
            EXPECT_THAT(target.segments, ElementsAre(std::string(1, static_cast<char>(octet))));
        }
    }
}

}  // namespace
}  // namespace kelpd
