// Any octets as a white-list file, read a second way: character by character, as the rule
// is worded.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/white_list_text.h"
#include "require.h"

namespace {

bool IsWhite(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

void Take(std::string line, std::size_t number, std::vector<FrameUtil::WhiteListEntry>& entries) {
    while (!line.empty() && IsWhite(line.front())) {
        line.erase(line.begin());
    }
    std::string bare = line;
    while (!bare.empty() && IsWhite(bare.back())) {
        bare.pop_back();
    }
    if (bare.size() != 1) {
        line = bare;
    }
    if (!line.empty() && line[0] != '#') {
        entries.push_back({line, number});
    }
}

std::vector<FrameUtil::WhiteListEntry> ReadAgain(const std::string& contents) {
    std::vector<FrameUtil::WhiteListEntry> entries;
    std::string line;
    std::size_t number = 1;
    std::size_t at = contents.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    for (; at < contents.size(); ++at) {
        if (contents[at] != '\n') {
            line += contents[at];
            continue;
        }
        Take(line, number++, entries);
        line.clear();
    }
    Take(line, number, entries);
    return entries;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string contents(reinterpret_cast<const char*>(data), size);
    const auto entries = FrameUtil::ReadWhiteList(contents);
    const auto again = ReadAgain(contents);
    Require(entries.size() == again.size(), "the number of entries differs");
    for (std::size_t i = 0; i < entries.size(); ++i) {
        Require(entries[i].text == again[i].text, "an entry differs");
        Require(entries[i].line == again[i].line, "an entry's line differs");
        const bool is_code = FrameUtil::IsCommandCode(entries[i].text);
        const std::string number =
            std::to_string(std::strtoul(entries[i].text.c_str(), nullptr, 10));
        Require(is_code == (number == entries[i].text && number.size() <= 10 &&
                            std::stoull(number) <= 0xFFFFFFFFULL),
                "a command code is no number, or a number no command code");
    }
    return 0;
}
