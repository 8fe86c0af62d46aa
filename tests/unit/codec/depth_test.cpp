// How deep elements may be inside one another: 128 levels on a stack of 256 KB in both
// directions, and not one more, whatever makes the levels.
#include <gtest/gtest.h>

#include "support/codec.h"
#include "support/small_stack.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::CodecOf;
using support::Element;
using support::Octets;

constexpr const char* kTooDeep = "more than 128 elements are inside one another";

// A list in a list ..., with lengths as build writes them.
std::string NestedLists(int levels, std::string octets = Octets("02 01 07")) {
    for (int i = 0; i != levels; ++i) {
        octets = Element(0x30, octets);
    }
    return octets;
}

std::string Nested(unsigned char tag, int levels, std::string octets = Octets("02 01 07")) {
    while (levels-- != 0) {
        octets = Element(tag, octets);
    }
    return octets;
}

// What parse() says, on a small stack: "read" or why not, without the path.
std::string Outcome(const FrameUtil::CEndeCode& codec, const std::string& octets, As as) {
    std::string outcome;
    OnSmallStack([&] {
        CParaSet para("para");
        outcome = support::Parse(codec, octets, para, as);
    });
    if (outcome.empty()) {
        return "read";
    }
    const auto end = std::min(outcome.find(" in "), outcome.find(" @"));
    return outcome.starts_with("null: more") ? outcome.substr(6, std::string(kTooDeep).size())
                                             : outcome.substr(0, end);
}

const FrameUtil::CEndeCode& Codec() {
    static const auto codec = CodecOf(
        "2060 0 label 4 -1 128\n2060 0 branches 257 2060 -1\n"  // two levels at a time
        "2061 0 next 2061 -1 160\n"                             // an item refers to itself
        "2062 0 next 2062 -1 -1\n"
        "2063 0 list 257 2063 -1\n"  // a described list of itself
        "2064 0 next 256 -1 165\n");
    return *codec;
}

TEST(Depth, OfParseIs128) {
    const struct {
        const char* name;
        As as;
        std::string (*octets)(int levels);
    } rows[] = {
        {"structures that refer to themselves, optional",
         {2061, -1, 160},
         [](int levels) { return Nested(0xa0, levels, ""); }},
        {"described lists of themselves",
         {2063},
         [](int levels) { return NestedLists(levels, ""); }},
        {"explicit wrappers", {256, -1, 0xa0}, [](int levels) { return Nested(0xa0, levels); }},
        {"explicit wrappers, tag not given",
         {256},
         [](int levels) { return Nested(0xa5, levels); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        // The integer in a wrapper is read by a last look at its tag, which counts as one.
        const int most = row.as.type == 256 ? 127 : 128;
        EXPECT_EQ(Outcome(Codec(), row.octets(1), row.as), "read");
        EXPECT_EQ(Outcome(Codec(), row.octets(most), row.as), "read");
        EXPECT_EQ(Outcome(Codec(), row.octets(most + 1), row.as), kTooDeep);
        EXPECT_EQ(Outcome(Codec(), row.octets(2000), row.as), kTooDeep);
    }
}

// Elements that claim to hold what follows them, 100,000 of them, end at the same depth.
TEST(Depth, OfALongRunOfHeaders) {
    const struct {
        const char* name;
        const char* header;
        As as;
        const char* outcome;
    } rows[] = {
        {"indefinite", "30 80", {2063}, "null: the length is indefinite"},
        {"explicit tags of two octets",
         "a0 02",
         {2, -1, 0xa0},
         "null: the length exceeds the input"},
        {"explicit tags of two octets in a wrapper",
         "a0 02",
         {256},
         "null: the length exceeds the input"},
        {"lengths that lie", "30 84 7f ff ff ff", {2063}, "null: the length exceeds the input"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string octets = support::Repeat(Octets(row.header), 100'000);
        EXPECT_EQ(Outcome(Codec(), octets, row.as), row.outcome);
    }
    // Honest lengths, as far as four octets of length carry them.
    std::string honest;
    for (std::size_t left = 100'000; left != 0; --left) {
        const std::size_t length = (left - 1) * 6;
        honest += {'\x30',
                   '\x84',
                   static_cast<char>(length >> 24),
                   static_cast<char>(length >> 16),
                   static_cast<char>(length >> 8),
                   static_cast<char>(length)};
    }
    for (const As as : {As{2063}, As{257, 2063}, As{2062}}) {
        EXPECT_EQ(Outcome(Codec(), honest, as), kTooDeep);
    }
    for (std::size_t at = 0; at < honest.size(); at += 6) {
        honest[at] = '\xa0';
    }
    for (const As as : {As{256}, As{256, -1, 0xa0}, As{2061, -1, 0xa0}}) {
        EXPECT_EQ(Outcome(Codec(), honest, as), kTooDeep);
    }
}

TEST(Depth, OfBuildIs128) {
    const struct {
        const char* name;
        As as;
        void (*step)(CParaSet*& node);
    } rows[] = {
        {"lists", {}, [](CParaSet*& node) { node = &(*node)[0]; }},
        {"structures", {2062}, [](CParaSet*& node) { node = &(*node)["next"]; }},
    };
    for (const auto& row : rows) {
        for (const int levels : {1, 127, 128, 129, 5000}) {
            SCOPED_TRACE(row.name + std::string(" ") + std::to_string(levels));
            CParaSet para("para");
            CParaSet* node = &para;
            for (int i = 0; i != levels; ++i) {
                row.step(node);
            }
            // What stands in the innermost one.
            if (row.as.type == -1) {
                *node = 7;
            }
            for (const auto form : {support::Form::kPlain, support::Form::kText}) {
                std::string built;
                OnSmallStack([&] { built = support::Built(Codec(), para, row.as, 1000, form); });
                if (levels <= 128) {
                    EXPECT_EQ(built.substr(0, 5), "30 83");
                } else {
                    EXPECT_EQ(built.substr(0, 6 + std::string(kTooDeep).size()),
                              "null: " + std::string(kTooDeep));
                }
            }
        }
    }
}

// The deepest tree is written, read, copied and destroyed like any other.
TEST(Depth, TheDeepestTreeComesBack) {
    // A structure and a list at a time: 64 of each.
    CParaSet para("para");
    CParaSet* node = &para;
    for (int i = 0; i != 63; ++i) {
        (*node)["label"] = std::to_string(i);
        node = &(*node)["branches"][0];
    }
    (*node)["label"] = "end";
    CParaSet back("back");
    OnSmallStack([&] {
        std::string why;
        const std::string octets = support::Build(Codec(), para, {2060}, 10'000, why);
        EXPECT_EQ(why, "");
        EXPECT_EQ(support::Parse(Codec(), octets, back, {2060}), "");
        const CParaSet copy(back);
    });
    // The innermost list, which was missing, came back as an empty one.
    EXPECT_EQ(node->GetMapValue().at("branches"), nullptr);
    node->remove("branches");
    (*node)["branches"].SetType(CParaSet::PARA_ARRAY);
    EXPECT_EQ(Shape(back), Shape(para));
}

}  // namespace
