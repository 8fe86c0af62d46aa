// A resource file's contents taken apart.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelp::resource {

/// The longest line, without its line end, in octets: a text for a person is shorter, and
/// a file without line ends is no resource file.
inline constexpr std::size_t kMaxLine = 65536;

/// One text. Both point into what was parsed.
struct Entry {
    std::string_view key;
    std::string_view value;
};

/// Why a file is refused.
struct Fault {
    std::size_t line = 0;  ///< from 1; 0: not a line's
    std::string what;
};

/// The entries of `text` in its order, each key once. False, with no entries and the
/// first line that is at fault, when it is not of the format.
bool Parse(std::string_view text, std::vector<Entry>& entries, Fault& fault);

}  // namespace kelp::resource
