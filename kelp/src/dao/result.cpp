#include "kelp/dao/result.h"

#include <algorithm>

namespace dao {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

int FindColumn(const std::vector<CColumn>& columns, std::string_view name) noexcept {
    const auto same = [name](const CColumn& column) {
        return std::equal(column.name.begin(), column.name.end(), name.begin(), name.end(),
                          [](char a, char b) { return Lower(a) == Lower(b); });
    };
    const auto found = std::find_if(columns.begin(), columns.end(), same);
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

const TEValue& CExecResult::At(std::size_t row, std::size_t column) const noexcept {
    static const TEValue empty;
    return row < m_rows.size() && column < m_rows[row].size() ? m_rows[row][column] : empty;
}

void CExecResult::Clear() noexcept {
    *this = CExecResult();
}

void CExecResult::Assign(std::vector<CColumn> columns, std::vector<CRow> rows) noexcept {
    m_columns = std::move(columns);
    m_rows = std::move(rows);
}

}  // namespace dao
