// Finding the next row that a row is exchanged with: the first one, from a position on, whose
// rank in each of some lanes is at most a bound. A lane holds a rank for each position.
//
// Ranks are compared many at a time, which is why they are narrow: sixteen bits hold those of
// 32,767 different keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace FrameUtil::table {

/// `Rank` is std::int16_t or std::int32_t.
template <typename Rank>
class Lane {
  public:
    /// Ranks are from 0 to below this number.
    static constexpr std::uint32_t kRanks = std::numeric_limits<Rank>::max();

    explicit Lane(std::size_t positions)
        : m_ranks(positions + kBlock, std::numeric_limits<Rank>::max()) {}

    Rank& operator[](std::size_t position) { return m_ranks[position]; }
    const Rank* data() const { return m_ranks.data(); }

    /// Positions that are looked at in one go; as many behind the last hold a rank beyond
    /// every bound.
    static constexpr std::size_t kBlock = 128 / sizeof(Rank);

  private:
    std::vector<Rank> m_ranks;
};

/// One condition of the search: in `ranks`, at most `bound`.
template <typename Rank>
struct AtMost {
    const Rank* ranks;
    Rank bound;
};

namespace lanes {

template <typename Rank>
struct VectorOf {
    typedef Rank type __attribute__((vector_size(16)));
};

// All bits of an element are set where every condition holds.
template <typename Rank>
inline typename VectorOf<Rank>::type Holding(const AtMost<Rank>* conditions, std::size_t count,
                                             std::size_t position) {
    using Vector = typename VectorOf<Rank>::type;
    Vector holds = ~Vector{};
    for (std::size_t k = 0; k < count; ++k) {
        Vector ranks;
        std::memcpy(&ranks, conditions[k].ranks + position, sizeof ranks);
        holds &= ranks <= conditions[k].bound;
    }
    return holds;
}

struct Halves {
    std::uint64_t low, high;
};

template <typename Vector>
inline Halves HalvesOf(Vector vector) {
    Halves halves;
    std::memcpy(&halves, &vector, sizeof halves);
    return halves;
}

}  // namespace lanes

/// The first position from `from` to below `end` where all `count` conditions hold, else
/// `end`. `kCount` is `count` where that is known when compiling, else 0.
template <typename Rank, std::size_t kCount>
std::size_t FindFirst(const AtMost<Rank>* conditions, std::size_t count, std::size_t from,
                      std::size_t end) {
    using Vector = typename lanes::VectorOf<Rank>::type;
    constexpr std::size_t kElements = sizeof(Vector) / sizeof(Rank);
    const std::size_t used = kCount == 0 ? count : kCount;
    for (; from < end; from += Lane<Rank>::kBlock) {
        Vector any{};
        for (std::size_t at = from; at < from + Lane<Rank>::kBlock; at += kElements) {
            any |= lanes::Holding(conditions, used, at);
        }
        const lanes::Halves found = lanes::HalvesOf(any);
        if ((found.low | found.high) == 0) {
            continue;
        }
        for (std::size_t at = from;; at += kElements) {
            const lanes::Halves here = lanes::HalvesOf(lanes::Holding(conditions, used, at));
            constexpr unsigned kBits = 8 * sizeof(Rank);
            if (here.low != 0) {
                return at + static_cast<unsigned>(__builtin_ctzll(here.low)) / kBits;
            }
            if (here.high != 0) {
                return at + (64 + static_cast<unsigned>(__builtin_ctzll(here.high))) / kBits;
            }
        }
    }
    return end;
}

}  // namespace FrameUtil::table
