// What is encoded decodes to the same, in every form, and octets that were cut or damaged
// are refused or make a tree like any other.
#include "kelpctl/paraset/coding.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <vector>

#include "kelpctl/paraset/compare.h"
#include "kelpctl/paraset/tree_json.h"
#include "random_tree.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CParaSet;
using kelpctl::EncodeTree;
using kelpctl::Form;

const CEndeCode& Codec() {
    static const auto* const codec = new CEndeCode(std::string(CODEC_EXAMPLES) + "/elements.bcp");
    return *codec;
}

Form Key(int key) {
    return {Form::Kind::kCodec, key, -1, -1};
}

const Form kForms[] = {
    {}, {Form::Kind::kRequest}, {Form::Kind::kResponse}, Key(2000), {Form::Kind::kCodec, 258}};

std::string ExampleOctets(const char* name, const Form& form) {
    std::ifstream file(std::string(CODEC_EXAMPLES) + '/' + name);
    const std::string json((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    CParaSet tree("root");
    kelpctl::Complaint why;
    EXPECT_TRUE(ParseTree(json, tree, why)) << why.Line();
    std::string octets;
    std::string reason;
    EXPECT_TRUE(EncodeTree(Codec(), form, {}, tree, octets, reason)) << reason;
    return octets;
}

TEST(Coding, WhatIsEncodedDecodesToTheSame) {
    int encoded = 0;
    for (std::uint32_t seed = 0; seed < 4000; ++seed) {
        for (const Form& form : kForms) {
            CParaSet tree("root");
            RandomTree(seed).Fill(tree, 2);
            std::string octets = "old";
            std::string why;
            if (!EncodeTree(Codec(), form, {}, tree, octets, why)) {
                EXPECT_TRUE(why.starts_with('$')) << why;
                EXPECT_EQ(octets, "");
                continue;
            }
            ++encoded;
            CParaSet read("root");
            std::string note;
            ASSERT_TRUE(DecodeTree(Codec(), form, octets, read, why, note)) << seed << why;
            EXPECT_EQ(note, "");
            for (std::size_t length = 0; length < octets.size(); ++length) {
                CParaSet cut("root");
                EXPECT_FALSE(DecodeTree(Codec(), form, octets.substr(0, length), cut, why, note));
            }
            CParaSet more("root");
            EXPECT_FALSE(DecodeTree(Codec(), form, octets + '\5' + '\0', more, why, note));
        }
    }
    EXPECT_GT(encoded, 1000);
}

TEST(Coding, DamagedOctetsAreRefusedOrATree) {
    const struct {
        const char* name;
        int key;
    } examples[] = {{"element.json", 2000}, {"alarms.json", 2070}, {"branches.json", 2060}};
    for (const auto& example : examples) {
        const std::string octets = ExampleOctets(example.name, Key(example.key));
        for (std::size_t bit = 0; bit < 8 * octets.size(); ++bit) {
            std::string damaged = octets;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
            CParaSet tree("root");
            std::string why;
            std::string note;
            if (!DecodeTree(Codec(), Key(example.key), damaged, tree, why, note)) {
                EXPECT_NE(why.find(" at offset "), std::string::npos) << why;
                continue;
            }
            std::string again;
            if (EncodeTree(Codec(), Key(example.key), {}, tree, again, why)) {
                EXPECT_LE(again.size(), 2 * octets.size());
            }
        }
    }
}

TEST(Coding, AsStringLeavesTextInTheTree) {
    CParaSet tree("root");
    tree["a"] = 42;
    std::string octets;
    std::string why;
    ASSERT_TRUE(EncodeTree(Codec(), {}, {.as_string = true}, tree, octets, why)) << why;
    EXPECT_STREQ(tree["a"].asString(), "42");
    EXPECT_EQ(tree["a"].type(), CParaSet::PARA_STRING);
}

TEST(Coding, ElementBeyondTheHeadersLengthIsRefused) {
    CParaSet tree("root");
    for (int i = 0; i < 30; ++i) {
        tree[i] = std::string(600000, 'x');
    }
    std::string octets;
    std::string why;
    EXPECT_FALSE(EncodeTree(Codec(), {}, {}, tree, octets, why));
    EXPECT_EQ(why, "$[27]: cannot be encoded: the buffer is too small");
}

}  // namespace
