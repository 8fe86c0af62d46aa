// Contents of an INTEGER: two's complement, the highest octet first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace FrameUtil::codec {

inline constexpr std::size_t kMaxInteger = 8;

/// The fewest octets that `value` can be written in, 1 to 8.
inline std::size_t IntegerOctets(std::int64_t value) {
    // Bits that repeat the sign, but for the one that says it: whole octets of them go.
    const auto magnitude = static_cast<std::uint64_t>(value < 0 ? ~value : value);
    return kMaxInteger - static_cast<unsigned>(std::countl_zero(magnitude) - 1) / 8;
}

/// Writes the low `count` octets of `value`; the position behind them.
inline unsigned char* WriteInteger(unsigned char* at, std::int64_t value, std::size_t count) {
    for (std::size_t left = count; left != 0; --left) {
        *at++ = static_cast<unsigned char>(value >> (8 * (left - 1)));
    }
    return at;
}

/// The value of 1 to 8 octets; of no other number. Octets that a shorter form would not have
/// are accepted.
inline std::optional<std::int64_t> ReadInteger(std::span<const unsigned char> octets) {
    if (octets.empty() || octets.size() > kMaxInteger) {
        return std::nullopt;
    }
    std::uint64_t value = (octets[0] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (const unsigned char octet : octets) {
        value = value << 8 | octet;
    }
    return static_cast<std::int64_t>(value);
}

}  // namespace FrameUtil::codec
