// Row operations on a table: a structure whose children are columns.

#include "paraset/node.h"
#include "paraset/reserved.h"

namespace FrameUtil {

CParaSet& CParaSet::AddRow(int row, CParaSet& rowSet) {
    for (const auto& [key, value] : rowSet.m_mapValue) {
        if (reserved::IsNoColumn(key)) {
            continue;
        }
        CParaSet& cell = (*this)[key][row];
        if (value != nullptr) {
            cell = *value;
        }
    }
    ++m_pImpl->m_iRowCount;
    return (*this)[reserved::kRowCount] = m_pImpl->m_iRowCount;
}

void CParaSet::GetRow(int row, CParaSet& rowSet) {
    for (const auto& [key, column] : m_mapValue) {
        if (!reserved::IsNoColumn(key) && column != nullptr) {
            rowSet[key] = (*column)[row];
        }
    }
}

CParaSet& CParaSet::DelRow(int row) {
    int& rows = m_pImpl->m_iRowCount;
    if (checkParaValid(reserved::kRowCount)) {
        rows = (*this)[reserved::kRowCount].asInt();
    }
    bool removed = false;
    for (const auto& [key, column] : m_mapValue) {
        if (!reserved::IsNoColumn(key) && column != nullptr) {
            removed = column->remove(row);
        }
    }
    if (removed) {
        --rows;
    }
    return (*this)[reserved::kRowCount] = rows;
}

int CParaSet::GetRowCount() {
    return checkParaValid(reserved::kRowCount) ? (*this)[reserved::kRowCount].asInt() : -1;
}

int CParaSet::GetTableCount() const {
    return m_pImpl->m_pRare == nullptr ? 0 : m_pImpl->m_pRare->m_iTableCount;
}

void CParaSet::SetTableCount(int count) {
    m_pImpl->EnsureRare().m_iTableCount = count;
}

}  // namespace FrameUtil
