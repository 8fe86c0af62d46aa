// Design notes.
//
// A pass of the exchanges takes the row at position i and walks down: at each row that the
// one in hand does not precede it puts its row down and takes that one. What is in hand at
// the end goes to i. With cells of one kind a column "does not precede" is "at most in each
// key", and three things follow.
//
//   - Equal rows are met in their order and, until one of them is the last in hand, are only
//     moved on behind one another: their order stays. The last in hand is the last of them.
//     So equal rows leave in the reverse of their order, and all that is to be found is the
//     order of the different keys.
//   - With one key, what is in hand at the end of a pass is the least: the result is the
//     ascending order. So it is with several keys that agree on one order of the rows.
//   - Otherwise the walk is made, on ranks. Between equal rows nothing need be moved. With
//     rows ranked as wholes, by the first key, then by the next, "at most in each key and not
//     equal" is "less as a whole and at most in the second key, the third, ...".
//
// Cells of several kinds in one column have, for each kind, an order of their own, and the
// row in hand says which counts. Then every exchange is made, rows and all.
#include "table/exchange.h"

#include <algorithm>
#include <array>
#include <climits>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "table/lanes.h"
#include "table/rank.h"

namespace FrameUtil::table {

namespace {

using Order = std::vector<std::uint32_t>;

// A key column: a ranking for each way in which some of its cells are compared, and by row
// which way that is.
struct KeyColumn {
    std::vector<Ranking> rankings;
    std::vector<std::uint8_t> ranking_of_row;  // empty when there is one ranking
};

KeyColumn RankColumn(const Rows& rows, int col) {
    std::array<int, kComparings> ranking_of;
    ranking_of.fill(-1);
    KeyColumn column;
    std::vector<std::uint8_t> ranking_of_row(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const Comparing comparing = ComparingOf(CellAt(rows[row], col));
        int& ranking = ranking_of[static_cast<std::size_t>(comparing)];
        if (ranking < 0) {
            ranking = static_cast<int>(column.rankings.size());
            column.rankings.push_back(RankCells(rows, col, comparing));
        }
        ranking_of_row[row] = static_cast<std::uint8_t>(ranking);
    }
    if (column.rankings.size() > 1) {
        column.ranking_of_row.swap(ranking_of_row);
    }
    return column;
}

// The key columns that can make a row precede another: no column twice, none that no row has,
// none whose cells are all equal. A row precedes by any of its keys, so in any order of them.
std::vector<KeyColumn> RankColumns(const Rows& rows, std::vector<int> keyCols) {
    std::size_t longest = 0;
    for (const Row& row : rows) {
        longest = std::max(longest, row.size());
    }
    std::sort(keyCols.begin(), keyCols.end());
    keyCols.erase(std::unique(keyCols.begin(), keyCols.end()), keyCols.end());
    std::vector<KeyColumn> columns;
    for (const int col : keyCols) {
        if (col < 0 || static_cast<std::size_t>(col) >= longest) {
            continue;
        }
        KeyColumn column = RankColumn(rows, col);
        if (std::any_of(column.rankings.begin(), column.rankings.end(),
                        [](const Ranking& ranking) { return ranking.distinct > 1; })) {
            columns.push_back(std::move(column));
        }
    }
    return columns;
}

// The walk over rows with one ranking a column. `whole` ranks rows as wholes, `further` are
// the rankings of the second key and those behind it. Returns the ranks `whole` in the order
// in which passes end with them.
template <typename Rank, std::size_t kFurther>
Order WalkRanks(const Ranking& whole, const std::vector<const Ranking*>& further) {
    const std::size_t rows = whole.rank.size();
    const std::size_t count = kFurther == 0 ? 1 + further.size() : 1 + kFurther;
    // What stands at each position, and by rank as a whole what that is in each key.
    std::vector<Lane<Rank>> lanes(count, Lane<Rank>(rows));
    std::vector<Rank> keys(whole.distinct * count);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint32_t rank = whole.rank[row];
        for (std::size_t k = 0; k < count; ++k) {
            const auto key = static_cast<Rank>(k == 0 ? rank : further[k - 1]->rank[row]);
            lanes[k].data()[row] = key;
            keys[rank * count + k] = key;
        }
    }
    std::vector<AtMost<Rank>> conditions(count);
    std::vector<Rank*> standing;
    for (std::size_t k = 0; k < count; ++k) {
        standing.push_back(lanes[k].data());
        conditions[k].ranks = lanes[k].data();
    }
    constexpr std::size_t kCount = kFurther == 0 ? 0 : 1 + kFurther;
    Order order;
    order.reserve(rows);
    for (std::size_t at = 0; at < rows; ++at) {
        const Rank* in_hand = &keys[static_cast<std::size_t>(standing[0][at]) * count];
        for (std::size_t next = at; *in_hand != 0;) {
            conditions[0].bound = static_cast<Rank>(in_hand[0] - 1);
            for (std::size_t k = 1; k < count; ++k) {
                conditions[k].bound = in_hand[k];
            }
            next = FindFirst<Rank, kCount>(conditions.data(), count, next + 1, rows);
            if (next == rows) {
                break;
            }
            const Rank* const found = &keys[static_cast<std::size_t>(standing[0][next]) * count];
            for (std::size_t k = 0; k < count; ++k) {
                standing[k][next] = in_hand[k];
            }
            in_hand = found;
        }
        order.push_back(static_cast<std::uint32_t>(*in_hand));
    }
    return order;
}

template <typename Rank>
Order WalkRanks(const Ranking& whole, const std::vector<const Ranking*>& further) {
    switch (further.size()) {
        case 1:
            return WalkRanks<Rank, 1>(whole, further);
        case 2:
            return WalkRanks<Rank, 2>(whole, further);
        default:
            return WalkRanks<Rank, 0>(whole, further);
    }
}

// Whether rows that are greater as wholes are at least as great in every key.
bool AgreeOnOneOrder(const Ranking& whole, const std::vector<const Ranking*>& further) {
    return std::all_of(further.begin(), further.end(), [&](const Ranking* key) {
        return std::is_sorted(
            whole.order.begin(), whole.order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return key->rank[a] < key->rank[b]; });
    });
}

// One ranking a column.
Order OrderByRanks(std::vector<KeyColumn> columns) {
    Ranking whole = std::move(columns[0].rankings[0]);
    std::vector<const Ranking*> further;
    for (std::size_t k = 1; k < columns.size(); ++k) {
        further.push_back(&columns[k].rankings[0]);
        whole = RankPairs(whole, *further.back());
    }
    if (AgreeOnOneOrder(whole, further)) {
        return std::move(whole.order);
    }
    Order order = whole.distinct <= Lane<std::int16_t>::kRanks
                      ? WalkRanks<std::int16_t>(whole, further)
                      : WalkRanks<std::int32_t>(whole, further);
    // From ranks to rows: those of one rank stand together, in the order in which they leave.
    std::vector<std::uint32_t> next(whole.distinct);
    for (std::size_t at = whole.order.size(); at-- > 0;) {
        next[whole.rank[whole.order[at]]] = static_cast<std::uint32_t>(at);
    }
    for (std::uint32_t& entry : order) {
        entry = whole.order[next[entry]++];
    }
    return order;
}

// The walk over rows whose columns hold cells of several kinds. Half of all rows may be
// exchanged in every pass, so what a row is in each lane lies together, and the next row is
// looked at by itself before a whole block is.
Order WalkRows(std::size_t rows, const std::vector<KeyColumn>& columns) {
    using Rank = std::int32_t;
    std::vector<const Ranking*> rankings;  // of all columns; a lane each
    std::vector<std::size_t> first_lane;   // by column
    for (const KeyColumn& column : columns) {
        first_lane.push_back(rankings.size());
        for (const Ranking& ranking : column.rankings) {
            rankings.push_back(&ranking);
        }
    }
    const std::size_t count = rankings.size();
    std::vector<Lane<Rank>> lanes(count, Lane<Rank>(rows));
    std::vector<Rank*> standing;
    std::vector<Rank> keys(rows * count);
    for (std::size_t k = 0; k < count; ++k) {
        standing.push_back(lanes[k].data());
        for (std::size_t row = 0; row < rows; ++row) {
            standing[k][row] = keys[row * count + k] = static_cast<Rank>(rankings[k]->rank[row]);
        }
    }
    Order order(rows);
    std::iota(order.begin(), order.end(), 0U);
    std::vector<AtMost<Rank>> conditions(columns.size());
    for (std::size_t at = 0; at < rows; ++at) {
        std::uint32_t in_hand = order[at];
        for (std::size_t next = at + 1; next < rows; ++next) {
            const Rank* const key = &keys[in_hand * count];
            for (std::size_t k = 0; k < columns.size(); ++k) {
                const std::vector<std::uint8_t>& kind = columns[k].ranking_of_row;
                const std::size_t lane = first_lane[k] + (kind.empty() ? 0U : kind[in_hand]);
                conditions[k] = {standing[lane], key[lane]};
            }
            if (FindFirstPlainly(conditions.data(), conditions.size(), next, next + 1) != next) {
                next = FindFirst<Rank, 0>(conditions.data(), conditions.size(), next + 1, rows);
                if (next == rows) {
                    break;
                }
            }
            for (std::size_t k = 0; k < count; ++k) {
                standing[k][next] = key[k];
            }
            std::swap(order[next], in_hand);
        }
        order[at] = in_hand;
    }
    return order;
}

}  // namespace

std::vector<std::uint32_t> ExchangedOrder(const Rows& rows, const std::vector<int>& keyCols) {
    if (rows.size() > INT_MAX) {
        throw std::length_error("CBMSTableObject::Sort: more rows than an int counts");
    }
    std::vector<KeyColumn> columns = RankColumns(rows, keyCols);
    if (columns.empty()) {
        return RankEqual(rows.size()).order;
    }
    for (const KeyColumn& column : columns) {
        if (column.rankings.size() > 1) {
            return WalkRows(rows.size(), columns);
        }
    }
    return OrderByRanks(std::move(columns));
}

}  // namespace FrameUtil::table
