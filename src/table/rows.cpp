// Rows as wholes.
#include <algorithm>
#include <climits>
#include <stdexcept>

#include "frameutil/table.h"
#include "table/cell.h"

namespace FrameUtil {

using table::Row;

void CBMSTableObject::RemoveAll() {
    m_vecRows.clear();
    m_iSortType = -1;
}

int CBMSTableObject::AddRow(int count) {
    if (m_vecColNames.empty()) {
        return -1;
    }
    if (count < 1) {
        return 0;
    }
    const std::size_t rows = m_vecRows.size() + static_cast<std::size_t>(count);
    if (rows > INT_MAX) {
        throw std::length_error("CBMSTableObject::AddRow: more rows than an int counts");
    }
    m_vecRows.resize(rows, Row(m_vecColNames.size()));
    return 0;
}

int CBMSTableObject::DeleteRow(int start, int count) {
    if (GetRow(start) == nullptr) {
        return -1;
    }
    if (count < 1) {
        return 0;
    }
    const auto first = m_vecRows.begin() + start;
    const auto last = m_vecRows.end() - first < count ? m_vecRows.end() : first + count;
    m_vecRows.erase(first, last);
    return 0;
}

int CBMSTableObject::GetRowCount() const noexcept {
    return static_cast<int>(m_vecRows.size());
}

std::vector<TEValue>* CBMSTableObject::GetRow(int row) noexcept {
    return row >= 0 && static_cast<std::size_t>(row) < m_vecRows.size()
               ? &m_vecRows[static_cast<std::size_t>(row)]
               : nullptr;
}

const std::vector<TEValue>* CBMSTableObject::GetRowEx(int row) const noexcept {
    return row >= 0 && static_cast<std::size_t>(row) < m_vecRows.size()
               ? &m_vecRows[static_cast<std::size_t>(row)]
               : nullptr;
}

std::vector<std::vector<TEValue>>* CBMSTableObject::GetTable() noexcept {
    return &m_vecRows;
}

int CBMSTableObject::Initilize(int rows, int /*unused*/) {
    if (rows < 0) {
        return -1;
    }
    // First all memory, then all changes.
    const std::size_t cols = m_vecColNames.size();
    const std::size_t kept = std::min(m_vecRows.size(), static_cast<std::size_t>(rows));
    for (std::size_t at = 0; at < kept; ++at) {
        m_vecRows[at].reserve(cols);
    }
    m_vecRows.resize(static_cast<std::size_t>(rows), Row(cols));
    for (std::size_t at = 0; at < kept; ++at) {
        m_vecRows[at].resize(cols);
    }
    return 0;
}

}  // namespace FrameUtil
