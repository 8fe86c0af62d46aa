// support/json_write.h - the words of JSON that programs print.
//
// Thread rule: thread-safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace app {

/// `utf8`, which is valid, as a JSON text. What a terminal acts on is escaped, so that
/// looking at a document does nothing but show it.
std::string JsonQuoted(std::string_view utf8);

/// Two lower-case hexadecimal digits an octet: "ff00".
std::string HexText(std::string_view octets);

/// The octets that `text` names, two hexadecimal digits of either case each; nothing when
/// it is anything else.
std::optional<std::string> OctetsOfHex(std::string_view text);

}  // namespace app
