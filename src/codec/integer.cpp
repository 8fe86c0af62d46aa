#include "codec/integer.h"

#include <bit>
#include <cstring>

namespace FrameUtil::codec {

std::size_t WriteInteger(std::int64_t value, unsigned char (&out)[kMaxInteger]) {
    // Bits that repeat the sign, but for the one that says it: whole octets of them go.
    const auto magnitude = static_cast<std::uint64_t>(value < 0 ? ~value : value);
    const auto repeated = static_cast<unsigned>(std::countl_zero(magnitude)) - 1;
    const std::size_t count = kMaxInteger - repeated / 8;
    const std::uint64_t ordered =
        __builtin_bswap64(static_cast<std::uint64_t>(value) << (8 * (kMaxInteger - count)));
    std::memcpy(out, &ordered, kMaxInteger);
    return count;
}

std::optional<std::int64_t> ReadInteger(std::span<const unsigned char> octets) {
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
