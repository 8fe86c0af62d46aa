// kelpctl/arguments.h - a command's arguments, as pairs on the command line or in a file.
//
// `key=value`: the value's look decides its type.
//
// | it looks like | type |
// |---|---|
// | an integer without needless digits (0, -7, 2147483647) | integer of 32 bits |
// | a number with a decimal point (1.5, -0.25, 6.02e+23 with its point) | double |
// | anything else, also 007, +1, 2E10, .5 | text |
//
// `key:=json`: a JSON text, number, true or false (1 and 0): `key:="42"` is text, 1e3 is a
// double. An integer that does not fit 32 bits is refused rather than bent.
// A file holds one JSON object of such values.
//
// Thread rule: thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frameutil/paraset.h"

namespace kelpctl {

using ArgumentValue = std::variant<std::int32_t, double, std::string>;

struct Argument {
    std::string name;  ///< a letter or '_', then letters, digits, '_' and '-'
    ArgumentValue value;
};

using Arguments = std::vector<Argument>;

/// Adds what `pair` spells to `arguments`. False, `arguments` unchanged and `why` naming
/// the pair, when it is malformed or its name is there already.
bool AddPair(std::string_view pair, Arguments& arguments, std::string& why);

/// Adds the members of the JSON object `text`. False, with `why`, when it is no such
/// object, a member is neither text, number, true nor false, or a name is there already.
bool AddObject(std::string_view text, Arguments& arguments, std::string& why);

/// `request` becomes the root of a common request: "##UserID" and, unless there are no
/// arguments, one row whose columns they are.
void FillRequest(const Arguments& arguments, std::int32_t user_id, FrameUtil::CParaSet& request);

}  // namespace kelpctl
