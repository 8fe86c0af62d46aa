// Contents of an INTEGER: two's complement, the highest octet first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace FrameUtil::codec {

inline constexpr std::size_t kMaxInteger = 8;

/// Writes `value` in the fewest octets, 1 to 8, and returns how many.
std::size_t WriteInteger(std::int64_t value, unsigned char (&out)[kMaxInteger]);

/// The value of 1 to 8 octets, of no other number. Octets that a shorter form would not have
/// are accepted.
std::optional<std::int64_t> ReadInteger(std::span<const unsigned char> octets);

}  // namespace FrameUtil::codec
