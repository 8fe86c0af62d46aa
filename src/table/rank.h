// Cells of a column replaced by their ranks: comparing two rows of a sort is then comparing
// two small integers, and a text or a long row is looked at once.
#pragma once

#include <cstdint>
#include <vector>

#include "table/cell.h"

namespace FrameUtil::table {

struct Ranking {
    /// By row: equal cells have equal ranks, a less one a less rank, without gaps from 0.
    std::vector<std::uint32_t> rank;
    /// Rows by rising rank. Of equal rows the later one comes first: exchanging rows turns
    /// equal ones round.
    std::vector<std::uint32_t> order;
    std::uint32_t distinct = 0;
};

/// The ranks of the cells at `col`, all compared as `comparing` says.
Ranking RankCells(const Rows& rows, int col, Comparing comparing);

/// The ranks of pairs: by `first`, those equal by `second`.
Ranking RankPairs(const Ranking& first, const Ranking& second);

/// The ranks of any rows among which all are equal.
Ranking RankEqual(std::size_t rows);

}  // namespace FrameUtil::table
