// One table node to one table record.
#include <gtest/gtest.h>

#include <string>

#include "paraset/tables.h"
#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnTable;
using FrameUtil::CParaSet;
using FrameUtil::ParaSet2Table;

TEST(TableEncoder, ReportsWhatIsMissing) {
    CParaSet node("n");
    node["a"] = 1;
    AsnTable table;
    EXPECT_EQ(ParaSet2Table(&node, nullptr), -3);
    EXPECT_EQ(ParaSet2Table(nullptr, nullptr), -3) << "the record is looked at first";
    EXPECT_EQ(ParaSet2Table(nullptr, &table), -1);
    EXPECT_EQ(ParaSet2Table(&node, &table), -1);
    node["##RowCount"];
    node.clear("##RowCount");
    EXPECT_EQ(ParaSet2Table(&node, &table), -1) << "an entry without a child";
    node["##RowCount"] = 0;
    EXPECT_EQ(ParaSet2Table(&node, &table), -2);
    node["##RowCount"] = std::string("none");
    EXPECT_EQ(ParaSet2Table(&node, &table), -2) << "a text that reads 0";
    EXPECT_EQ(TextOf(table), "") << "no schema, no rows";
    EXPECT_FALSE(table.schema);
    node["##RowCount"] = 1;
    EXPECT_EQ(ParaSet2Table(&node, &table), 0);
}

// The tree, as paths and values, and the record it becomes.
struct Case {
    const char* name;
    void (*fill)(CParaSet&);
    const char* record;
    const char* after = nullptr;  // the tree afterwards, where index access changed it
};

void Check(const Case& row) {
    SCOPED_TRACE(row.name);
    CParaSet node("n");
    row.fill(node);
    AsnTable table;
    EXPECT_EQ(ParaSet2Table(&node, &table), 0);
    EXPECT_EQ(TextOf(table), row.record);
    if (row.after != nullptr) {
        EXPECT_EQ(Shape(node), row.after);
    }
}

// One row and no array among the columns: the columns are the cells.
TEST(TableEncoder, WritesScalarsAsOneRow) {
    const Case rows[] = {
        {"integer and string",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["b"] = "x";
             n["a"] = 1;
         },
         "(a:2, b:4) [1, \"x\"]"},
        {"double",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["d"] = 2.5;
         },
         "(d:9) [2.5d]"},
        {"cells that no field fits",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["null"];
             n["resource"].SetType(CParaSet::PARA_RESID);
             n["struct"]["x"] = 1;
         },
         "(null:5, resource:48, struct:48) [-, -, -]"},
        {"names that begin with a hash are no columns",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["##ver"] = "1";
             n["#mine"] = 1;
             n["a#"] = 2;
             n[""] = 3;
         },
         "(:2, a#:2) [3, 2]"},
        {"no columns", [](CParaSet& n) { n["##RowCount"] = 1; }, "() []"},
        {"an entry without a child is not valued",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["a"];
             n["b"] = 1;
             n.clear("a");
         },
         "(a:5, b:2) [-, 1]"},
        {"a child is known by its key",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["a"] = CParaSet("other", 5);
         },
         "(a:2) [5]"},
        {"a row count that is text",
         [](CParaSet& n) {
             n["##RowCount"] = "1 row";
             n["a"] = 1;
         },
         "(a:2) [1]"},
    };
    for (const Case& row : rows) {
        Check(row);
    }
}

TEST(TableEncoder, WritesArraysRowByRow) {
    const Case rows[] = {
        {"three rows, a scalar repeats",
         [](CParaSet& n) {
             n["##RowCount"] = 3;
             for (int r = 0; r != 3; ++r) {
                 n["a"][r] = r;
                 n["b"][r] = std::string(1, static_cast<char>('x' + r));
             }
             n["c"] = 2.5;
         },
         "(a:2, b:4, c:9) [0, \"x\", 2.5d] [1, \"y\", 2.5d] [2, \"z\", 2.5d]"},
        {"one row of an array",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["a"][0] = 5;
             n["b"] = 6;
         },
         "(a:2, b:2) [5, 6]"},
        {"scalars alone, two rows",
         [](CParaSet& n) {
             n["##RowCount"] = 2;
             n["a"] = 5;
         },
         "(a:2) [5] [5]"},
        {"fewer rows than the arrays hold",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["a"][2] = 7;
             n["a"][0] = 5;
         },
         "(a:2) [5]"},
        {"more rows than the arrays hold",
         [](CParaSet& n) {
             n["##RowCount"] = 3;
             n["a"][0] = 5;
             n["b"][0] = "x";
             n["d"][0] = 2.5;
         },
         "(a:2, b:4, d:9) [5, \"x\", 2.5d] [-1, -, 0d] [-1, -, 0d]",
         "{##RowCount: 3, a: [5, null, null], b: [\"x\", null, null], d: [2.5d, null, null]}"},
        {"an empty array",
         [](CParaSet& n) {
             n["##RowCount"] = 2;
             n["a"].SetType(CParaSet::PARA_ARRAY);
         },
         "(a:5) [-] [-]", "{##RowCount: 2, a: [null, null]}"},
        {"null slots",
         [](CParaSet& n) {
             n["##RowCount"] = 3;
             n["a"][2] = 7;
         },
         "(a:5) [-] [-] [-]", "{##RowCount: 3, a: [null, null, 7]}"},
        {"no rows",
         [](CParaSet& n) {
             n["##RowCount"] = -1;
             n["a"][0] = 1;
         },
         "(a:2)"},
        {"no rows of scalars",
         [](CParaSet& n) {
             n["##RowCount"] = -5;
             n["a"] = 1;
         },
         "(a:2)"},
        {"an array of arrays",
         [](CParaSet& n) {
             n["##RowCount"] = 1;
             n["a"][0][0] = 1;
         },
         "(a:257) [-]"},
    };
    for (const Case& row : rows) {
        Check(row);
    }
}

// The column's type, from its element 0, decides how every cell of it is read.
TEST(TableEncoder, ReadsEveryCellAsTheColumnSays) {
    const Case rows[] = {
        {"integers",
         [](CParaSet& n) {
             n["##RowCount"] = 6;
             n["a"][0] = 1;
             n["a"][1] = 2.5;
             n["a"][2] = "3x";
             n["a"][3]["x"] = 1;
             n["a"][4][0] = 1;
             n["a"][5] = 6;
         },
         "(a:2) [1] [-1] [3] [-1] [-1] [6]"},
        {"doubles",
         [](CParaSet& n) {
             n["##RowCount"] = 4;
             n["a"][0] = 1.5;
             n["a"][1] = 2;
             n["a"][2] = "2.5";
             n["a"][3]["x"] = 1;
         },
         "(a:9) [1.5d] [2d] [0d] [0d]"},
        {"strings",
         [](CParaSet& n) {
             n["##RowCount"] = 5;
             n["a"][0] = "s";
             n["a"][1] = 2;
             n["a"][2] = 2.5;
             n["a"][3]["x"] = 1;
             n["a"][4];
         },
         "(a:4) [\"s\"] [\"2\"] [\"2.5\"] [-] [-]"},
        {"a structure as column gives its children in key order",
         [](CParaSet& n) {
             n["##RowCount"] = 2;
             n["a"]["y"] = 2;
             n["a"]["x"] = 1;
             n["b"][0] = 1;
         },
         "(a:48, b:2) [-, 1] [-, -1]"},
        {"no value as column becomes an array",
         [](CParaSet& n) {
             n["##RowCount"] = 2;
             n["a"];
         },
         "(a:5) [-] [-]"},
        {"zero octets end a string",
         [](CParaSet& n) {
             n["##RowCount"] = 2;
             n["a"][0] = std::string("ab\0cd", 5);
             n["a"][1] = std::string("\0cd", 3);
         },
         "(a:4) [\"ab\"] [\"\"]"},
    };
    for (const Case& row : rows) {
        Check(row);
    }
}

TEST(TableEncoder, AppendsToWhatTheRecordHolds) {
    CParaSet node("n");
    node["##RowCount"] = 1;
    node["a"] = 1;
    AsnTable table;
    table.name.Emplace("kept");
    AddColumn(table, "before", 4);
    AppendRow(table, {"x"});
    EXPECT_EQ(ParaSet2Table(&node, &table), 0);
    EXPECT_EQ(TextOf(table), "kept (before:4, a:2) [\"x\"] [1]");
}

}  // namespace
