// An identifier taken apart: keys and values, decoded into one small buffer.
//
//     Identifier identifier;
//     UIDFault fault;
//     if (identifier.Read("a=1,b=x\\cy", fault)) {
//         identifier.Key(1), identifier.Value(1);       // "b", "x,y"
//     }
//
// Thread rule: thread-compatible.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "frameutil/strutil.h"

namespace FrameUtil {

class Identifier {
  public:
    /// No pairs. A buffer that cannot be cleared is traced.
    Identifier() noexcept;

    /// What StrUIDParser::Parse() says, of a printable text. The pairs before a fault stay,
    /// the last perhaps without a value.
    bool Read(std::string_view text, UIDFault& fault) noexcept;

    std::size_t pairs() const { return m_count; }
    std::string_view Key(std::size_t pair) const {
        return {m_buffer.data() + m_pairs[pair].key_at, m_pairs[pair].key_length};
    }
    /// Empty for a pair that got no value.
    std::string_view Value(std::size_t pair) const {
        return {m_buffer.data() + m_pairs[pair].value_at, m_pairs[pair].value_length};
    }
    /// The last pair's key; empty when there are no pairs.
    std::string_view LastKey() const { return m_count != 0 ? Key(m_count - 1) : ""; }
    /// The pair with `key` that has `index` others of the key before it; pairs() if none.
    std::size_t Find(std::string_view key, unsigned long index) const;

  private:
    class Reading;

    static constexpr std::size_t kBufferBytes = 256;
    // The shortest pair takes four bytes, so the buffer bounds the pairs as well; one more
    // may have begun when it is full.
    static constexpr std::size_t kMostPairs = kBufferBytes / 4 + 1;

    struct Pair {
        std::uint16_t key_at;
        std::uint16_t key_length;
        std::uint16_t value_at;
        std::uint16_t value_length;
    };

    std::size_t m_count = 0;
    // Filled as pairs are read, up to m_count.
    std::array<Pair, kMostPairs> m_pairs;
    std::array<char, kBufferBytes> m_buffer;
};

}  // namespace FrameUtil
