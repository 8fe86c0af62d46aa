// A white-list file's contents taken apart.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace FrameUtil {

/// An entry and the line it stands in, from 1.
struct WhiteListEntry {
    std::string text;
    std::size_t line;
};

/// The entries of a file in its order.
std::vector<WhiteListEntry> ReadWhiteList(std::string_view contents);

/// Whether an entry can equal a command's code: its decimal form, 32 bits.
bool IsCommandCode(std::string_view entry);

}  // namespace FrameUtil
