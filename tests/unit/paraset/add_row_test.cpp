// Adding rows to a table.
#include <gtest/gtest.h>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

class AddRow : public testing::Test {
  protected:
    AddRow() {
        row["name"] = "eth0";
        row["id"] = 7;
    }
    CParaSet row{"row"};
    CParaSet table{"table"};
};

TEST_F(AddRow, MakesAColumnForEachChild) {
    CParaSet& counted = table.AddRow(0, row);
    EXPECT_EQ(&counted, table.find("##RowCount"));
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: [7], name: [\"eth0\"]}");
    EXPECT_EQ(table.GetRowCount(), 1);
    EXPECT_EQ(table.find("id[0]")->name(), "id") << "a cell takes the name of what it copies";
}

TEST_F(AddRow, BehindTheLastLeavesNullCells) {
    table.AddRow(0, row);
    EXPECT_EQ(table.AddRow(3, row).asInt(), 2);
    EXPECT_EQ(Shape(table), "{##RowCount: 2, id: [7, -, -, 7], name: [\"eth0\", -, -, \"eth0\"]}");
}

TEST_F(AddRow, IntoAnEmptyTableStillCountsOne) {
    table.AddRow(5, row);
    EXPECT_EQ(table.GetRowCount(), 1);
    EXPECT_EQ(table["id"].count(), 6);
}

TEST_F(AddRow, OverwritesCellsAndCountsAgain) {
    table.AddRow(0, row);
    row["name"].clear();
    row["name"]["deep"][1] = 1;
    row.remove("id");
    EXPECT_EQ(table.AddRow(0, row).asInt(), 2);
    EXPECT_EQ(Shape(table), "{##RowCount: 2, id: [7], name: [{deep: [1]}]}");
}

TEST_F(AddRow, OfNothingCountsARow) {
    CParaSet nothing("row");
    EXPECT_EQ(table.AddRow(17, nothing).asInt(), 1);
    EXPECT_EQ(table.AddRow(-1, nothing).asInt(), 2) << "no column asks for the row";
    EXPECT_EQ(Shape(table), "{##RowCount: 2}");
}

TEST_F(AddRow, DoesNotLookAtRowCount) {
    table["##RowCount"] = 40;
    EXPECT_EQ(table.AddRow(40, row).asInt(), 1) << "the counter began at 0";
    table["##RowCount"] = 40;
    EXPECT_EQ(table.AddRow(41, row).asInt(), 2);
    table.remove("##RowCount");
    EXPECT_EQ(table.AddRow(42, row).asInt(), 3);
}

TEST_F(AddRow, OverColumnsThatAreNoArrays) {
    table["name"] = "scalar";
    table["id"]["x"] = 1;
    EXPECT_EQ(table.AddRow(0, row).asInt(), 1);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: {x(id): 7}, name: \"eth0\"}")
        << "element 0 of a scalar is the scalar, of a structure its first child";
    EXPECT_EQ(CodeOf([&] { table.AddRow(1, row); }), -2);
}

TEST_F(AddRow, ReportsWhatTheTreeReports) {
    EXPECT_EQ(CodeOf([&] { table.AddRow(-1, row); }), -1);
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { list.AddRow(0, row); }), -3);
    CParaSet nothing("row");
    EXPECT_EQ(CodeOf([&] { list.AddRow(0, nothing); }), -3) << "there is no ##RowCount on an array";
    EXPECT_EQ(Shape(list), "[1]");
}

TEST_F(AddRow, OfAnEntryWithoutAChildLeavesTheCell) {
    row["gone"];
    row["new"];
    row.clear("gone");
    row.clear("new");
    table["gone"][0] = 1;
    table.AddRow(0, row);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, gone: [1], id: [7], name: [\"eth0\"], new: [null]}");
}

// Columns are reached by name access, so a key with a dot is a path there; in what the
// table already holds, each entry is a column.
TEST_F(AddRow, TakesAKeyWithADotForAPath) {
    CParaSet dotted("row");
    dotted.SetType(CParaSet::PARA_STRUCT);
    dotted.GetMapValue()["a.b"] = new CParaSet("a.b", 1);
    table.AddRow(0, dotted);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, a: {b: [1]}}");

    CParaSet held("table");
    held.SetType(CParaSet::PARA_STRUCT);
    held.GetMapValue()["a.b"] = new CParaSet("a.b");
    (*held.GetMapValue()["a.b"])[1] = 5;
    CParaSet read("read");
    held.GetRow(1, read);
    EXPECT_EQ(Shape(read), "{a: {b(root): 5}}");
    held.DelRow(1);
    EXPECT_EQ(held.GetMapValue()["a.b"]->count(), 1);
}

// The row set may be the table itself or part of it.
TEST_F(AddRow, OfTheTableItself) {
    table.AddRow(0, row);
    table.AddRow(1, table);
    EXPECT_EQ(Shape(table),
              "{##RowCount: 2, id: [7, [7, null]], name: [\"eth0\", [\"eth0\", null]]}");
}

}  // namespace
