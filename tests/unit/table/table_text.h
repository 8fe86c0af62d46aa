// A table in one line, for comparing: "name a b | 1 x | 2 -"; "-" is an empty cell, a short or
// long row shows as it is.
#pragma once

#include <string>
#include <vector>

#include "frameutil/table.h"

inline std::string RowText(const std::vector<TEValue>& row) {
    std::string text;
    for (const TEValue& cell : row) {
        text += (text.empty() ? "" : " ") + (cell.IsNull() ? "-" : cell.As_std_string());
    }
    return text;
}

inline std::string RowsText(const FrameUtil::CBMSTableObject& table) {
    std::string text;
    for (int row = 0; row < table.GetRowCount(); ++row) {
        text += (row == 0 ? "" : " | ") + RowText(*table.GetRowEx(row));
    }
    return text;
}

inline std::string ColsText(const FrameUtil::CBMSTableObject& table) {
    std::string text;
    for (int col = 0; table.GetColName(col) != nullptr; ++col) {
        text += (col == 0 ? "" : " ") + std::string(table.GetColName(col));
    }
    return text;
}

/// Fills a table that has columns, row by row.
template <class Table>
void AddRows(Table& table, const std::vector<std::vector<TEValue>>& rows) {
    for (const auto& row : rows) {
        table.AddRow(1);
        table.GetTable()->back() = row;
    }
}
