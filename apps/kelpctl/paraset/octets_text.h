// kelpctl/paraset/octets_text.h - octets as text that people pass around.
//
// Thread rule: thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelpctl {

/// The octets of `text`: pairs of hexadecimal digits with white space between them where
/// wanted. Nothing, with `why` naming the byte, for anything else.
std::optional<std::string> OctetsOfText(std::string_view text, std::string& why);

/// "30 03 02 01 07" and a line end; lines of 16 octets.
std::string TextOfOctets(std::string_view octets);

}  // namespace kelpctl
