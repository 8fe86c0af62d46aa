// Rows compared with rows of the same or another table, in pairs of columns.
#include <functional>
#include <memory>
#include <utility>

#include "frameutil/table.h"
#include "table/cell.h"

namespace FrameUtil {

namespace {

using table::CellAt;
using table::LeftCell;
using table::Row;

// The column that the second list pairs with the k-th of the first; -1, which no row has,
// when it is shorter.
int PairOf(const std::vector<int>& cols, std::size_t k) noexcept {
    return k < cols.size() ? cols[k] : -1;
}

// One row's cells, each with the column that it is compared with in other rows.
class Pattern {
  public:
    Pattern(const Row& row, const std::vector<int>& cols, const std::vector<int>& theirs) {
        m_pairs.reserve(cols.size());
        for (std::size_t k = 0; k < cols.size(); ++k) {
            m_pairs.emplace_back(LeftCell(CellAt(row, cols[k])), PairOf(theirs, k));
        }
    }

    bool Matches(const Row& row) const {
        for (const auto& [left, col] : m_pairs) {
            if (left.Compare(CellAt(row, col)) != 0) {
                return false;
            }
        }
        return true;
    }

  private:
    std::vector<std::pair<LeftCell, int>> m_pairs;
};

const Row* RowOf(const CBMSTableObject* table, int row) noexcept {
    return table == nullptr ? nullptr : table->GetRowEx(row);
}

}  // namespace

std::vector<std::vector<TEValue>>::iterator CBMSTableObject::FindRowLocation(
    std::vector<TEValue>* row, std::vector<std::vector<TEValue>>::iterator start,
    std::vector<int>& rowCols, std::vector<int>& tableCols) {
    // An iterator into another list may not even be compared with ours; addresses may.
    const std::less<const Row*> before;
    const Row* const first = std::to_address(start);
    if (row == nullptr || before(first, m_vecRows.data()) ||
        before(m_vecRows.data() + m_vecRows.size(), first)) {
        return m_vecRows.end();
    }
    const Pattern pattern(*row, rowCols, tableCols);
    while (start != m_vecRows.end() && !pattern.Matches(*start)) {
        ++start;
    }
    return start;
}

int CBMSTableObject::FindRowLocation(CBMSTableObject* other, int otherRow, int start,
                                     std::vector<int>& otherCols, std::vector<int>& thisCols) {
    const Row* const row = RowOf(other, otherRow);
    if (row == nullptr) {
        return 1;
    }
    if (m_vecRows.empty()) {
        return -5;
    }
    const Pattern pattern(*row, otherCols, thisCols);
    for (int at = start < 0 ? 0 : start; at < GetRowCount(); ++at) {
        if (pattern.Matches(m_vecRows[static_cast<std::size_t>(at)])) {
            return at;
        }
    }
    return -1;
}

int CBMSTableObject::DetectIfEqual(CBMSTableObject* other, int otherRow, int thisRow,
                                   std::vector<int>& otherCols, std::vector<int>& thisCols) {
    const Row* const left = RowOf(other, otherRow);
    if (left == nullptr) {
        return 1;
    }
    const Row* const right = GetRowEx(thisRow);
    if (right == nullptr) {
        return 0;
    }
    for (std::size_t k = 0; k < otherCols.size(); ++k) {
        if (LeftCell(CellAt(*left, otherCols[k])).Compare(CellAt(*right, PairOf(thisCols, k))) !=
            0) {
            return 0;
        }
    }
    return 1;
}

int CBMSTableObject::DetectIfModified(CBMSTableObject* other, int otherRow, int thisRow,
                                      std::vector<int>& otherCols, std::vector<int>& thisCols,
                                      bool collectNames, std::string& modifiedCols) {
    const Row* const left = RowOf(other, otherRow);
    const Row* const right = GetRowEx(thisRow);
    if (left == nullptr || right == nullptr) {
        return 0;
    }
    std::string names;
    int modified = 0;
    for (std::size_t k = 0; k < otherCols.size(); ++k) {
        if (LeftCell(CellAt(*left, otherCols[k])).Compare(CellAt(*right, PairOf(thisCols, k))) ==
            0) {
            continue;
        }
        modified = 1;
        if (!collectNames) {
            break;
        }
        const char* const name = other->GetColName(otherCols[k]);
        names.append(name == nullptr ? "" : name).append(";");
    }
    if (!names.empty()) {
        names.pop_back();
    }
    modifiedCols.swap(names);
    return modified;
}

}  // namespace FrameUtil
