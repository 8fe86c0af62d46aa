// One table record into one node.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "paraset/tables.h"
#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnTable;
using FrameUtil::CParaSet;
using FrameUtil::Table2ParaSet;

TEST(TableDecoder, ReportsWhatIsMissing) {
    CParaSet node("n");
    node["kept"] = 1;
    AsnTable table;
    EXPECT_EQ(Table2ParaSet(nullptr, node), -1);
    EXPECT_EQ(Table2ParaSet(&table, node), -1);
    AppendRow(table, {1});
    EXPECT_EQ(Table2ParaSet(&table, node), -1) << "rows without a schema";
    table.schema.Emplace();
    EXPECT_EQ(Table2ParaSet(&table, node), -2) << "no columns";
    table.rows.Clear();
    EXPECT_EQ(Table2ParaSet(&table, node), -2) << "neither columns nor rows";
    AddColumn(table, "a", 2);
    table.schema->begin()->desc.Emplace("description");
    EXPECT_EQ(Table2ParaSet(&table, node), -2) << "no rows";
    EXPECT_EQ(Shape(node), "{kept: 1}");
    AppendRow(table, {1});
    EXPECT_EQ(Table2ParaSet(&table, node), 0);
}

struct Case {
    const char* name;
    void (*fill)(AsnTable&);
    const char* tree;
};

void Check(const Case& row) {
    SCOPED_TRACE(row.name);
    AsnTable table;
    row.fill(table);
    CParaSet node("n");
    EXPECT_EQ(Table2ParaSet(&table, node), 0);
    EXPECT_EQ(Shape(node), row.tree);
}

TEST(TableDecoder, ReadsOneRowAsScalars) {
    const Case rows[] = {
        {"each type",
         [](AsnTable& t) {
             AddColumn(t, "i", 2);
             AddColumn(t, "s", 4);
             AddColumn(t, "d", 9);
             AppendRow(t, {7, "x", 2.5});
         },
         "{##RowCount: 1, d: 2.5d, i: 7, s: \"x\"}"},
        {"empty string",
         [](AsnTable& t) {
             AddColumn(t, "s", 4);
             AppendRow(t, {""});
         },
         "{##RowCount: 1, s: \"\"}"},
        {"zero octets are kept",
         [](AsnTable& t) {
             AddColumn(t, "s", 4);
             AppendRow(t, {std::string("a\0b", 3)});
         },
         "{##RowCount: 1, s: \"a\\0b\"}"},
        {"low 32 bits",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "b", 2);
             AppendRow(t, {(std::int64_t{1} << 32) + 5, std::int64_t{UINT_MAX}});
         },
         "{##RowCount: 1, a: 5, b: -1}"},
        {"every other type code reads an integer",
         [](AsnTable& t) {
             for (const auto& [name, type] : {std::pair("a", 0),
                                              {"b", 1},
                                              {"c", 5},
                                              {"d", 48},
                                              {"e", 257},
                                              {"f", -1},
                                              {"g", INT_MAX}}) {
                 AddColumn(t, name, type);
             }
             AppendRow(t, {1, 2, 3, 4, 5, 6, 7});
         },
         "{##RowCount: 1, a: 1, b: 2, c: 3, d: 4, e: 5, f: 6, g: 7}"},
        {"values of another kind than the column's",
         [](AsnTable& t) {
             AddColumn(t, "i", 2);
             AddColumn(t, "s", 4);
             AddColumn(t, "d", 9);
             AddColumn(t, "n", 5);
             AppendRow(t, {"x", 2.5, 7, true});
         },
         "{##RowCount: 1}"},
        {"absent values",
         [](AsnTable& t) {
             AddColumn(t, "i", 2);
             AddColumn(t, "s", 4);
             AddColumn(t, "d", 9);
             AppendRow(t, {{}, {}, {}});
         },
         "{##RowCount: 1}"},
        {"a row shorter than the schema",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "b", 2);
             AppendRow(t, {1});
         },
         "{##RowCount: 1, a: 1}"},
        {"a row longer than the schema",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AppendRow(t, {1, 2, 3});
         },
         "{##RowCount: 1, a: 1}"},
        {"a row without cells",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AppendRow(t, {});
         },
         "{##RowCount: 1}"},
        {"the same column twice",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "a", 2);
             AppendRow(t, {1, 2});
         },
         "{##RowCount: 1, a: 2}"},
        {"a column without a name",
         [](AsnTable& t) {
             AddColumn(t, "", 2);
             AppendRow(t, {1});
         },
         "{: 1, ##RowCount: 1}"},
        {"reserved names are columns like others",
         [](AsnTable& t) {
             AddColumn(t, "#a", 2);
             AddColumn(t, "##ver", 4);
             AddColumn(t, "##RowCount", 2);
             AppendRow(t, {1, "v", 1000000});
         },
         "{##RowCount: 1000000, ##ver: \"v\", #a: 1}"},
    };
    for (const Case& row : rows) {
        Check(row);
    }
}

TEST(TableDecoder, ReadsSeveralRowsAsArrays) {
    const Case rows[] = {
        {"each type",
         [](AsnTable& t) {
             AddColumn(t, "i", 2);
             AddColumn(t, "s", 4);
             AddColumn(t, "d", 9);
             AppendRow(t, {7, "x", 2.5});
             AppendRow(t, {8, "y", 3.5});
         },
         "{##RowCount: 2, d: [2.5d, 3.5d], i: [7, 8], s: [\"x\", \"y\"]}"},
        {"zero octets are kept",
         [](AsnTable& t) {
             AddColumn(t, "s", 4);
             AppendRow(t, {std::string("a\0b", 3)});
             AppendRow(t, {std::string(1, '\0')});
         },
         "{##RowCount: 2, s: [\"a\\0b\", \"\\0\"]}"},
        {"absent values leave null slots, or none at the end",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "b", 2);
             AddColumn(t, "c", 2);
             AppendRow(t, {{}, 1, {}});
             AppendRow(t, {2, {}, {}});
             AppendRow(t, {3, {}, {}});
         },
         "{##RowCount: 3, a: [-, 2, 3], b: [1]}"},
        {"rows shorter and longer than the schema",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "b", 2);
             AppendRow(t, {1});
             AppendRow(t, {});
             AppendRow(t, {5, 6, 7});
         },
         "{##RowCount: 3, a: [1, -, 5], b: [-, -, 6]}"},
        {"the same column twice",
         [](AsnTable& t) {
             AddColumn(t, "a", 2);
             AddColumn(t, "a", 2);
             AppendRow(t, {1, 2});
             AppendRow(t, {3, 4});
         },
         "{##RowCount: 2, a: [2, 4]}"},
        {"a column named as the row count overwrites it",
         [](AsnTable& t) {
             AddColumn(t, "##RowCount", 2);
             AppendRow(t, {70});
             AppendRow(t, {80});
         },
         "{##RowCount: 80}"},
    };
    for (const Case& row : rows) {
        Check(row);
    }
}

}  // namespace
