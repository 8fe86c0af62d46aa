// Octets in tests: written and shown as hex, put together element by element.
//
//     Octets("30 03 02 01 07") == Element(0x30, Element(0x02, Octets("07")))
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

/// The octets that pairs of hex digits name; blanks between the pairs are skipped.
inline std::string Octets(std::string_view hex) {
    const auto digit = [](char c) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto at = kDigits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
        if (at == std::string_view::npos) {
            throw std::invalid_argument("no hex digit");
        }
        return static_cast<int>(at);
    };
    std::string octets;
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex[i] != ' ') {
            octets += static_cast<char>(digit(hex.at(i)) << 4 | digit(hex.at(i + 1)));
            ++i;
        }
    }
    return octets;
}

/// "30 03 02 01 07"; what lies beyond `most` octets is counted only.
inline std::string Hex(std::string_view octets, std::size_t most = 400) {
    std::string text;
    for (std::size_t i = 0; i < octets.size() && i < most; ++i) {
        constexpr char kDigits[] = "0123456789abcdef";
        const auto octet = static_cast<unsigned char>(octets[i]);
        if (i != 0) {
            text += ' ';
        }
        text += kDigits[octet >> 4];
        text += kDigits[octet & 15];
    }
    if (octets.size() > most) {
        text += " ... " + std::to_string(octets.size()) + " octets";
    }
    return text;
}

/// One element: an identifier of one octet, the shortest definite length, the contents.
inline std::string Element(unsigned char identifier, std::string_view content) {
    std::string element(1, static_cast<char>(identifier));
    if (content.size() < 0x80) {
        element += static_cast<char>(content.size());
    } else {
        std::string length;
        for (std::size_t rest = content.size(); rest != 0; rest >>= 8) {
            length.insert(length.begin(), static_cast<char>(rest));
        }
        element += static_cast<char>(0x80 | length.size());
        element += length;
    }
    return element.append(content);
}

/// The same with an indefinite length.
inline std::string IndefiniteElement(unsigned char identifier, std::string_view content) {
    std::string element{static_cast<char>(identifier), '\x80'};
    return element.append(content).append(2, '\0');
}

/// `text` `count` times.
inline std::string Repeat(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        all.append(text);
    }
    return all;
}

}  // namespace support
