#include "support/json_write.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "support/numbers.h"
#include "support/utf8.h"

namespace app {
namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

}  // namespace

std::string JsonQuoted(std::string_view utf8) {
    std::string text = "\"";
    while (!utf8.empty()) {
        const Utf8Char c = FirstUtf8(utf8);
        const std::size_t bytes = std::max<std::size_t>(c.bytes, 1);
        if (c.code == '"' || c.code == '\\') {
            text += '\\';
            text += utf8.front();
        } else if (ActsOnTerminal(c.code)) {
            std::array<char, 16> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c.code));
            text += escape.data();
        } else {
            text.append(utf8, 0, bytes);
        }
        utf8.remove_prefix(bytes);
    }
    return text + '"';
}

std::string HexText(std::string_view octets) {
    std::string text;
    text.reserve(octets.size() * 2);
    for (const char c : octets) {
        const auto octet = static_cast<unsigned char>(c);
        text += kDigits[octet >> 4];
        text += kDigits[octet & 0x0f];
    }
    return text;
}

std::optional<std::string> OctetsOfHex(std::string_view text) {
    if (text.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string octets;
    octets.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = HexDigit(text[i]);
        const int low = HexDigit(text[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        octets += static_cast<char>(high << 4 | low);
    }
    return octets;
}

}  // namespace app
