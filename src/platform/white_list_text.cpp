#include "platform/white_list_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace FrameUtil {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kWhite = " \t\n\r";

// What an entry keeps of its line. White space at the end goes only when the last visible
// character is not also the first: a single character keeps what stands behind it. Files
// depend on how they are read, so this stays.
std::string_view Trim(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kWhite), line.size()));
    const std::size_t last = line.find_last_not_of(kWhite);
    return last != 0 && last != std::string_view::npos ? line.substr(0, last + 1) : line;
}

}  // namespace

std::vector<WhiteListEntry> ReadWhiteList(std::string_view contents) {
    if (contents.starts_with(kByteOrderMark)) {
        contents.remove_prefix(kByteOrderMark.size());
    }
    std::vector<WhiteListEntry> entries;
    for (std::size_t number = 1; !contents.empty(); ++number) {
        const std::size_t end = std::min(contents.find('\n'), contents.size());
        const std::string_view entry = Trim(contents.substr(0, end));
        if (!entry.empty() && entry.front() != '#') {
            entries.push_back({std::string(entry), number});
        }
        contents.remove_prefix(std::min(end + 1, contents.size()));
    }
    return entries;
}

bool IsCommandCode(std::string_view entry) {
    std::uint32_t code = 0;
    const char* const end = entry.data() + entry.size();
    const auto [stop, error] = std::from_chars(entry.data(), end, code);
    const bool is_shortest = entry.size() == 1 || !entry.starts_with('0');
    return error == std::errc() && stop == end && is_shortest;
}

}  // namespace FrameUtil
