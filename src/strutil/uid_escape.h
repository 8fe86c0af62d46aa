// How a value is written in an identifier.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <string_view>

#include "strutil/pool_text.h"

namespace FrameUtil {

/// Appends `value` to `text`: `separator` as "\c", '=' as "\e", a backslash as two.
///
/// A value longer than 255 characters, or longer with one more for each ',', '=' and
/// backslash, is appended as it stands. The ',' is counted whatever the separator is,
/// deliberately: with another separator a value full of commas is left alone though
/// nothing in it needs an escape, and one full of separators is escaped to more than 255.
void AppendEscaped(PoolText& text, std::string_view value, char separator);

/// The room that AppendEscaped() may need for `value`.
std::size_t EscapedRoom(std::string_view value) noexcept;

}  // namespace FrameUtil
