// kelpctl/paraset/tree_json.h - parameter sets as JSON, and back without loss.
//
//     {"neId": 7, "load": 0.5, "ports": ["eth0", "eth1"], "where": {"site": "north"}}
//
// | in the tree            | in JSON                                               |
// |------------------------|-------------------------------------------------------|
// | integer                | a number without point and exponent, of 32 bits       |
// | double                 | a number with either; {"$double": "NaN"}, "Infinity", |
// |                        | "-Infinity"                                           |
// | string that is UTF-8   | a text                                                |
// | any other string       | {"$bytes": "ff00"}: its octets in hexadecimal         |
// | list                   | an array                                              |
// | structure              | an object                                             |
// | not valued             | null                                                  |
// | resource record        | {"$resource": {"resDN": "...", ...}}, or null in it   |
// | slot or entry without  | {"$absent": true}                                     |
// | a child                |                                                       |
// | value with a name of   | {"$name": "...", "$desc": "...", "$value": ...};      |
// | its own, a description | "$name" or "$desc" may be missing                     |
//
// A structure's key that begins with "$" has it doubled ("$$cost"), and one that is no
// UTF-8 is "$bytes:" and hexadecimal. A node's own name is that of its key; of elements and
// of the root "root".
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <ostream>
#include <string_view>

#include "frameutil/paraset.h"
#include "kelpctl/paraset/tree_path.h"

namespace kelpctl {

inline constexpr std::size_t kTreeJsonBytes = std::size_t{16} << 20;
/// Levels of arrays and objects. The codec has 128 elements inside one another, and a node
/// of the tree may take two objects.
inline constexpr int kTreeJsonDepth = 300;

/// What elements of lists are called, and a root.
inline constexpr const char* kRootName = "root";

/// Makes `tree`, which is not valued, what `text` spells; false with `why` when it is no
/// JSON (its path is empty then) or none that a tree has a value for. `tree` holds
/// anything then.
bool ParseTree(std::string_view text, FrameUtil::CParaSet& tree, Complaint& why);

/// Writes `tree` and a line end. The stream's flags do not matter. Nodes of a type that no
/// operation makes are written as null. REQUIRES: no deeper than kTreeJsonDepth.
void PrintTree(FrameUtil::CParaSet& tree, std::ostream& out);

}  // namespace kelpctl
