// Any octets as what parse is told to expect, with the example's descriptions and without.
// The first octet chooses: below 128 one of the descriptions that the format is symmetric
// for, whose tree is then built and read again; from 128 on type, desc and tag stand in the
// next six octets.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"
#include "frameutil/paraset.h"
#include "kelp/log.h"
#include "require.h"
#include "support/heap_meter.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CodecFault;
using FrameUtil::CParaSet;

struct As {
    int type = -1;
    int desc = -1;
    int tag = -1;
};

constexpr As kSymmetric[] = {
    {2000},
    {2010},
    {2020},
    {2030},
    {2060},
    {2070},
    {2071},
    {2072},
    {2080},
    {48, 2000},
    {257, 2000},
    {257, 2060},
    {-1},
    {2},
    {4},
    {9},
    {257, 2},
    {257, 4},
    {257, 9},
    {257, 258},
    {257, 257},
    {256, -1, 0xa5},
    {2, -1, 0x82},
    {4, -1, 0x82},
    {257, 258, 0xa3},
    {2000, -1, 0xa4},
    {258},
    {258, -1, 0xa1},
    {9999},
    {9, -1, 0x82},
};

// A number of two octets becomes a node.
constexpr std::size_t kMultiple = 256;

const CEndeCode& Codec() {
    static const CEndeCode codec{std::string(CODEC_EXAMPLE)};
    return codec;
}

enum class Outcome { kMalformed, kAbsent, kRead };

Outcome Parse(const std::string& octets, CParaSet& para, As as, CodecFault& fault) {
    // A buffer of exactly this size, so that a sanitizer sees the octet behind it.
    std::vector<unsigned char> exact(octets.begin(), octets.end());
    int len = static_cast<int>(exact.size());
    const unsigned char* const end =
        Codec().parse(para, exact.data(), len, as.type, as.desc, as.tag, &fault);
    if (end == nullptr) {
        Require(len == static_cast<int>(exact.size()), "a failure changes len");
        Require(*fault.reason != '\0', "a failure without a reason");
        Require(fault.offset >= 0 && fault.offset <= len, "a failure outside the input");
        return Outcome::kMalformed;
    }
    Require(end - exact.data() + len == static_cast<std::ptrdiff_t>(exact.size()) && len >= 0,
            "len is not what remains");
    if (end == exact.data()) {
        Require(para.isNull(), "an absent element has a value");
        return Outcome::kAbsent;
    }
    return Outcome::kRead;
}

// "" and a reason when it fails.
std::string Build(CParaSet& para, As as, std::size_t room, CodecFault& fault) {
    std::vector<unsigned char> exact(room);
    int len = static_cast<int>(room);
    const unsigned char* const end =
        Codec().build(para, exact.data(), len, as.type, as.desc, as.tag, &fault);
    if (end == nullptr) {
        Require(len == static_cast<int>(room), "a failure changes len");
        Require(*fault.reason != '\0', "a failure without a reason");
        return "";
    }
    Require(end - exact.data() + len == static_cast<std::ptrdiff_t>(room),
            "len is not what remains");
    return {reinterpret_cast<const char*>(exact.data()), reinterpret_cast<const char*>(end)};
}

// Whether `tree` has all that `part` has; what it has more are empty lists, which is what
// missing ones are written as.
bool Contains(CParaSet& tree, CParaSet& part);

bool ContainsChildren(CParaSet& tree, CParaSet& part) {
    for (auto& [name, child] : tree.GetMapValue()) {
        const auto own = part.GetMapValue().find(name);
        if (own == part.GetMapValue().end() || own->second == nullptr) {
            if (child != nullptr && (child->type() != CParaSet::PARA_ARRAY || child->size() != 0)) {
                return false;
            }
        } else if (child == nullptr || !Contains(*child, *own->second)) {
            return false;
        }
    }
    return std::all_of(part.GetMapValue().begin(), part.GetMapValue().end(), [&](auto& entry) {
        return entry.second == nullptr || tree.GetMapValue().count(entry.first) == 1;
    });
}

bool Contains(CParaSet& tree, CParaSet& part) {
    if (tree.type() != part.type()) {
        return false;
    }
    switch (part.type()) {
        case CParaSet::PARA_INT:
            return tree.asInt() == part.asInt();
        case CParaSet::PARA_DOUBLE: {
            const double a = tree.asDouble();
            const double b = part.asDouble();
            return a != a ? b != b : std::memcmp(&a, &b, sizeof a) == 0;
        }
        case CParaSet::PARA_STRING: {
            std::string a;
            std::string b;
            tree.getBytes(a);
            part.getBytes(b);
            return a == b;
        }
        case CParaSet::PARA_STRUCT:
            return ContainsChildren(tree, part);
        case CParaSet::PARA_ARRAY:
            return std::equal(tree.GetVctValue().begin(), tree.GetVctValue().end(),
                              part.GetVctValue().begin(), part.GetVctValue().end(),
                              [](CParaSet* a, CParaSet* b) { return Contains(*a, *b); });
        default:
            return true;
    }
}

void BuildAndReadAgain(CParaSet& tree, As as) {
    if (tree.isNull()) {
        return;
    }
    constexpr std::size_t kRoom = std::size_t{1} << 20;
    CodecFault fault;
    const std::string octets = Build(tree, as, kRoom, fault);
    if (octets.empty()) {
        // A wrapper around more than fits is the one thing that only parse takes.
        Require(std::string_view(fault.reason) == "the contents do not fit the reserved header",
                "a tree that was read is not built");
        return;
    }
    CodecFault short_of_room;
    Require(Build(tree, as, octets.size() - 1, short_of_room).empty(), "it fits where it does not");
    Require(Build(tree, as, octets.size(), short_of_room) == octets, "it is built otherwise");
    CParaSet again("again");
    const Outcome outcome = Parse(octets, again, as, fault);
    if (outcome == Outcome::kMalformed) {
        // What parse found absent before other elements it misses at the end.
        Require(
            std::string_view(fault.reason) == "the input ends before a child that is not optional",
            "what was built is malformed");
        return;
    }
    Require(outcome == Outcome::kRead, "what was built is absent");
    Require(Contains(again, tree), "what was built is read as something else");
    const std::string once_more = Build(again, as, kRoom, fault);
    CParaSet third("third");
    Require(Parse(once_more, third, as, fault) == Outcome::kRead, "it is not read once more");
    Require(Contains(third, again) && Contains(again, third), "it changes when it is read again");
    Require(Build(third, as, kRoom, fault) == once_more, "it changes when it is built again");
    CParaSet as_text(tree);
    std::vector<unsigned char> room(kRoom);
    int len = static_cast<int>(kRoom);
    Codec().buildAsString(as_text, room.data(), len, as.type, as.desc, as.tag);
    Require(len >= 0, "the string build takes more than there is");
}

int Read16(const std::uint8_t* at) {
    return static_cast<std::int16_t>(at[0] << 8 | at[1]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = (kelp::log::SetLevel(kelp::log::Level::kOff), true);
    if (!quiet || size == 0) {
        return 0;
    }
    const bool symmetric = data[0] < 128;
    As as;
    std::size_t header = 1;
    if (symmetric) {
        as = kSymmetric[data[0] % std::size(kSymmetric)];
    } else if (size >= 7) {
        as = {Read16(data + 1), Read16(data + 3), Read16(data + 5)};
        header = 7;
    }
    const std::string octets(reinterpret_cast<const char*>(data) + header, size - header);
    Codec();
    CParaSet para("para");
    CodecFault fault;
    const std::size_t before = support::HeapInUse();
    const Outcome outcome = Parse(octets, para, as, fault);
    Require(support::HeapInUse() <= before + kMultiple * size + support::kHeapNoise,
            "a tree holds too much memory");
    if (symmetric && outcome == Outcome::kRead) {
        BuildAndReadAgain(para, as);
    } else {
        std::vector<unsigned char> room(4096);
        int len = static_cast<int>(room.size());
        Codec().build(para, room.data(), len, as.type, as.desc, as.tag, &fault);
        Codec().buildAsString(para, room.data(), len, as.type, as.desc, as.tag, &fault);
    }
    const CParaSet copy(para);
    Require(copy.type() == para.type(), "a copy is of another type");
    return 0;
}
