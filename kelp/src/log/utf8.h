// What the next character of a byte string is, for the two formats' escaping.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelp::log {

struct Utf8Step {
    std::size_t length;  // bytes taken, at least 1
    bool valid;          // a whole character; otherwise bytes that begin none
    char32_t character;  // of a valid one
};

// Looks at the first bytes of `text`, which is not empty. Overlong forms, surrogates and
// what lies above U+10FFFF are invalid; an invalid step takes one byte.
inline Utf8Step NextCharacter(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return {1, true, first};
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) {
        return {1, false, 0};
    }
    char32_t character = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return {1, false, 0};
        }
        character = (character << 6U) | (byte(i) & 0x3FU);
    }
    const bool overlong =
        (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (overlong || surrogate || character > 0x10FFFF) {
        return {1, false, 0};
    }
    return {length, true, character};
}

}  // namespace kelp::log
