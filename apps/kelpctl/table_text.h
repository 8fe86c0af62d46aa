// kelpctl/table_text.h - an answer for people: aligned columns, one table under another.
//
// A table of one row is shown as a list of names and values. Octets that a terminal would
// act on are escaped (support/utf8.h); a cell without value, or holding a number that is
// none, shows as "-". Columns are padded to their widest cell, but not beyond
// kMostPadding, so that one long cell does not cost every row its length.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <ostream>

#include "kelpctl/answer.h"

namespace kelpctl {

inline constexpr std::size_t kMostPadding = 200;
inline constexpr std::size_t kAllRows = static_cast<std::size_t>(-1);

/// Writes "##retCodeEx" and "##ver", if they are there, and the tables, of each at most
/// `most_rows` rows and then how many there are.
void PrintText(const Answer& answer, std::size_t most_rows, std::ostream& out);

}  // namespace kelpctl
