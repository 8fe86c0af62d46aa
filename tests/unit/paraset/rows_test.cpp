// Tables as structures of columns: adding, reading and removing rows.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

class Rows : public testing::Test {
  protected:
    Rows() {
        row["name"] = "eth0";
        row["id"] = 7;
    }
    CParaSet row{"row"};
    CParaSet table{"table"};
};

TEST_F(Rows, AddRowMakesAColumnForEachChild) {
    CParaSet& counted = table.AddRow(0, row);
    EXPECT_EQ(&counted, table.find("##RowCount"));
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: [7], name: [\"eth0\"]}");
    EXPECT_EQ(table.GetRowCount(), 1);
    EXPECT_EQ(table.find("id[0]")->name(), "id") << "a cell takes the name of what it copies";
}

TEST_F(Rows, AddRowBehindTheLastLeavesNullCells) {
    table.AddRow(0, row);
    EXPECT_EQ(table.AddRow(3, row).asInt(), 2);
    EXPECT_EQ(Shape(table),
              "{##RowCount: 2, id: [7, -, -, 7], name: [\"eth0\", -, -, \"eth0\"]}");
}

TEST_F(Rows, AddRowIntoAnEmptyTableStillCountsOne) {
    table.AddRow(5, row);
    EXPECT_EQ(table.GetRowCount(), 1);
    EXPECT_EQ(table["id"].count(), 6);
}

TEST_F(Rows, AddRowOverwritesCellsAndCountsAgain) {
    table.AddRow(0, row);
    row["name"].clear();
    row["name"]["deep"][1] = 1;
    row.remove("id");
    EXPECT_EQ(table.AddRow(0, row).asInt(), 2);
    EXPECT_EQ(Shape(table), "{##RowCount: 2, id: [7], name: [{deep: [1]}]}");
}

// Three names are no columns; all others are, the reserved ones of headers included.
TEST_F(Rows, ThreeReservedNamesAreNoColumns) {
    const struct {
        const char* name;
        bool column;
    } rows[] = {
        {"##RowCount", false}, {"##TableCount", false}, {"##retCode", false}, {"##retCodeEx", true},
        {"##ver", true},       {"##UserID", true},      {"##ResID", true},    {"##rowCount", true},
        {"#", true},           {"", true},              {"##RowCount2", true},
    };
    for (const auto& reserved : rows) {
        SCOPED_TRACE(reserved.name);
        CParaSet one("row");
        one[reserved.name] = 5;
        CParaSet t("t");
        EXPECT_EQ(t.AddRow(0, one).asInt(), 1);
        const auto column = t.GetMapValue().find(reserved.name);
        const bool made = column != t.GetMapValue().end() &&
                          column->second->type() == CParaSet::PARA_ARRAY;
        EXPECT_EQ(made, reserved.column);

        CParaSet source("t");
        source[reserved.name][1] = 6;
        CParaSet read("read");
        source.GetRow(1, read);
        EXPECT_EQ(read.GetMapValue().count(reserved.name) == 1, reserved.column);

        source.DelRow(1);
        EXPECT_EQ(source[reserved.name].GetVctValue().size(), reserved.column ? 1U : 2U);
    }
}

TEST_F(Rows, AddRowOfNothingCountsARow) {
    CParaSet nothing("row");
    EXPECT_EQ(table.AddRow(17, nothing).asInt(), 1);
    EXPECT_EQ(table.AddRow(-1, nothing).asInt(), 2) << "no column asks for the row";
    EXPECT_EQ(Shape(table), "{##RowCount: 2}");
}

TEST_F(Rows, AddRowDoesNotLookAtRowCount) {
    table["##RowCount"] = 40;
    EXPECT_EQ(table.AddRow(40, row).asInt(), 1) << "the counter began at 0";
    table["##RowCount"] = 40;
    EXPECT_EQ(table.AddRow(41, row).asInt(), 2);
    table.remove("##RowCount");
    EXPECT_EQ(table.AddRow(42, row).asInt(), 3);
}

TEST_F(Rows, AddRowOverColumnsThatAreNoArrays) {
    table["name"] = "scalar";
    table["id"]["x"] = 1;
    EXPECT_EQ(table.AddRow(0, row).asInt(), 1);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: {x(id): 7}, name: \"eth0\"}")
        << "element 0 of a scalar is the scalar, of a structure its first child";
    EXPECT_EQ(CodeOf([&] { table.AddRow(1, row); }), -2);
}

TEST_F(Rows, AddRowReportsWhatTheTreeReports) {
    EXPECT_EQ(CodeOf([&] { table.AddRow(-1, row); }), -1);
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { list.AddRow(0, row); }), -3);
    CParaSet nothing("row");
    EXPECT_EQ(CodeOf([&] { list.AddRow(0, nothing); }), -3) << "there is no ##RowCount on an array";
    EXPECT_EQ(Shape(list), "[1]");
}

TEST_F(Rows, AddRowTakesAnEntryWithoutAChildForAnEmptyCell) {
    row["gone"];
    row.clear("gone");
    table["gone"][0] = 1;
    table.AddRow(0, row);
    EXPECT_EQ(table.find("id[0]")->asInt(), 7);
    EXPECT_EQ(table.GetRowCount(), 1);
}

// The row set may be the table itself or part of it.
TEST_F(Rows, AddRowOfTheTableItself) {
    table.AddRow(0, row);
    table.AddRow(1, table);
    EXPECT_EQ(Shape(table),
              "{##RowCount: 2, id: [7, [7, null]], name: [\"eth0\", [\"eth0\", null]]}");
}

TEST_F(Rows, GetRowCopiesTheCells) {
    table.AddRow(0, row);
    row["name"] = "eth1";
    table.AddRow(1, row);
    CParaSet read("read");
    table.GetRow(1, read);
    EXPECT_EQ(Shape(read), "{id: 7, name: \"eth1\"}");
    table.GetRow(0, read);
    EXPECT_EQ(Shape(read), "{id: 7, name: \"eth0\"}");
    EXPECT_EQ(Shape(table), "{##RowCount: 2, id: [7, 7], name: [\"eth0\", \"eth1\"]}");
}

TEST_F(Rows, GetRowBehindTheLastMakesTheCells) {
    table.AddRow(0, row);
    table.AddRow(1, row);
    CParaSet read("read");
    table.GetRow(7, read);
    EXPECT_EQ(Shape(read), "{id(root): null, name(root): null}");
    EXPECT_EQ(Shape(table),
              "{##RowCount: 2, id: [7, 7, -, -, -, -, -, null], "
              "name: [\"eth0\", \"eth0\", -, -, -, -, -, null]}");
}

TEST_F(Rows, GetRowKeepsWhatTheRowSetHoldsBesides) {
    table.AddRow(0, row);
    CParaSet read("read");
    read["other"] = 1;
    read["id"] = 2.5;
    read["##RowCount"] = 9;
    table.GetRow(0, read);
    EXPECT_EQ(Shape(read), "{##RowCount: 9, id: 7, name: \"eth0\", other: 1}");
}

TEST_F(Rows, GetRowTakesScalarColumnsWhole) {
    table["scalar"] = 5;
    table["scalar"].SetName("renamed");
    table["list"][1] = 6;
    CParaSet read("read");
    table.GetRow(1, read);
    EXPECT_EQ(Shape(read), "{list(root): 6, scalar(renamed): 5}");
}

TEST_F(Rows, GetRowReportsWhatTheTreeReports) {
    CParaSet read("read");
    table.AddRow(0, row);
    EXPECT_EQ(CodeOf([&] { table.GetRow(-1, read); }), -1);
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { table.GetRow(0, list); }), -3);
    table["id"].clear();
    table["id"]["x"] = 1;
    EXPECT_EQ(CodeOf([&] { table.GetRow(1, read); }), -2);
    CParaSet empty("empty");
    CParaSet untouched("read");
    empty.GetRow(-1, untouched);
    EXPECT_TRUE(untouched.isNull()) << "no column asks for the row";
}

TEST_F(Rows, GetRowIntoTheTableItself) {
    table.AddRow(0, row);
    table.GetRow(0, table);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: 7, name: \"eth0\"}");
}

TEST_F(Rows, DelRowMovesLaterRowsDown) {
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

TEST_F(Rows, DelRowReadsRowCountFirst) {
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
TEST_F(Rows, DelRowCountsByTheLastColumn) {
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

TEST_F(Rows, DelRowStopsAtTheColumnThatIsShorter) {
    table["##RowCount"] = 2;
    table["a"][1] = 1;
    table["b"][0] = 2;
    table["c"][1] = 3;
    EXPECT_EQ(CodeOf([&] { table.DelRow(1); }), -2);
    EXPECT_EQ(Shape(table), "{##RowCount: 2, a: [-], b: [2], c: [-, 3]}")
        << "the columns before it have changed";
}

TEST_F(Rows, DelRowOfATableWithoutColumnsCountsNothing) {
    EXPECT_EQ(table.DelRow(0).asInt(), 0);
    EXPECT_EQ(Shape(table), "{##RowCount: 0}");
    table["##RowCount"] = 5;
    EXPECT_EQ(table.DelRow(-1).asInt(), 5);
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { list.DelRow(0); }), -3);
}

TEST_F(Rows, DelRowSkipsAnEntryWithoutAChild) {
    table.AddRow(0, row);
    table["z"];
    table.clear("z");
    EXPECT_EQ(table.DelRow(0).asInt(), 0);
    EXPECT_EQ(Shape(table), "{##RowCount: 0, id: [], name: [], z: -}");
}

TEST_F(Rows, GetRowCountIsWhatTheChildSays) {
    EXPECT_EQ(table.GetRowCount(), -1) << "there is none";
    table["##RowCount"];
    EXPECT_EQ(table.GetRowCount(), -1) << "it is not valued";
    table["##RowCount"] = 5;
    EXPECT_EQ(table.GetRowCount(), 5);
    table["##RowCount"] = -7;
    EXPECT_EQ(table.GetRowCount(), -7);
    table["##RowCount"] = std::string("12 rows");
    EXPECT_EQ(table.GetRowCount(), 12);
    table["##RowCount"].clear();
    table["##RowCount"] = 3.0;
    EXPECT_EQ(table.GetRowCount(), -1) << "a double is no integer";
    table.clear("##RowCount");
    EXPECT_EQ(table.GetRowCount(), -1);
}

TEST_F(Rows, TableCountIsACounterOfItsOwn) {
    table["##TableCount"] = 9;
    table.SetTableCount(3);
    EXPECT_EQ(table.GetTableCount(), 3);
    EXPECT_EQ(Shape(table), "{##TableCount: 9}");
    EXPECT_EQ(table.GetRowCount(), -1);
    table.SetTableCount(INT_MIN);
    EXPECT_EQ(table.GetTableCount(), INT_MIN);
    table["##TableCount"] = 1;
    EXPECT_EQ(table.GetTableCount(), INT_MIN);
    CParaSet other("other");
    EXPECT_EQ(other.GetTableCount(), 0);
}

}  // namespace
