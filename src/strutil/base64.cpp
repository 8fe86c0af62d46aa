#include "strutil/base64.h"

#include <array>
#include <cstdint>

namespace FrameUtil {

namespace {

constexpr std::uint8_t kNone = 64;  // behind the values of six bits

constexpr std::array<std::uint8_t, 256> MakeValues() {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> values{};
    values.fill(kNone);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}
constexpr auto kValues = MakeValues();

}  // namespace

bool DecodeBase64(std::string_view text, std::string& octets) {
    if (text.size() % 4 != 0) {
        return false;
    }
    std::size_t padding = 0;
    while (padding < 2 && text.ends_with('=')) {
        text.remove_suffix(1);
        ++padding;
    }
    std::uint32_t bits = 0;
    int held = 0;  // bits of `bits` that make no octet yet
    for (const char c : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
        if (value == kNone) {
            return false;
        }
        bits = bits << 6 | value;
        held += 6;
        if (held >= 8) {
            held -= 8;
            octets += static_cast<char>(bits >> held);
        }
    }
    return (bits & ((1U << held) - 1)) == 0;
}

}  // namespace FrameUtil
