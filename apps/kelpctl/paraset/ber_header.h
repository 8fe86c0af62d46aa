// kelpctl/paraset/ber_header.h - the header of a BER element: identifier and length.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelpctl {

struct BerHeader {
    unsigned first = 0;        ///< the identifier's first octet
    std::uint64_t number = 0;  ///< the tag's number
    bool indefinite = false;
    std::size_t octets = 0;    ///< of the header
    std::size_t contents = 0;  ///< 0 for an indefinite length
    bool Constructed() const { return (first & 0x20) != 0; }
};

/// Reads the header that `octets` begin with. Null, or, with a literal as reason, what is
/// wrong: the octets end, the length exceeds them, an identifier or a length has more
/// octets than anybody needs, a primitive element has an indefinite length.
const char* ReadBerHeader(std::string_view octets, BerHeader& header);

}  // namespace kelpctl
