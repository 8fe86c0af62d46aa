// One cell at a time. Nothing here goes through an exported operation: in a shared library
// these are never inlined, and an access is shorter than such a call.
#include "frameutil/table.h"
#include "table/cell.h"
#include "table/look_up.h"

namespace FrameUtil {

namespace {

// The cell, or null if there is none. Also a row that a caller made shorter is no trap.
template <class Rows>
auto* FindCell(Rows& rows, std::size_t cols, int col, int row) noexcept {
    // A negative number becomes one that is beyond every size.
    const auto at_row = static_cast<std::size_t>(static_cast<long>(row));
    const auto at_col = static_cast<std::size_t>(static_cast<long>(col));
    return at_row < rows.size() && at_col < cols && at_col < rows[at_row].size()
               ? &rows[at_row][at_col]
               : nullptr;
}

int Assign(TEValue* cell, const TEValue& value) {
    if (cell == nullptr) {
        return -1;
    }
    cell->ReadFrom(value);
    return 0;
}

}  // namespace

int CBMSTableObject::SetCellValue(int col, int row, const TEValue& value) {
    return Assign(FindCell(m_vecRows, m_vecColNames.size(), col, row), value);
}

int CBMSTableObject::SetCellValue(const char* col, int row, const TEValue& value) {
    return col == nullptr
               ? -1
               : Assign(FindCell(m_vecRows, m_vecColNames.size(), LookUp(col), row), value);
}

const TEValue& CBMSTableObject::GetCellValue(int col, int row) const noexcept {
    const TEValue* const cell = FindCell(m_vecRows, m_vecColNames.size(), col, row);
    return cell == nullptr ? table::kEmptyCell : *cell;
}

const TEValue& CBMSTableObject::GetCellValue(const char* col, int row) const noexcept {
    const TEValue* const cell =
        col == nullptr ? nullptr : FindCell(m_vecRows, m_vecColNames.size(), LookUp(col), row);
    return cell == nullptr ? table::kEmptyCell : *cell;
}

}  // namespace FrameUtil
