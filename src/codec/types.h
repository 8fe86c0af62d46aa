// The type codes of the description table, and what both directions go by.
#pragma once

#include <cstdint>

namespace FrameUtil {

namespace codec {

enum Type : int {
    kOfValue = -1,  // what the value, or the tag that is there, says
    kInteger = 2,
    kString = 4,
    kNull = 5,
    kReal = 9,
    kEmptyList = 16,  // of an item: a missing child is written as an empty structure
    kStructure = 48,
    kWrapper = 256,
    kList = 257,
    kNamedValue = 258,
    kLastCode = 1023,  // what is above is a description key
};

constexpr int kTypesOwn = -1;  // a tag: the type's own
constexpr int kNoDesc = -1;

// Elements inside one another; neither side's stack grows with what arrives.
constexpr unsigned kMaxDepth = 128;

// The header that is reserved before the contents of a structure are known: the tag, 0x83
// and three octets of length.
constexpr int kReserved = 5;
constexpr std::int64_t kMaxReserved = 0xFFFFFF;
// A wrapper's: the tag and one octet of length.
constexpr int kReservedWrapper = 2;
constexpr std::int64_t kMaxReservedWrapper = 0x7F;

// A tag from here on is constructed and of a class of its own: around a scalar, an explicit
// wrapper.
constexpr int kFirstExplicit = 0xA0;

}  // namespace codec

}  // namespace FrameUtil
