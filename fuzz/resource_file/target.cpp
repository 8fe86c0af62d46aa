// Any octets as a resource file: it is refused with a line and a reason, or its entries
// are whole lines of it, and a file of the entries alone means the same.

#include <algorithm>
#include <cstdint>
#include <string>

#include "require.h"
#include "resource/text.h"

namespace {

using kelp::resource::Entry;
using kelp::resource::Fault;

bool IsPlain(std::string_view text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; });
}

bool HasBareEnds(std::string_view text) {
    const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
    return text.empty() || !(is_blank(text.front()) || is_blank(text.back()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto lines =
        static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + std::size_t{1};
    std::vector<Entry> entries;
    Fault fault;
    if (!kelp::resource::Parse(text, entries, fault)) {
        Require(entries.empty(), "a refused file has entries");
        Require(fault.line >= 1 && fault.line <= lines, "a line that is not there is at fault");
        Require(!fault.what.empty() && fault.what.size() <= kelp::resource::kMaxLine + 100,
                "a refusal has no reason");
        return 0;
    }
    Require(entries.size() <= lines, "more entries than lines");
    std::string again;
    for (const Entry& entry : entries) {
        Require(!entry.key.empty() && entry.key.find('=') == std::string_view::npos,
                "this is no key");
        Require(IsPlain(entry.key) && IsPlain(entry.value), "a control character came through");
        Require(HasBareEnds(entry.key) && HasBareEnds(entry.value), "a blank came through");
        again.append(entry.key).append("=").append(entry.value).append("\n");
    }
    std::vector<Entry> copies;
    Require(kelp::resource::Parse(again, copies, fault), "what was accepted is refused");
    Require(std::equal(entries.begin(), entries.end(), copies.begin(), copies.end(),
                       [](const Entry& a, const Entry& b) {
                           return a.key == b.key && a.value == b.value;
                       }),
            "what was accepted means something else");
    return 0;
}
