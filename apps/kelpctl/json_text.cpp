#include "kelpctl/json_text.h"

#include <cmath>
#include <set>
#include <string_view>
#include <vector>

#include "support/json_write.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using app::JsonQuoted;

std::string JsonOf(const std::string& text) {
    return app::InvalidUtf8At(text) == std::string_view::npos
               ? JsonQuoted(text)
               : "{\"octets\":\"" + app::HexText(text) + "\"}";
}

struct JsonCell {
    std::string operator()(std::monostate) const { return "null"; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const {
        if (std::isnan(value)) {
            return "\"NaN\"";
        }
        if (std::isinf(value)) {
            return value > 0 ? "\"Infinity\"" : "\"-Infinity\"";
        }
        return app::DoubleText(value);
    }
    std::string operator()(const std::string& value) const { return JsonOf(value); }
};

// The keys of a row's members: each once in a row, so that no reader drops one.
class Keys {
  public:
    explicit Keys(const std::vector<std::string>& columns) {
        for (const std::string& name : columns) {
            const bool usable = !name.empty() && name[0] != '#' &&
                                app::InvalidUtf8At(name) == std::string_view::npos &&
                                seen_.insert(name).second;
            keys_.push_back(JsonQuoted(usable ? name : Position(keys_.size())));
        }
    }

    const std::string& operator[](std::size_t column) {
        while (column >= keys_.size()) {
            keys_.push_back(JsonQuoted(Position(keys_.size())));
        }
        return keys_[column];
    }

  private:
    static std::string Position(std::size_t column) { return '#' + std::to_string(column); }

    std::set<std::string> seen_;
    std::vector<std::string> keys_;
};

void PrintRow(const std::vector<Cell>& row, Keys& keys, std::ostream& out) {
    out << '{';
    for (std::size_t c = 0; c < row.size(); ++c) {
        out << (c == 0 ? "" : ",") << keys[c] << ':' << std::visit(JsonCell{}, row[c]);
    }
    out << '}';
}

void PrintTable(const Table& table, std::ostream& out) {
    out << "{\"name\":" << (table.name ? JsonOf(*table.name) : "null") << ",\"columns\":[";
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
        out << (c == 0 ? "" : ",") << JsonOf(table.columns[c]);
    }
    out << "],\"rows\":[";
    Keys keys(table.columns);
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        out << (r == 0 ? "\n" : ",\n");
        PrintRow(table.rows[r], keys, out);
    }
    out << "]}";
}

}  // namespace

void PrintJson(const Answer& answer, std::ostream& out) {
    out << "{\"retCode\":" << answer.ret_code;
    if (answer.ret_code_ex) {
        out << ",\"retCodeEx\":" << *answer.ret_code_ex;
    }
    if (answer.ver) {
        out << ",\"ver\":" << JsonOf(*answer.ver);
    }
    out << ",\"tables\":[";
    for (std::size_t t = 0; t < answer.tables.size(); ++t) {
        out << (t == 0 ? "\n" : ",\n");
        PrintTable(answer.tables[t], out);
    }
    out << "]}\n";
}

}  // namespace kelpctl
