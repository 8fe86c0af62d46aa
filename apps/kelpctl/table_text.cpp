#include "kelpctl/table_text.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

struct ShowCell {
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const {
        return std::isnan(value) ? "-" : app::DoubleText(value);
    }
    std::string operator()(const std::string& value) const { return app::ShowText(value); }
};

std::string Show(const Cell& cell) {
    return std::visit(ShowCell{}, cell);
}

bool IsText(const Cell& cell) {
    return std::holds_alternative<std::string>(cell);
}

struct Column {
    std::size_t width = 0;
    bool text = false;  // numbers stand at the right of their column
};

void Widen(Column& column, const std::string& shown) {
    column.width =
        std::clamp(app::DisplayWidth(shown), column.width, std::max(column.width, kMostPadding));
}

class Grid {
  public:
    Grid(const Table& table, std::size_t rows) : table_(table), rows_(rows) {
        for (const std::string& name : table.columns) {
            At(headers_.size()).text = false;
            headers_.push_back(app::ShowText(name));
            Widen(columns_[headers_.size() - 1], headers_.back());
        }
        for (std::size_t r = 0; r < rows; ++r) {
            for (std::size_t c = 0; c < table.rows[r].size(); ++c) {
                Widen(At(c), Show(table.rows[r][c]));
                columns_[c].text |= IsText(table.rows[r][c]);
            }
        }
    }

    void Print(std::ostream& out) const {
        PrintLine(out, headers_);
        std::vector<std::string> rules;
        for (const Column& column : columns_) {
            rules.emplace_back(column.width, '-');
        }
        PrintLine(out, rules);
        for (std::size_t r = 0; r < rows_; ++r) {
            std::vector<std::string> cells;
            for (const Cell& cell : table_.rows[r]) {
                cells.push_back(Show(cell));
            }
            PrintLine(out, cells);
        }
    }

  private:
    Column& At(std::size_t c) {
        if (c >= columns_.size()) {
            columns_.resize(c + 1);
        }
        return columns_[c];
    }

    // Blanks are written only when something follows them.
    void PrintLine(std::ostream& out, const std::vector<std::string>& cells) const {
        std::size_t owed = 0;
        for (std::size_t c = 0; c < cells.size(); ++c) {
            const std::size_t width = app::DisplayWidth(cells[c]);
            const std::size_t pad = columns_[c].width - std::min(columns_[c].width, width);
            const bool left = columns_[c].text;
            if (!cells[c].empty()) {
                out << std::string(owed + (left ? 0 : pad), ' ') << cells[c];
                owed = left ? pad : 0;
            } else {
                owed += pad;
            }
            owed += 2;
        }
        out << '\n';
    }

    const Table& table_;
    std::size_t rows_;
    std::vector<std::string> headers_;
    std::vector<Column> columns_;
};

void PrintList(const std::vector<std::pair<std::string, std::string>>& lines, std::ostream& out) {
    Column names;
    for (const auto& [name, value] : lines) {
        Widen(names, name);
    }
    for (const auto& [name, value] : lines) {
        const std::size_t width = app::DisplayWidth(name);
        out << name << std::string(names.width - std::min(names.width, width) + 2, ' ') << value
            << '\n';
    }
}

void PrintSingleRow(const Table& table, std::ostream& out) {
    std::vector<std::pair<std::string, std::string>> lines;
    for (std::size_t c = 0; c < table.rows[0].size(); ++c) {
        lines.emplace_back(c < table.columns.size() ? app::ShowText(table.columns[c]) : "",
                           Show(table.rows[0][c]));
    }
    PrintList(lines, out);
}

void PrintTable(const Table& table, std::size_t most_rows, std::ostream& out) {
    const std::size_t shown = std::min(table.rows.size(), most_rows);
    if (table.rows.size() == 1 && shown == 1) {
        PrintSingleRow(table, out);
        return;
    }
    Grid(table, shown).Print(out);
    if (shown < table.rows.size()) {
        out << "... " << shown << " of ";
    }
    out << table.rows.size() << " rows\n";
}

}  // namespace

void PrintText(const Answer& answer, std::size_t most_rows, std::ostream& out) {
    std::vector<std::pair<std::string, std::string>> headers;
    if (answer.ret_code_ex) {
        headers.emplace_back("##retCodeEx", std::to_string(*answer.ret_code_ex));
    }
    if (answer.ver) {
        headers.emplace_back("##ver", app::ShowText(*answer.ver));
    }
    PrintList(headers, out);
    bool first = headers.empty();
    for (std::size_t t = 0; t < answer.tables.size(); ++t) {
        const Table& table = answer.tables[t];
        if (!std::exchange(first, false)) {
            out << '\n';
        }
        if (table.name && !table.name->empty()) {
            out << app::ShowText(*table.name) << ":\n";
        } else if (answer.tables.size() > 1) {
            out << "table " << t << ":\n";
        }
        PrintTable(table, most_rows, out);
    }
}

}  // namespace kelpctl
