// What kind of text a text is, and numbers read from it.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <string_view>

namespace FrameUtil {

/// Where the first byte outside of 0x20..0x7E stands in `text`; its length when it has none.
std::size_t PrintableLength(std::string_view text) noexcept;

/// Whether every byte of `text` lies in 0x20..0x7E. Empty: yes.
bool IsPrintable(std::string_view text) noexcept;

/// Whether `text` is decimal digits, the first perhaps a sign instead. A lone sign is, by
/// design; empty is not.
bool IsInteger(std::string_view text) noexcept;

/// The number that integer text is: out of range, the nearest that fits; 0 for a lone sign.
long ToLong(std::string_view integer) noexcept;

/// The number that a stream extracts from integer text: above the range the largest; a
/// negative one counted down from 2^64 unless its magnitude is above the range; 0 for a lone
/// sign.
unsigned long ToUnsignedLong(std::string_view integer) noexcept;

}  // namespace FrameUtil
