// Random sequences of edits on a table and on a plain model of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>

#include "unit/table/exchange_reference.h"
#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;
using FrameUtil::CFrmTableObject;
using Random = std::mt19937_64;

// What a table is, said as plainly as possible.
struct Model {
    std::vector<std::string> cols;
    std::vector<std::vector<TEValue>> rows;
    std::vector<int> types;
    int sort_type = -1;
    std::optional<std::size_t> row, cell;  // of the cursor

    int Find(const std::string& name) const {
        const auto at = std::find(cols.begin(), cols.end(), name);
        return at == cols.end() ? -1 : static_cast<int>(at - cols.begin());
    }
    bool IsCell(int col, int at) const {
        return at >= 0 && at < static_cast<int>(rows.size()) && col >= 0 &&
               col < static_cast<int>(cols.size());
    }
};

// One step each: what the model's code and state are afterwards.
int AddCol(Model& m, const std::string& name) {
    if (m.Find(name) >= 0) {
        return -1;
    }
    if (!m.rows.empty()) {
        return -2;
    }
    m.cols.push_back(name);
    return 0;
}

int AddUniqueCol(Model& m, std::string name) {
    if (!m.rows.empty()) {
        return -1;
    }
    for (std::size_t at = 0; at < m.cols.size(); ++at) {
        if (m.cols[at] == name) {
            name += std::to_string(at);
        }
    }
    m.cols.push_back(name);
    m.types.push_back(0);
    return 0;
}

int DeleteCol(Model& m, const std::string& name) {
    if (!m.rows.empty()) {
        return -1;
    }
    if (m.Find(name) < 0) {
        return -2;
    }
    m.cols.erase(m.cols.begin() + m.Find(name));
    return 0;
}

int SetColName(Model& m, int col, const std::string& name) {
    if (col < 0 || col >= static_cast<int>(m.cols.size())) {
        return -1;
    }
    m.cols[static_cast<std::size_t>(col)] = name;
    return 0;
}

int AddRow(Model& m, int count) {
    if (m.cols.empty()) {
        return -1;
    }
    for (int n = 0; n < count; ++n) {
        m.rows.emplace_back(m.cols.size());
    }
    return 0;
}

int DeleteRow(Model& m, int start, int count) {
    if (start < 0 || start >= static_cast<int>(m.rows.size())) {
        return -1;
    }
    for (int n = 0; n < count && start < static_cast<int>(m.rows.size()); ++n) {
        m.rows.erase(m.rows.begin() + start);
    }
    return 0;
}

int Initilize(Model& m, int rows) {
    if (rows < 0) {
        return -1;
    }
    m.rows.resize(static_cast<std::size_t>(rows));
    for (auto& row : m.rows) {
        row.resize(m.cols.size());
    }
    return 0;
}

int SetCellValue(Model& m, int col, int row, const TEValue& value) {
    if (!m.IsCell(col, row)) {
        return -1;
    }
    m.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)] = value;
    return 0;
}

int Sort(Model& m, const std::vector<int>& keys, int type) {
    if (keys.empty()) {
        return -1;
    }
    reference::Sort(m.rows, keys);
    m.sort_type = type;
    return 0;
}

TEValue AnyValue(Random& random) {
    switch (random() % 5) {
        case 0:
            return TEValue();
        case 1:
            return TEValue(std::string(random() % 40, 't'));
        case 2:
            return TEValue(static_cast<double>(random() % 9) / 2);
        default:
            return TEValue(static_cast<int>(random() % 9));
    }
}

std::string AnyName(Random& random) {
    return std::string(1 + random() % 2 * 20, static_cast<char>('a' + random() % 5));
}

// The same step on both; the codes of both.
struct Codes {
    int table, model;
};

Codes EditColumns(CBMSTableObject& table, Model& m, bool unique, Random& random) {
    const std::string name = AnyName(random);
    const int col = static_cast<int>(random() % 8) - 1;
    switch (random() % 4) {
        case 0:
            return {table.DeleteCol(name.c_str()), DeleteCol(m, name)};
        case 1:
            return {table.SetColName(col, name.c_str()), SetColName(m, col, name)};
        default:
            return {table.AddCol(name.c_str()), unique ? AddUniqueCol(m, name) : AddCol(m, name)};
    }
}

Codes EditRows(CBMSTableObject& table, Model& m, Random& random) {
    const int a = static_cast<int>(random() % 12) - 2;
    const int b = static_cast<int>(random() % 6) - 1;
    const TEValue value = AnyValue(random);
    const std::string name = AnyName(random);
    std::vector<int> keys(random() % 3);
    for (int& key : keys) {
        key = static_cast<int>(random() % 7) - 1;
    }
    switch (random() % 8) {
        case 0:
            return {table.AddRow(b), AddRow(m, b)};
        case 1:
            return {table.DeleteRow(a, b), DeleteRow(m, a, b)};
        case 2:
            return {table.Initilize(a, b), Initilize(m, a)};
        case 3:
            return {table.Sort(keys, a), Sort(m, keys, a)};
        case 4:
            return {table.SetCellValue(name.c_str(), a, value),
                    SetCellValue(m, m.Find(name), a, value)};
        default:
            return {table.SetCellValue(b, a, value), SetCellValue(m, b, a, value)};
    }
}

void ExpectSame(const CBMSTableObject& table, const Model& m) {
    std::string cols, rows;
    for (const std::string& col : m.cols) {
        cols += (cols.empty() ? "" : " ") + col;
    }
    for (std::size_t row = 0; row < m.rows.size(); ++row) {
        rows += (row == 0 ? "" : " | ") + RowText(m.rows[row]);
    }
    ASSERT_EQ(ColsText(table), cols);
    ASSERT_EQ(RowsText(table), rows);
    ASSERT_EQ(table.GetRowCount(), static_cast<int>(m.rows.size()));
    ASSERT_EQ(table.GetSortType(), m.sort_type);
    for (char letter = 'a'; letter < 'f'; ++letter) {
        for (const std::size_t size : {1, 21}) {
            const std::string name(size, letter);
            ASSERT_EQ(table.FindCol(name.c_str()), m.Find(name)) << name;
        }
    }
    for (int row = -1; row <= table.GetRowCount(); ++row) {
        for (int col = -1; col <= static_cast<int>(m.cols.size()); ++col) {
            ASSERT_EQ(table.GetCellValue(col, row).As_std_string(),
                      m.IsCell(col, row)
                          ? m.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)]
                                .As_std_string()
                          : "");
        }
    }
}

TEST(TableModel, ValueTable) {
    Random random(3);
    for (int round = 0; round < 300; ++round) {
        CBMSTableObject table;
        Model model;
        for (int step = 0; step < 60; ++step) {
            Codes codes{};
            const auto kind = random() % 20;
            if (kind == 0) {
                table.RemoveAll();
                model.rows.clear();
                model.sort_type = -1;
            } else if (kind == 1) {
                const CBMSTableObject copy(table);
                table = CBMSTableObject();
                table = copy;
            } else if (kind < 7) {
                codes = EditColumns(table, model, false, random);
            } else {
                codes = EditRows(table, model, random);
            }
            ASSERT_EQ(codes.table, codes.model);
            ASSERT_NO_FATAL_FAILURE(ExpectSame(table, model)) << round << ", " << step;
        }
    }
}

// One step of the cursor.
void MoveCursor(CFrmTableObject& table, Model& m, Random& random) {
    const auto last = static_cast<int>(m.cols.size()) - 1;
    switch (random() % 4) {
        case 0: {
            if (!m.rows.empty()) {
                const std::size_t next = m.row ? *m.row + 1 : 0;
                m.row = next < m.rows.size() ? std::optional(next) : std::nullopt;
                m.cell = m.row ? std::optional<std::size_t>(0) : std::nullopt;
            }
            const std::vector<TEValue>* const row = table();
            ASSERT_EQ(row,
                      m.rows.empty() || !m.row ? nullptr : table.GetRow(static_cast<int>(*m.row)));
            return;
        }
        case 1: {
            const auto col = random() % 8;
            table[col];
            const int place = std::max(0, std::min(static_cast<int>(col), last));
            m.cell = m.row ? std::optional(static_cast<std::size_t>(place)) : std::nullopt;
            return;
        }
        case 2: {
            const std::string name = AnyName(random);
            table[name];
            const int place = std::max(0, m.Find(name));
            m.cell = m.row ? std::optional(static_cast<std::size_t>(place)) : std::nullopt;
            return;
        }
        default: {
            std::string text = "untouched";
            table >> text;
            if (m.row && m.cell && *m.row < m.rows.size() && *m.cell < m.rows[*m.row].size()) {
                ASSERT_EQ(text, m.rows[*m.row][*m.cell].As_std_string());
                ++*m.cell;
            } else {
                ASSERT_EQ(text, "untouched");
                m.cell.reset();
            }
        }
    }
}

TEST(TableModel, CursorTable) {
    Random random(4);
    for (int round = 0; round < 300; ++round) {
        CFrmTableObject table;
        Model model;
        for (int step = 0; step < 100; ++step) {
            Codes codes{};
            const auto kind = random() % 40;
            if (kind == 0) {
                table.RemoveAll();
                const std::vector<int> types = model.types;
                model = Model();
                model.types = types;
            } else if (kind == 1) {
                CFrmTableObject copy(table);
                table = CFrmTableObject();
                table = copy;
            } else if (kind == 2) {
                const int col = static_cast<int>(random() % 8) - 1;
                const bool there = col >= 0 && col < static_cast<int>(model.types.size());
                codes = {table.SetColType(col, refl::Enum::DT_TEXT), there ? 0 : -1};
                if (there) {
                    model.types[static_cast<std::size_t>(col)] = refl::Enum::DT_TEXT;
                }
            } else if (kind < 8) {
                codes = EditColumns(table, model, true, random);
            } else if (kind < 18) {
                codes = EditRows(table, model, random);
            } else {
                ASSERT_NO_FATAL_FAILURE(MoveCursor(table, model, random)) << round << ", " << step;
            }
            ASSERT_EQ(codes.table, codes.model);
            ASSERT_NO_FATAL_FAILURE(ExpectSame(table, model)) << round << ", " << step;
            for (std::size_t col = 0; col < model.types.size(); ++col) {
                ASSERT_EQ(table.GetColType(static_cast<int>(col)), model.types[col]);
            }
        }
    }
}

}  // namespace
