#include <algorithm>
#include <vector>

#include "frameutil/log.h"
#include "paraset/node.h"
#include "paraset/reserved.h"
#include "paraset/tables.h"

namespace FrameUtil {

namespace {

struct Column {
    const AsnSchemaItem* item;
    std::int64_t type;
    CParaSet* node;  // reached, and made, when the first value for it comes
};

bool HasValue(const AsnValue& value, std::int64_t type) {
    switch (type) {
        case cell_type::kString:
            return static_cast<bool>(value.sVal);
        case cell_type::kDouble:
            return static_cast<bool>(value.dVal);
        default:
            return static_cast<bool>(value.iVal);
    }
}

// REQUIRES: HasValue(value, type).
void TakeValue(CParaSet& cell, const AsnValue& value, std::int64_t type) {
    switch (type) {
        case cell_type::kString:
            NodeAccess::AssignText(cell, value.sVal->view());
            break;
        case cell_type::kDouble:
            cell = static_cast<double>(*value.dVal);
            break;
        default:
            cell = static_cast<int>(static_cast<std::int64_t>(*value.iVal));
    }
}

// A row may be shorter than the schema, and what it lacks becomes a null slot of its
// column as soon as a later row has a value there. So a million empty rows and one with a
// thousand values would make a thousand columns of a million slots from two megaoctets.
// No honest peer comes near this: a cell without a value is an element of its row, too.
bool LacksNearlyAll(const AsnTable& table) {
    constexpr std::size_t kLackingFreely = 65536;
    constexpr std::size_t kLackingAValue = 16;
    const std::size_t columns = table.schema->Count();
    std::size_t there = 0;
    std::size_t lacking = 0;
    for (const AsnDataRow& row : table.rows) {
        const std::size_t values = std::min(row.Count(), columns);
        there += values;
        lacking += columns - values;
    }
    return lacking > kLackingFreely && lacking - kLackingFreely > there * kLackingAValue;
}

}  // namespace

int Table2ParaSet(const AsnTable* table, CParaSet& node) {
    if (table == nullptr || !table->schema) {
        return -1;
    }
    const std::size_t rows = table->rows.Count();
    if (table->schema->empty() || rows == 0) {
        return -2;
    }
    if (LacksNearlyAll(*table)) {
        TraceWarn("[Table2ParaSet] table \"%.64s\" left out: its %zu rows lack most of %zu columns",
                  table->name ? std::string(table->name->view()).c_str() : "", rows,
                  table->schema->Count());
        return -3;
    }
    NodeAccess::MakeChild(node, reserved::kRowCount) = static_cast<int>(rows);

    std::vector<Column> columns;
    columns.reserve(table->schema->Count());
    for (const AsnSchemaItem& item : *table->schema) {
        columns.push_back({&item, item.type, nullptr});
        if (item.desc) {
            NodeAccess::MakeChild(node, item.name.str()).SetDesc(std::string(item.desc->view()));
        }
    }
    int r = 0;
    for (const AsnDataRow& row : table->rows) {
        auto column = columns.begin();
        for (const AsnValue& value : row) {
            if (column == columns.end()) {
                break;  // more values than the schema has columns
            }
            if (HasValue(value, column->type)) {
                if (column->node == nullptr) {
                    column->node = &NodeAccess::MakeChild(node, column->item->name.str());
                }
                TakeValue(rows == 1 ? *column->node : (*column->node)[r], value, column->type);
            }
            ++column;
        }
        ++r;
    }
    return 0;
}

}  // namespace FrameUtil
