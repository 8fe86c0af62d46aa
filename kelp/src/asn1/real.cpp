// REAL (X.690, 8.5): the octets of a double, and the double that octets of any of the
// standard's forms come nearest to.

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <span>
#include <string>

#include "kelp/asn1/types.h"

namespace {

using Octets = std::span<const unsigned char>;

constexpr unsigned char kPlusInfinity = 0x40;
constexpr unsigned char kMinusInfinity = 0x41;
constexpr unsigned char kNotANumber = 0x42;
constexpr unsigned char kMinusZero = 0x43;

// value = mantissa * 2^exponent, with `sticky` for bits below the mantissa that were
// not zero; rounded to nearest, ties to even, once, also into the subnormal range.
double Compose(std::uint64_t mantissa, bool sticky, std::int64_t exponent) {
    if (mantissa == 0) {
        return 0.0;
    }
    const int width = 64 - std::countl_zero(mantissa);
    const std::int64_t top = exponent + width - 1;  // the value is in [2^top, 2^(top+1))
    if (top > 1023) {
        return std::numeric_limits<double>::infinity();
    }
    if (top < -1075) {
        return 0.0;
    }
    const int keep = top >= -1022 ? 53 : static_cast<int>(53 - (-1022 - top));
    if (const int drop = width - keep; drop > 0) {
        const std::uint64_t half = std::uint64_t{1} << (drop - 1);
        const std::uint64_t tail = drop == 64 ? mantissa : mantissa & ((half << 1) - 1);
        mantissa = drop == 64 ? 0 : mantissa >> drop;
        if (tail > half || (tail == half && (sticky || (mantissa & 1) != 0))) {
            ++mantissa;
        }
        exponent += drop;
    }
    return std::ldexp(static_cast<double>(mantissa), static_cast<int>(exponent));
}

// Reads a two's-complement exponent of any length; beyond what matters it saturates.
std::int64_t ReadExponent(Octets octets) {
    constexpr std::int64_t kHuge = std::int64_t{1} << 40;
    std::int64_t value = (octets[0] & 0x80) != 0 ? -1 : 0;
    for (const unsigned char octet : octets) {
        value = value * 256 + octet;
        if (value > kHuge) {
            value = kHuge;
        } else if (value < -kHuge) {
            value = -kHuge;
        }
    }
    return value;
}

double ReadBinary(AsnReader& in, Octets content) {
    const unsigned char first = content[0];
    Octets rest = content.subspan(1);
    std::size_t exponent_octets = (first & 0x03) + std::size_t{1};
    if (exponent_octets == 4) {
        if (rest.empty()) {
            in.Fail("Bad Real");
        }
        exponent_octets = rest[0];
        rest = rest.subspan(1);
    }
    const unsigned base = first >> 4 & 0x03;
    if (base == 3 || exponent_octets == 0 || rest.size() <= exponent_octets) {
        in.Fail("Bad Real");
    }
    constexpr int kBitsOfBase[] = {1, 3, 4};
    std::int64_t exponent =
        ReadExponent(rest.first(exponent_octets)) * kBitsOfBase[base] + (first >> 2 & 0x03);
    rest = rest.subspan(exponent_octets);

    std::uint64_t mantissa = 0;
    bool sticky = false;
    for (const unsigned char octet : rest) {
        if (mantissa >> 56 == 0) {
            mantissa = mantissa << 8 | octet;
        } else {
            sticky = sticky || octet != 0;
            exponent += 8;
        }
    }
    const double value = Compose(mantissa, sticky, exponent);
    return (first & 0x40) != 0 ? -value : value;
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether a number that no double can hold is too large; else it is too small. The text
// is digits, perhaps with a point, perhaps with an exponent, and not zero. Asking the
// C library would make the answer depend on the locale's decimal mark.
bool IsTooLarge(const std::string& text) {
    constexpr std::int64_t kHuge = std::int64_t{1} << 40;
    const std::size_t first = text.find_first_of("123456789");
    const std::size_t exponent_mark = std::min(text.find_first_of("Ee"), text.size());
    const std::size_t point = std::min(text.find('.'), exponent_mark);
    std::int64_t exponent = 0;
    if (exponent_mark != text.size()) {
        const char* const digits = text.data() + exponent_mark + 1;
        const auto [end, error] = std::from_chars(digits, text.data() + text.size(), exponent);
        if (error == std::errc::result_out_of_range) {
            exponent = *digits == '-' ? -kHuge : kHuge;
        }
    }
    return std::clamp(exponent, -kHuge, kHuge) + static_cast<std::int64_t>(point) >
           static_cast<std::int64_t>(first);
}

// ISO 6093: NR1 is an integer, NR2 has a decimal mark, NR3 an exponent as well. Blanks
// may stand in front, the mark may be a comma.
double ReadDecimal(AsnReader& in, Octets content) {
    const unsigned form = content[0] & 0x3f;
    std::string text(reinterpret_cast<const char*>(content.data()) + 1, content.size() - 1);
    text.erase(0, text.find_first_not_of(' '));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.erase(0, 1);
    }
    std::size_t at = 0;
    std::size_t digits = 0;
    const auto skip_digits = [&] {
        const std::size_t start = at;
        while (at < text.size() && IsDigit(text[at])) {
            ++at;
        }
        return at - start;
    };
    digits = skip_digits();
    if (at < text.size() && (text[at] == '.' || text[at] == ',') && form >= 2) {
        text[at++] = '.';
        digits += skip_digits();
    }
    if (digits != 0 && at < text.size() && (text[at] == 'E' || text[at] == 'e') && form == 3) {
        ++at;
        if (at < text.size() && text[at] == '+') {
            text.erase(at, 1);  // from_chars reads a minus sign only
        } else if (at < text.size() && text[at] == '-') {
            ++at;
        }
        if (skip_digits() == 0) {
            in.Fail("Bad Real");
        }
    }
    if (form == 0 || form > 3 || digits == 0 || at != text.size()) {
        in.Fail("Bad Real");
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = IsTooLarge(text) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return negative ? -value : value;
}

// Writes the contents of `value` to where claim(how many octets they are) points.
template <class Claim>
std::size_t WriteContents(double value, Claim claim) {
    const auto special = [&](unsigned char octet) {
        *claim(1) = octet;
        return std::size_t{1};
    };
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const bool negative = bits >> 63 != 0;
    const auto biased = static_cast<int>(bits >> 52 & 0x7ff);
    std::uint64_t mantissa = bits & ((std::uint64_t{1} << 52) - 1);
    if (biased == 0x7ff) {
        return special(mantissa != 0 ? kNotANumber : negative ? kMinusInfinity : kPlusInfinity);
    }
    if (biased == 0 && mantissa == 0) {
        return negative ? special(kMinusZero) : 0;
    }
    int exponent = -1074;
    if (biased != 0) {
        mantissa |= std::uint64_t{1} << 52;
        exponent = biased - 1075;
    }
    const int zeros = std::countr_zero(mantissa);
    mantissa >>= zeros;
    exponent += zeros;

    // Whole octets of zeros in front; the mantissa is odd, so never all eight.
    const unsigned zero_bits = static_cast<unsigned>(std::countl_zero(mantissa)) & 0x38U;
    const unsigned mantissa_octets = 8 - zero_bits / 8;
    const unsigned exponent_octets = exponent >= -128 && exponent <= 127 ? 1 : 2;
    const std::size_t count = 1 + exponent_octets + mantissa_octets;
    unsigned char* at = claim(count);
    *at++ = static_cast<unsigned char>(0x80 | (negative ? 0x40 : 0) | (exponent_octets - 1));
    if (exponent_octets == 2) {
        *at++ = static_cast<unsigned char>(static_cast<unsigned>(exponent) >> 8);
    }
    *at++ = static_cast<unsigned char>(exponent);
    const std::uint64_t ordered = __builtin_bswap64(mantissa << zero_bits);
    std::memcpy(at, &ordered, mantissa_octets);
    return count;
}

}  // namespace

std::size_t AsnReal::Contents(unsigned char (&out)[kMaxOctets]) const {
    return WriteContents(value_, [&](std::size_t) { return out; });
}

void AsnReal::BEncContent(AsnBuffer& out) const {
    WriteContents(value_, [&](std::size_t count) { return out.Prepend(count); });
}

void AsnReal::BDecContent(AsnReader& in) {
    const auto content = in.TakeContent();
    if (content.empty()) {
        value_ = 0.0;
        return;
    }
    if ((content[0] & 0x80) != 0) {
        value_ = ReadBinary(in, content);
    } else if ((content[0] & 0x40) == 0) {
        value_ = ReadDecimal(in, content);
    } else if (content.size() == 1 && content[0] == kPlusInfinity) {
        value_ = std::numeric_limits<double>::infinity();
    } else if (content.size() == 1 && content[0] == kMinusInfinity) {
        value_ = -std::numeric_limits<double>::infinity();
    } else if (content.size() == 1 && content[0] == kNotANumber) {
        value_ = std::numeric_limits<double>::quiet_NaN();
    } else if (content.size() == 1 && content[0] == kMinusZero) {
        value_ = -0.0;
    } else {
        in.Fail("Bad Real");
    }
}

void AsnReal::Print(std::ostream& out, int) const {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value_);
    out.write(text, end - text);
    out << '\n';
}
