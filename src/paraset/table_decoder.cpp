#include <vector>

#include "paraset/node.h"
#include "paraset/reserved.h"
#include "paraset/tables.h"

namespace FrameUtil {

namespace {

constexpr int kStringCode = 4;
constexpr int kDoubleCode = 9;

struct Column {
    const AsnSchemaItem* item;
    std::int64_t type;
    CParaSet* node;  // reached, and made, when the first value for it comes
};

bool HasValue(const AsnValue& value, std::int64_t type) {
    switch (type) {
        case kStringCode:
            return static_cast<bool>(value.sVal);
        case kDoubleCode:
            return static_cast<bool>(value.dVal);
        default:
            return static_cast<bool>(value.iVal);
    }
}

// REQUIRES: HasValue(value, type).
void TakeValue(CParaSet& cell, const AsnValue& value, std::int64_t type) {
    switch (type) {
        case kStringCode:
            cell = TextOf(*value.sVal);
            break;
        case kDoubleCode:
            cell = static_cast<double>(*value.dVal);
            break;
        default:
            cell = static_cast<int>(static_cast<std::int64_t>(*value.iVal));
    }
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
    node[reserved::kRowCount] = static_cast<int>(rows);

    std::vector<Column> columns;
    columns.reserve(table->schema->Count());
    for (const AsnSchemaItem& item : *table->schema) {
        columns.push_back({&item, item.type, nullptr});
        if (item.desc) {
            node[item.name.str()].SetDesc(item.desc->str());
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
                    column->node = &node[column->item->name.str()];
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
