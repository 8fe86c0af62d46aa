// support/numbers.h - numbers as text, the same in every locale.
//
// Thread rule: thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace app {

/// The decimal integer that is the whole of `text` (a minus sign and digits), if it is one
/// from `least` to `most`.
std::optional<std::int64_t> ParseInteger(std::string_view text, std::int64_t least,
                                         std::int64_t most);

/// The value of a hexadecimal digit in either case; -1 for any other character.
int HexDigit(char c);

/// The decimal number that is the whole of `text`, if it is finite.
std::optional<double> ParseDouble(std::string_view text);

/// The shortest text that reads back as the same double: "0.1", "1e+300", "nan", "-inf".
/// Numbers of up to 15 digits before the point are written without exponent.
std::string DoubleText(double value);

}  // namespace app
