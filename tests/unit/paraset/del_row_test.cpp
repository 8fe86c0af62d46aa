// Removing rows of a table.
#include <gtest/gtest.h>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

class DelRow : public testing::Test {
  protected:
    DelRow() {
        row["name"] = "eth0";
        row["id"] = 7;
    }
    CParaSet row{"row"};
    CParaSet table{"table"};
};

TEST_F(DelRow, MovesLaterRowsDown) {
    table.AddRow(0, row);
    row["name"] = "eth1";
    table.AddRow(1, row);
    CParaSet& counted = table.DelRow(0);
    EXPECT_EQ(&counted, table.find("##RowCount"));
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: [7], name: [\"eth1\"]}");
    EXPECT_EQ(CodeOf([&] { table.DelRow(5); }), -2);
    EXPECT_EQ(CodeOf([&] { table.DelRow(1); }), -2);
    EXPECT_EQ(CodeOf([&] { table.DelRow(-1); }), -1);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: [7], name: [\"eth1\"]}");
    EXPECT_EQ(table.DelRow(0).asInt(), 0);
    EXPECT_EQ(Shape(table), "{##RowCount: 0, id: [], name: []}");
}

TEST_F(DelRow, ReadsRowCountFirst) {
    table.AddRow(0, row);
    table.AddRow(1, row);
    table["##RowCount"] = 40;
    EXPECT_EQ(table.DelRow(0).asInt(), 39);
    table.AddRow(1, row);
    EXPECT_EQ(table.GetRowCount(), 40) << "the counter has been loaded with it";
    table.clear("##RowCount");
    EXPECT_EQ(table.DelRow(0).asInt(), 39) << "without it the counter decides";
    table["##RowCount"].clear();
    EXPECT_EQ(table.DelRow(0).asInt(), 38) << "and so with one that is not valued";
}

// Only the last column says whether a row has gone.
TEST_F(DelRow, CountsByTheLastColumn) {
    const struct {
        const char* name;
        void (*last)(CParaSet&);
        int count;
        const char* shape;
    } rows[] = {
        {"array", [](CParaSet& c) { c[1] = 1; }, 9, "[-]"},
        {"null cell", [](CParaSet& c) { c[2] = 1; }, 9, "[-, -, 1]"},
        {"scalar", [](CParaSet& c) { c = 1; }, 10, "1"},
        {"no value", [](CParaSet&) {}, 10, "null"},
        {"structure", [](CParaSet& c) { c["x"] = 1, c["y"] = 2; }, 9, "{x: 1}"},
    };
    for (const auto& row_of : rows) {
        SCOPED_TRACE(row_of.name);
        CParaSet t("t");
        t["##RowCount"] = 10;
        t["a"][1] = 1;
        row_of.last(t["z"]);
        EXPECT_EQ(t.DelRow(1).asInt(), row_of.count);
        EXPECT_EQ(Shape(t["a"]), "[-]");
        EXPECT_EQ(Shape(t["z"]), row_of.shape);
    }
}

TEST_F(DelRow, StopsAtTheColumnThatIsShorter) {
    table["##RowCount"] = 2;
    table["a"][1] = 1;
    table["b"][0] = 2;
    table["c"][1] = 3;
    EXPECT_EQ(CodeOf([&] { table.DelRow(1); }), -2);
    EXPECT_EQ(Shape(table), "{##RowCount: 2, a: [-], b: [2], c: [-, 3]}")
        << "the columns before it have changed";
}

TEST_F(DelRow, OfATableWithoutColumnsCountsNothing) {
    EXPECT_EQ(table.DelRow(0).asInt(), 0);
    EXPECT_EQ(Shape(table), "{##RowCount: 0}");
    table["##RowCount"] = 5;
    EXPECT_EQ(table.DelRow(-1).asInt(), 5);
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { list.DelRow(0); }), -3);
}

TEST_F(DelRow, SkipsAnEntryWithoutAChild) {
    table.AddRow(0, row);
    table["z"];
    table.clear("z");
    EXPECT_EQ(table.DelRow(0).asInt(), 0);
    EXPECT_EQ(Shape(table), "{##RowCount: 0, id: [], name: [], z: -}");
}

}  // namespace
