// Comparing cells and sorting rows as they are defined, one exchange after the other: what
// CBMSTableObject::Sort() must have the same outcome as.
#pragma once

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kelp/value.h"

namespace reference {

using Rows = std::vector<std::vector<TEValue>>;

inline int CompareCells(const TEValue& left, const TEValue& right) {
    const int code = left.GetType();
    if ((code >= 13 && code <= 16) || code == 23 || code == 24) {
        const long a = left;
        const long b = right;
        return a < b ? -1 : a > b ? 1 : 0;
    }
    if (code == 25) {
        const unsigned long a = left;
        const unsigned long b = right;
        return a < b ? -1 : a > b ? 1 : 0;
    }
    const int compared = std::strcmp(left.As_TEString().c_str(), right.As_TEString().c_str());
    return compared < 0 ? -1 : compared > 0 ? 1 : 0;
}

inline const TEValue& CellOf(const std::vector<TEValue>& row, int col) {
    static const TEValue empty;
    return col < 0 || col >= static_cast<int>(row.size()) ? empty
                                                          : row[static_cast<std::size_t>(col)];
}

inline bool Precedes(const std::vector<TEValue>& a, const std::vector<TEValue>& b,
                     const std::vector<int>& keys) {
    for (const int col : keys) {
        if (CompareCells(CellOf(a, col), CellOf(b, col)) == -1) {
            return true;
        }
    }
    return false;
}

inline void Sort(Rows& rows, const std::vector<int>& keys) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = i + 1; j < rows.size(); ++j) {
            if (!Precedes(rows[i], rows[j], keys)) {
                rows[i].swap(rows[j]);
            }
        }
    }
}

}  // namespace reference
