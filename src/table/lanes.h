// Finding the next row that a row is exchanged with: the first one, from a position on, whose
// rank in each of some lanes is at most a bound. A lane holds a rank for each position.
//
// A sort asks this once for every exchange and every row, and the answer is mostly a hundred
// or so positions away. So ranks are narrow, sixteen bits for up to 32,767 different keys, and
// compared many at a time; and there is one branch a block, since each that cannot be
// foreseen costs as much as comparing a block.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace FrameUtil::table {

/// `Rank` is std::int16_t or std::int32_t.
template <typename Rank>
class Lane {
  public:
    /// Ranks are from 0 to below this number.
    static constexpr std::uint32_t kRanks = std::numeric_limits<Rank>::max();
    /// Positions that are looked at in one go; as many behind the last hold a rank that is
    /// beyond every bound.
    static constexpr std::size_t kBlock = 32;

    explicit Lane(std::size_t positions)
        : m_ranks(positions + kBlock, std::numeric_limits<Rank>::max()) {}

    Rank* data() { return m_ranks.data(); }

  private:
    std::vector<Rank> m_ranks;
};

/// One condition of the search: in the lane at `ranks`, at most `bound`.
template <typename Rank>
struct AtMost {
    const Rank* ranks = nullptr;
    Rank bound = 0;
};

/// The first position from `from` to below `end` where all `count` conditions hold, else
/// `end`. This is what FindFirst() does, too, and all of it where there is no wider way.
template <typename Rank>
std::size_t FindFirstPlainly(const AtMost<Rank>* conditions, std::size_t count, std::size_t from,
                             std::size_t end) {
    for (; from < end; ++from) {
        bool holds = true;
        for (std::size_t k = 0; k < count; ++k) {
            holds &= conditions[k].ranks[from] <= conditions[k].bound;
        }
        if (holds) {
            break;
        }
    }
    return from;
}

#ifdef __SSE2__

namespace lanes {

inline __m128i Load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// Of the two vectors behind `ranks`, all bits of the elements above `bound`; those of a whole
// block, eight or sixteen bits each, narrowed until there is a byte for each element.
inline __m128i Above(const std::int16_t* ranks, __m128i bounds) {
    return _mm_packs_epi16(_mm_cmpgt_epi16(Load(ranks), bounds),
                           _mm_cmpgt_epi16(Load(ranks + 8), bounds));
}
inline __m128i Above(const std::int32_t* ranks, __m128i bounds) {
    const auto pack = [&](const std::int32_t* four) {
        return _mm_packs_epi32(_mm_cmpgt_epi32(Load(four), bounds),
                               _mm_cmpgt_epi32(Load(four + 4), bounds));
    };
    return _mm_packs_epi16(pack(ranks), pack(ranks + 8));
}

inline __m128i Spread(std::int16_t bound) {
    return _mm_set1_epi16(bound);
}
inline __m128i Spread(std::int32_t bound) {
    return _mm_set1_epi32(bound);
}

}  // namespace lanes

/// `kCount` is `count` where that is known when compiling, else 0. The conditions' lanes have
/// `end` positions.
template <typename Rank, std::size_t kCount>
inline std::size_t FindFirst(const AtMost<Rank>* conditions, std::size_t count, std::size_t from,
                             std::size_t end) {
    for (; from < end; from += Lane<Rank>::kBlock) {
        __m128i low = _mm_setzero_si128();
        __m128i high = low;
        for (std::size_t k = 0; k < (kCount == 0 ? count : kCount); ++k) {
            const Rank* const ranks = conditions[k].ranks + from;
            const __m128i bound = lanes::Spread(conditions[k].bound);
            low = _mm_or_si128(low, lanes::Above(ranks, bound));
            high = _mm_or_si128(high, lanes::Above(ranks + 16, bound));
        }
        const auto above = static_cast<std::uint32_t>(_mm_movemask_epi8(low)) |
                           static_cast<std::uint32_t>(_mm_movemask_epi8(high)) << 16;
        if (~above != 0) {
            return from + static_cast<std::size_t>(std::countr_one(above));
        }
    }
    return end;
}

#else

template <typename Rank, std::size_t kCount>
inline std::size_t FindFirst(const AtMost<Rank>* conditions, std::size_t count, std::size_t from,
                             std::size_t end) {
    return FindFirstPlainly(conditions, count, from, end);
}

#endif

}  // namespace FrameUtil::table
