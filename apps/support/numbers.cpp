#include "support/numbers.h"

#include <charconv>
#include <cmath>

namespace app {

std::optional<std::int64_t> ParseInteger(std::string_view text, std::int64_t least,
                                         std::int64_t most) {
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<double> ParseDouble(std::string_view text) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string DoubleText(double value) {
    char text[64];
    const double size = std::fabs(value);
    const bool plain = size < 1e15 && (size >= 1e-4 || size == 0);
    const auto [end, error] =
        plain ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed)
              : std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string();
}

}  // namespace app
