#include "table/rank.h"

#include <algorithm>
#include <array>
#include <bit>
#include <deque>
#include <limits>
#include <string_view>
#include <utility>

namespace FrameUtil::table {

namespace {

// A whole number that rises with the cell's, and the row.
struct Key {
    std::uint64_t number;
    std::uint32_t row;
};

// Below this many keys the counters of a distribution cost more than they save.
constexpr std::size_t kFewKeys = 256;

// Sorts by digits, the lowest first; those that are the same in all keys are passed over.
// Equal keys stay in their order.
void Distribute(std::vector<Key>& keys) {
    constexpr unsigned kDigitBits = 11;
    constexpr std::uint64_t kDigit = (1U << kDigitBits) - 1;
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t greatest = 0;
    for (const Key& key : keys) {
        least = std::min(least, key.number);
        greatest = std::max(greatest, key.number);
    }
    const auto bits = static_cast<unsigned>(std::bit_width(greatest - least));
    std::vector<Key> spare(keys.size());
    for (unsigned shift = 0; shift < bits; shift += kDigitBits) {
        std::array<std::uint32_t, kDigit + 1> place{};
        for (const Key& key : keys) {
            ++place[(key.number - least) >> shift & kDigit];
        }
        std::uint32_t sum = 0;
        for (std::uint32_t& count : place) {
            sum += std::exchange(count, sum);
        }
        for (const Key& key : keys) {
            spare[place[(key.number - least) >> shift & kDigit]++] = key;
        }
        keys.swap(spare);
    }
}

// `keys` stand in falling order of their rows.
void SortKeys(std::vector<Key>& keys) {
    if (keys.size() >= kFewKeys) {
        Distribute(keys);
        return;
    }
    std::sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) {
        return a.number != b.number ? a.number < b.number : a.row > b.row;
    });
}

// Ranks of what has been sorted; `equal` compares neighbours.
template <class Sorted, class Equal>
Ranking RankSorted(const Sorted& sorted, Equal equal) {
    Ranking result;
    result.rank.resize(sorted.size());
    result.order.reserve(sorted.size());
    for (std::size_t at = 0; at < sorted.size(); ++at) {
        if (at == 0 || !equal(sorted[at - 1], sorted[at])) {
            ++result.distinct;
        }
        result.order.push_back(sorted[at].row);
        result.rank[sorted[at].row] = result.distinct - 1;
    }
    return result;
}

Ranking RankNumbers(std::vector<Key>& keys) {
    SortKeys(keys);
    return RankSorted(keys, [](const Key& a, const Key& b) { return a.number == b.number; });
}

// number(row) for each row, the last one first.
template <class Number>
std::vector<Key> KeysOf(std::size_t rows, Number number) {
    std::vector<Key> keys;
    keys.reserve(rows);
    for (auto row = static_cast<std::uint32_t>(rows); row-- > 0;) {
        keys.push_back({number(row), row});
    }
    return keys;
}

// A text whose beginning is at hand: most comparisons need no more.
struct TextKey {
    std::uint64_t beginning;  // the first octet highest, zeros behind the end
    std::string_view rest;
    std::uint32_t row;
};

TextKey MakeTextKey(std::string_view text, std::uint32_t row) {
    std::uint64_t beginning = 0;
    for (std::size_t at = 0; at < 8; ++at) {
        beginning = beginning << 8 | (at < text.size() ? static_cast<unsigned char>(text[at]) : 0U);
    }
    // No text holds a zero octet, so beginnings that are equal have equally many octets.
    return {beginning, text.size() > 8 ? text.substr(8) : std::string_view(), row};
}

Ranking RankTexts(const Rows& rows, int col) {
    std::deque<CellText> texts;  // stay in place: the keys point into them
    std::vector<TextKey> keys;
    keys.reserve(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        CellText text(CellAt(rows[row], col));
        if (text.is_converted()) {
            texts.push_back(std::move(text));
            keys.push_back(MakeTextKey(texts.back().view(), static_cast<std::uint32_t>(row)));
        } else {
            keys.push_back(MakeTextKey(text.view(), static_cast<std::uint32_t>(row)));
        }
    }
    std::sort(keys.begin(), keys.end(), [](const TextKey& a, const TextKey& b) {
        if (a.beginning != b.beginning) {
            return a.beginning < b.beginning;
        }
        const int compared = a.rest.compare(b.rest);
        return compared != 0 ? compared < 0 : a.row > b.row;
    });
    return RankSorted(keys, [](const TextKey& a, const TextKey& b) {
        return a.beginning == b.beginning && a.rest == b.rest;
    });
}

}  // namespace

Ranking RankCells(const Rows& rows, int col, Comparing comparing) {
    if (comparing == Comparing::kText) {
        return RankTexts(rows, col);
    }
    std::vector<Key> keys = KeysOf(rows.size(), [&](std::uint32_t row) {
        const TEValue& cell = CellAt(rows[row], col);
        if (comparing == Comparing::kUnsigned) {
            return std::uint64_t{cell.As_unsigned_long()};
        }
        // The negative half below the other one, as unsigned numbers.
        return static_cast<std::uint64_t>(cell.As_long()) ^ std::uint64_t{1} << 63;
    });
    return RankNumbers(keys);
}

Ranking RankPairs(const Ranking& first, const Ranking& second) {
    std::vector<Key> keys = KeysOf(first.rank.size(), [&](std::uint32_t row) {
        return std::uint64_t{first.rank[row]} * second.distinct + second.rank[row];
    });
    return RankNumbers(keys);
}

Ranking RankEqual(std::size_t rows) {
    std::vector<Key> keys = KeysOf(rows, [](std::uint32_t) { return std::uint64_t{0}; });
    return RankNumbers(keys);
}

}  // namespace FrameUtil::table
