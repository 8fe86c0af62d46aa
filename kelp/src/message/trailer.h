// The trailer behind a message's body: a mark, its length, and tagged entries.
//
//     trailer = "KTLR" length:u16 entry*      length counts the entries' octets
//     entry   = tag:u8 length:u16 value       'T' the token, 'A' a source address
//
// A source address that was sent is checked and then ignored: the receiver knows better.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace kelp::message {

struct TrailerView {
    std::size_t token_at = 0;  // counted from the trailer's first octet
    std::size_t token_octets = 0;
};

/// Octets of a trailer that carries a token of `token_octets` octets.
std::size_t TrailerOctets(std::size_t token_octets);

/// Writes it to `to`, which has room for TrailerOctets(); returns where the token begins.
std::size_t WriteTrailer(unsigned char* to, std::string_view token);

/// Takes apart all the octets behind a body. Null when they are nothing or one sound
/// trailer; otherwise what is wrong with them.
const char* ParseTrailer(std::span<const unsigned char> octets, TrailerView& view);

}  // namespace kelp::message
