// How a value is written in an identifier.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <string_view>

namespace FrameUtil {

/// Writes `value` to `out`: `separator` as "\c", '=' as "\e", a backslash as two. The result
/// is the end of what was written, at most EscapedRoom() characters.
///
/// A value longer than 255 characters, or longer with one more for each ',', '=' and
/// backslash, is written as it stands. The ',' is counted whatever the separator is,
/// deliberately: with another separator a value full of commas is left alone though
/// nothing in it needs an escape, and one full of separators is escaped to more than 255.
char* WriteEscaped(std::string_view value, char separator, char* out);

/// The room that WriteEscaped() may need for `value`.
std::size_t EscapedRoom(std::string_view value) noexcept;

}  // namespace FrameUtil
