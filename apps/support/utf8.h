// support/utf8.h - text of any origin: is it UTF-8, how wide is it, how to show it safely.
//
//     app::ShowText("a\x1b[2Jb")   // "a\x1b[2Jb" with a backslash, an x, a 1, a b
//     app::DisplayWidth("\u6771\u4eac")   // 4: two characters of two columns each
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace app {

/// One character of a text: its code point and how many bytes spell it. `bytes` is 0 when
/// the text does not begin with well-formed UTF-8 (overlong forms and surrogates are not).
struct Utf8Char {
    char32_t code;
    std::size_t bytes;
};
Utf8Char FirstUtf8(std::string_view text);

/// The offset of the first byte that is no part of well-formed UTF-8, or npos.
std::size_t InvalidUtf8At(std::string_view text);

/// How many columns a terminal gives to valid UTF-8: 0 for what combines with the
/// character before it, 2 for the wide characters of East Asia and pictographs, else 1.
std::size_t DisplayWidth(std::string_view text);

/// Whether a terminal may act on the character instead of showing it: control characters,
/// separators of lines, and what turns the direction of writing.
bool ActsOnTerminal(char32_t code);

/// `text` with nothing in it that a terminal acts on: control characters, bytes that are
/// no UTF-8 and characters that turn the direction of writing become "\n", "\t", "\r" or
/// "\x1b", "\u202e"; a backslash becomes two. The result is valid UTF-8 on one line.
std::string ShowText(std::string_view text);

}  // namespace app
