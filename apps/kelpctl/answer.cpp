#include "kelpctl/answer.h"

#include <algorithm>
#include <utility>

namespace kelpctl {
namespace {

Cell TakeCell(FrameUtil::AsnValue& value) {
    if (value.sVal) {
        return std::move(value.sVal->str());
    }
    if (value.iVal) {
        return static_cast<std::int64_t>(*value.iVal);
    }
    if (value.dVal) {
        return static_cast<double>(*value.dVal);
    }
    if (value.bVal) {
        return static_cast<bool>(*value.bVal);
    }
    return std::monostate();
}

Table TakeTable(FrameUtil::AsnTable& table) {
    Table taken;
    if (table.name) {
        taken.name = std::move(table.name->str());
    }
    if (table.schema) {
        for (FrameUtil::AsnSchemaItem& column : *table.schema) {
            taken.columns.push_back(std::move(column.name.str()));
        }
    }
    taken.rows.reserve(table.rows.Count());
    for (FrameUtil::AsnDataRow& row : table.rows) {
        std::vector<Cell>& cells = taken.rows.emplace_back();
        cells.reserve(row.Count());
        for (FrameUtil::AsnValue& value : row) {
            cells.push_back(TakeCell(value));
        }
    }
    return taken;
}

std::string TextAt(const Table& table, const char* column) {
    const auto found = std::find(table.columns.begin(), table.columns.end(), column);
    const auto at = static_cast<std::size_t>(found - table.columns.begin());
    if (found == table.columns.end() || at >= table.rows[0].size()) {
        return {};
    }
    const auto* text = std::get_if<std::string>(&table.rows[0][at]);
    return text != nullptr ? *text : std::string();
}

}  // namespace

Answer TakeAnswer(FrameUtil::AsnCommonResponse& response) {
    Answer answer;
    answer.ret_code = response.retCode;
    if (response.retCodeEx) {
        answer.ret_code_ex = *response.retCodeEx;
    }
    if (response.ver) {
        answer.ver = std::move(response.ver->str());
    }
    if (response.tables) {
        for (FrameUtil::AsnTable& table : *response.tables) {
            answer.tables.push_back(TakeTable(table));
        }
    }
    return answer;
}

std::optional<ErrorRow> TakeErrorRow(Answer& answer) {
    if (answer.ret_code == 0 || answer.tables.size() != 1 || answer.tables[0].rows.size() != 1) {
        return std::nullopt;
    }
    const Table& table = answer.tables[0];
    ErrorRow row{TextAt(table, "errorText"), TextAt(table, "errorItem"),
                 TextAt(table, "errorAdvice")};
    if (row.text.empty() && row.item.empty()) {
        return std::nullopt;
    }
    answer.tables.clear();
    return row;
}

}  // namespace kelpctl
