#include <algorithm>
#include <array>

#include "frameutil/strutil.h"
#include "kelpctl/names/command.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

constexpr std::size_t kHalf = 16;
constexpr std::size_t kWhole = 32;

bool IsHex(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Digits in lower case, without what people put between them. Empty: something else is there.
std::string Digits(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (IsHex(c)) {
            digits += c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        } else if (c != '-' && c != ':' && c != ' ') {
            return "";
        }
    }
    return digits;
}

std::string Spellings(const std::string& digits) {
    std::array<char, kHalf> bytes{};
    FrameUtil::ConvertTo16BytesByGUID(digits, bytes.data());
    std::string hyphens = digits;
    for (const std::size_t at : {20UL, 16UL, 12UL, 8UL}) {
        hyphens.insert(at, "-");
    }
    std::string octets;
    constexpr char kHexDigits[] = "0123456789abcdef";
    for (const char byte : bytes) {
        const auto octet = static_cast<unsigned char>(byte);
        octets += octets.empty() ? "" : " ";
        octets += kHexDigits[octet >> 4];
        octets += kHexDigits[octet & 15];
    }
    return "digits   " + digits + "\nhyphens  " + hyphens + "\noctets   " + octets + "\n";
}

// Whether a number is written so: a zero leads only when it is alone.
bool IsHalf(const std::string& digits) {
    return digits.size() == 1 || digits[0] != '0';
}

// The library writes each half without leading zeros. Where the first ended is lost.
std::string Candidates(const std::string& digits) {
    std::string candidates;
    const std::size_t least = digits.size() > kHalf ? digits.size() - kHalf : 1;
    for (std::size_t length = least; length <= kHalf && length < digits.size(); ++length) {
        const std::string first = digits.substr(0, length);
        const std::string second = digits.substr(length);
        if (IsHalf(first) && IsHalf(second)) {
            candidates.append(kHalf - first.size(), '0').append(first);
            candidates.append(kHalf - second.size(), '0').append(second).append("\n");
        }
    }
    return candidates;
}

}  // namespace

std::optional<std::string> ShowGuid(const std::string& text, std::string& why) {
    const std::string digits = Digits(text);
    std::string shown;
    if (digits.size() == kWhole) {
        shown = Spellings(digits);
    } else if (digits.size() < kWhole && digits.size() == text.size()) {
        shown = Candidates(digits);
    }
    if (shown.empty()) {
        why = "'" + app::ShowText(text) +
              "' is no identifier of 16 bytes: neither 32 hexadecimal digits nor two halves "
              "without leading zeros";
        return std::nullopt;
    }
    return shown;
}

}  // namespace kelpctl
