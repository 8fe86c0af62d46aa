// kelpctl/paraset/undescribed.h - values that are coded without a description.
//
//     7, 0.5, "x", {"$bytes": "ff"}    an element of their own type
//     [1, "x"]                         a list (257) of such elements
//     {"a": 1, "b": "x"}               a list of named values (257, 258)
//
// Whatever is inside such a list or named value is no list or structure itself: without a
// description it would be read as an empty structure. An empty list has the octets of an
// empty structure, as which it reads back.
//
// Thread rule: thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "frameutil/paraset.h"
#include "kelpctl/paraset/coding.h"

namespace kelpctl {

/// The codec's arguments for writing `tree`.
Form FormOfValue(const FrameUtil::CParaSet& tree);

/// The codec's arguments for reading `octets`, chosen by their tags. What the codec would
/// leave out without a word is refused: nothing, with `why` naming the offset. Malformed
/// octets are left to the codec.
std::optional<Form> FormOfOctets(std::string_view octets, std::string& why);

}  // namespace kelpctl
