// The common records as one line of text each, and short ways to fill them.
//
//     "ports (a:2, b:4) [1, \"x\"] [-, \"y\"]"
//
// is a table of that name with two columns and two rows, of which the second lacks its
// first cell. An unnamed table begins with its columns; one without a schema has none.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>

#include "support/paraset_shape.h"

inline std::string TextOf(const FrameUtil::AsnValue& cell) {
    std::string text;
    if (cell.bVal) {
        text += *cell.bVal ? "true" : "false";
    }
    if (cell.iVal) {
        text += std::to_string(std::int64_t{*cell.iVal});
    }
    if (cell.dVal) {
        char number[32];
        std::snprintf(number, sizeof number, "%gd", double{*cell.dVal});
        text += number;
    }
    if (cell.sVal) {
        text += Quoted(cell.sVal->str());
    }
    return text.empty() ? "-" : text;
}

inline std::string TextOf(const FrameUtil::AsnTable& table) {
    std::string text = table.name ? table.name->str() : "";
    const auto append = [&text](const std::string& part) {
        text += (text.empty() ? "" : " ") + part;
    };
    if (table.schema) {
        std::string columns;
        for (const auto& item : *table.schema) {
            columns += (columns.empty() ? "" : ", ") + item.name.str() + ":" +
                       std::to_string(std::int64_t{item.type}) +
                       (item.desc ? "'" + item.desc->str() + "'" : "");
        }
        append("(" + columns + ")");
    }
    for (const auto& row : table.rows) {
        std::string cells;
        for (const auto& cell : row) {
            cells += (cells.empty() ? "" : ", ") + TextOf(cell);
        }
        append("[" + cells + "]");
    }
    return text;
}

/// All tables, one after the other; "-" when there is no list.
inline std::string TextOf(const AsnOptional<FrameUtil::AsnTableList>& tables) {
    if (!tables) {
        return "-";
    }
    std::string text;
    for (const auto& table : *tables) {
        text += (text.empty() ? "" : "; ") + TextOf(table);
    }
    return text;
}

inline void AddColumn(FrameUtil::AsnTable& table, const char* name, int type) {
    auto& item = table.schema.Ensure().Append();
    item.name = name;
    item.type = type;
}

struct Cell {
    Cell() = default;
    Cell(int value) { cell.iVal.Emplace(value); }
    Cell(std::int64_t value) { cell.iVal.Emplace(value); }
    Cell(double value) { cell.dVal.Emplace(value); }
    Cell(bool value) { cell.bVal.Emplace(value); }
    Cell(const char* value) { cell.sVal.Emplace(value); }
    Cell(const std::string& value) { cell.sVal.Emplace(value); }
    FrameUtil::AsnValue cell;
};

inline void AppendRow(FrameUtil::AsnTable& table, std::initializer_list<Cell> cells) {
    auto& row = table.rows.Append();
    for (const Cell& cell : cells) {
        row.Append() = cell.cell;
    }
}
