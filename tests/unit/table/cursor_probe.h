// A table whose cursor's place can be seen.
#pragma once

#include <string>

#include "frameutil/table.h"

struct Probe : FrameUtil::CFrmTableObject {
    Probe() = default;
    Probe(Probe& other) = default;
    Probe& operator=(const Probe& other) = default;

    std::string Where() const {
        return "row " + std::to_string(m_iCurRow) + " column " + std::to_string(m_iCurCol) +
               " cell " + std::to_string(m_iNextCell);
    }
};

/// Columns c0, c1, ...; the cell of row r and column c is the number first + 10 r + c.
inline Probe Numbers(int rows, int cols, int first = 0) {
    Probe table;
    for (int col = 0; col < cols; ++col) {
        table.AddCol(("c" + std::to_string(col)).c_str());
    }
    table.AddRow(rows);
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            table.SetCellValue(col, row, TEValue(first + 10 * row + col));
        }
    }
    return table;
}
