#include <vector>

#include "paraset/node.h"
#include "paraset/reserved.h"
#include "paraset/tables.h"

namespace FrameUtil {

namespace {

struct Column {
    CParaSet* node;  // null for an entry whose child was cleared
    int type;
    bool is_array;
};

// The element of an array when it is there; index access makes it when it is not.
CParaSet* ElementOf(const Column& column, int row) {
    const auto& list = NodeAccess::List(*column.node);
    const auto position = static_cast<std::size_t>(row);
    CParaSet* element = position < list.size() ? list[position] : nullptr;
    return element != nullptr ? element : &(*column.node)[row];
}

// What stands in row `row` of a column. A scalar stands in every row. A structure has
// no value for a cell, so it is not asked for its row-th entry, which it may not have.
CParaSet* CellOf(const Column& column, int row) {
    if (column.is_array) {
        return ElementOf(column, row);
    }
    if (column.node == nullptr || column.node->type() == CParaSet::PARA_STRUCT) {
        return nullptr;
    }
    return &(*column.node)[row];
}

void FillCell(AsnValue& value, CParaSet* cell, int type) {
    if (cell == nullptr) {
        return;
    }
    switch (type) {
        case cell_type::kString:
            // Text ends at its first zero octet, as asString() gives it to a caller.
            if (cell->asString() != nullptr) {
                const std::string_view text = NodeAccess::Impl(*cell).m_strValue.view();
                value.sVal.Emplace(text.substr(0, text.find('\0')));
            }
            break;
        case cell_type::kDouble:
            value.dVal.Emplace(cell->asDouble());
            break;
        case cell_type::kInteger:
            value.iVal.Emplace(cell->asInt());
            break;
        default:
            break;  // not valued on the wire
    }
}

// Rows are read across columns that may lie far apart: what later rows need is fetched
// while this one is written, first the slots, then the nodes, then their texts. Inlined,
// because the compiler takes a function that only prefetches for one without effect and
// drops the call.
template <class Fetch>
[[gnu::always_inline]] inline void ForRow(const std::vector<Column>& columns, std::size_t row,
                                          Fetch fetch) {
    for (const Column& column : columns) {
        if (column.is_array) {
            const auto& list = NodeAccess::List(*column.node);
            if (row < list.size() && list[row] != nullptr) {
                fetch(list[row], column.type);
            }
        }
    }
}

[[gnu::always_inline]] inline void PrefetchRows(const std::vector<Column>& columns,
                                                std::size_t row) {
    constexpr std::size_t kSlotsInLine = 64 / sizeof(void*);
    constexpr std::size_t kSlotsAhead = 3 * kSlotsInLine;
    constexpr std::size_t kNodesAhead = 4;
    constexpr std::size_t kTextsAhead = 2;
    if (row % kSlotsInLine == 0) {
        for (const Column& column : columns) {
            if (column.is_array && row + kSlotsAhead < NodeAccess::List(*column.node).size()) {
                __builtin_prefetch(&NodeAccess::List(*column.node)[row + kSlotsAhead]);
            }
        }
    }
    ForRow(columns, row + kNodesAhead,
           [](const CParaSet* node, int) { NodeAccess::Prefetch(node); });
    ForRow(columns, row + kTextsAhead, [](const CParaSet* node, int type) {
        if (type == cell_type::kString) {
            __builtin_prefetch(NodeAccess::Impl(*node).m_strValue.c_str());
        }
    });
}

std::vector<Column> DescribeColumns(CParaSet& node, AsnSchemaDef& schema) {
    std::vector<Column> columns;
    columns.reserve(NodeAccess::Index(node).size());
    schema.Reserve(NodeAccess::Index(node).size());
    for (const auto& [key, child] : NodeAccess::Index(node)) {
        if (key.starts_with('#')) {
            continue;
        }
        Column column{child, child == nullptr ? cell_type::kNotValued : child->getType(), false};
        if (column.type == cell_type::kArray) {
            column.type = (*child)[0].getType();
            column.is_array = true;
        }
        AsnSchemaItem& item = schema.Append();
        item.name = key;
        item.type = column.type;
        columns.push_back(column);
    }
    return columns;
}

}  // namespace

int ParaSet2Table(CParaSet* node, AsnTable* table) {
    if (table == nullptr) {
        return -3;
    }
    const CParaSet* row_count =
        node == nullptr ? nullptr : NodeAccess::Child(*node, reserved::kRowCount);
    if (row_count == nullptr) {
        return -1;
    }
    const int rows = row_count->asInt();
    if (rows == 0) {
        return -2;
    }
    const std::vector<Column> columns = DescribeColumns(*node, table->schema.Ensure());
    bool has_arrays = false;
    for (const Column& column : columns) {
        has_arrays = has_arrays || column.is_array;
    }
    if (!has_arrays && rows == 1) {
        AsnDataRow& row = table->rows.Append();
        row.Reserve(columns.size());
        for (const Column& column : columns) {
            FillCell(row.Append(), column.node, column.type);
        }
        return 0;
    }
    for (int r = 0; r < rows; ++r) {
        PrefetchRows(columns, static_cast<std::size_t>(r));
        AsnDataRow& row = table->rows.Append();
        row.Reserve(columns.size());
        for (const Column& column : columns) {
            FillCell(row.Append(), CellOf(column, r), column.type);
        }
    }
    return 0;
}

}  // namespace FrameUtil
