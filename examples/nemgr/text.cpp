#include "nemgr/text.h"

#include <algorithm>

namespace nemgr {

std::string HexText(std::string_view octets) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : octets) {
        const auto octet = static_cast<unsigned char>(c);
        if (!text.empty()) {
            text += ':';
        }
        text += kDigits[octet >> 4];
        text += kDigits[octet & 0x0f];
    }
    return text;
}

std::string DisplayText(std::string_view octets) {
    const std::size_t last = octets.find_last_not_of('\0');
    const std::string_view text = octets.substr(0, last == std::string_view::npos ? 0 : last + 1);
    const bool readable = std::all_of(text.begin(), text.end(), [](char c) {
        const auto octet = static_cast<unsigned char>(c);
        return (octet >= 0x20 && octet != 0x7f) || c == '\t' || c == '\n' || c == '\r';
    });
    return readable ? std::string(text) : HexText(octets);
}

}  // namespace nemgr
