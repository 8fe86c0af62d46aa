// What an input can make parse hold: a fixed multiple of what is there, whatever lengths
// claim, since a number of three octets becomes a node of the tree.
#include <gtest/gtest.h>

#include "support/codec.h"
#include "support/heap_meter.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::CodecOf;
using support::Element;
using support::Octets;
using support::Repeat;

// For the most costly element there is: an empty structure of two octets.
constexpr std::size_t kMultiple = 200;

std::size_t HeldBy(const FrameUtil::CEndeCode& codec, std::string octets, As as) {
    CParaSet para("para");
    int len = static_cast<int>(octets.size());
    const std::size_t before = support::HeapInUse();
    codec.parse(para, reinterpret_cast<unsigned char*>(octets.data()), len, as.type, as.desc,
                as.tag);
    const std::size_t after = support::HeapInUse();
    return after > before ? after - before : 0;
}

TEST(MemoryOfParse, IsAMultipleOfTheInput) {
    const auto codec = CodecOf("1100 0 a 257 1101 128\n1101 0 s 4 -1 -1\n");
    constexpr std::size_t kMany = 30'000;
    const struct {
        const char* name;
        std::string octets;
        As as;
    } rows[] = {
        {"integers", Element(0x30, Repeat(Octets("02 01 05"), kMany)), {257, 2}},
        {"empty strings", Element(0x30, Repeat(Octets("04 00"), kMany)), {257, 4}},
        {"empty structures", Element(0x30, Repeat(Octets("30 00"), kMany)), {257, 9999}},
        {"structures of a string",
         Element(0x30, Repeat(Octets("30 02 04 00"), kMany)),
         {257, 1101}},
        {"one string", Element(4, std::string(600'000, 'x')), {4}},
        {"integers, and a malformed one at the end",
         Element(0x30, Repeat(Octets("02 01 05"), kMany) + Octets("02 00")),
         {257, 2}},
        {"named values",
         Element(0x30,
                 [] {
                     std::string octets;
                     for (int i = 0; i < 10'000; ++i) {
                         octets +=
                             Element(0x30, Element(4, std::to_string(i)) + Octets("02 01 05"));
                     }
                     return octets;
                 }()),
         {257, 258}},
    };
    for (const auto& row : rows) {
        EXPECT_LE(HeldBy(*codec, row.octets, row.as),
                  kMultiple * row.octets.size() + support::kHeapNoise)
            << row.name;
    }
}

TEST(MemoryOfParse, DoesNotDependOnWhatLengthsClaim) {
    const auto codec = CodecOf("");
    for (const char* octets : {"30 83 ff ff ff 02 01 05", "04 84 7f ff ff ff 61",
                               "30 84 7f ff ff ff 04 84 7f ff ff f0 61"}) {
        EXPECT_LE(HeldBy(*codec, Octets(octets), {}), support::kHeapNoise) << octets;
    }
}

// One octet string more is one node more, not one scratch buffer of the longest string.
TEST(MemoryOfParse, ShortStringsAreShort) {
    const auto codec = CodecOf("");
    const std::string octets = Element(0x30, Repeat(Element(4, "eth0"), 150'000));
    EXPECT_GT(octets.size(), 655360u);
    EXPECT_LE(HeldBy(*codec, octets, {257, 4}), kMultiple * octets.size() + support::kHeapNoise);
}

}  // namespace
