// Tables as structures of columns: which children are columns, and the two counters.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

class Rows : public testing::Test {
  protected:
    CParaSet table{"table"};
};

// Three names are no columns; all others are, the reserved ones of headers included.
TEST_F(Rows, ThreeReservedNamesAreNoColumns) {
    const struct {
        const char* name;
        bool column;
    } rows[] = {
        {"##RowCount", false}, {"##TableCount", false},
        {"##retCode", false},  {"##retCodeEx", true},
        {"##ver", true},       {"##UserID", true},
        {"##ResID", true},     {"##rowCount", true},
        {"#", true},           {"", true},
        {"##RowCount2", true},
    };
    for (const auto& reserved : rows) {
        SCOPED_TRACE(reserved.name);
        CParaSet one("row");
        one[reserved.name] = 5;
        CParaSet t("t");
        EXPECT_EQ(t.AddRow(0, one).asInt(), 1);
        const auto column = t.GetMapValue().find(reserved.name);
        const bool made =
            column != t.GetMapValue().end() && column->second->type() == CParaSet::PARA_ARRAY;
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
