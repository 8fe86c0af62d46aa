// kelpctl/paraset/types.h - the codec's type codes as the tool follows them.
#pragma once

#include "frameutil/paraset.h"

namespace kelpctl::codec_type {

inline constexpr int kOfValue = -1;
inline constexpr int kInteger = 2;
inline constexpr int kString = 4;
inline constexpr int kNull = 5;
inline constexpr int kReal = 9;
inline constexpr int kEmptyList = 16;
inline constexpr int kStructure = 48;
inline constexpr int kWrapper = 256;
inline constexpr int kList = 257;
inline constexpr int kNamedValue = 258;
inline constexpr int kLastCode = 1023;  // what is above is a description's key

}  // namespace kelpctl::codec_type

namespace kelpctl {

/// "a text", "a list": what a node holds.
const char* KindOf(FrameUtil::CParaSet::ValueType type);

}  // namespace kelpctl
