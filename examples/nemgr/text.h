// nemgr/text.h - octets that an element sent, as text.
//
// A text in an answer ends at its first zero octet, so octets that may be zero travel in
// digits.
//
// Thread rule: thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace nemgr {

/// "00:1a:2b" for the octets 0x00, 0x1a, 0x2b.
std::string HexText(std::string_view octets);

/// A text as an element sends it: without the zero octets that some put at its end. If
/// control characters other than tab and line end are in it, it is no text: HexText().
std::string DisplayText(std::string_view octets);

}  // namespace nemgr
