// Reading rows of a table.
#include <gtest/gtest.h>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

class GetRow : public testing::Test {
  protected:
    GetRow() {
        row["name"] = "eth0";
        row["id"] = 7;
    }
    CParaSet row{"row"};
    CParaSet table{"table"};
};

TEST_F(GetRow, CopiesTheCells) {
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

TEST_F(GetRow, BehindTheLastMakesTheCells) {
    table.AddRow(0, row);
    table.AddRow(1, row);
    CParaSet read("read");
    table.GetRow(7, read);
    EXPECT_EQ(Shape(read), "{id(root): null, name(root): null}");
    EXPECT_EQ(Shape(table),
              "{##RowCount: 2, id: [7, 7, -, -, -, -, -, null], "
              "name: [\"eth0\", \"eth0\", -, -, -, -, -, null]}");
}

TEST_F(GetRow, KeepsWhatTheRowSetHoldsBesides) {
    table.AddRow(0, row);
    CParaSet read("read");
    read["other"] = 1;
    read["id"] = 2.5;
    read["##RowCount"] = 9;
    table.GetRow(0, read);
    EXPECT_EQ(Shape(read), "{##RowCount: 9, id: 7, name: \"eth0\", other: 1}");
}

TEST_F(GetRow, TakesScalarColumnsWhole) {
    table["scalar"] = 5;
    table["scalar"].SetName("renamed");
    table["list"][1] = 6;
    CParaSet read("read");
    table.GetRow(1, read);
    EXPECT_EQ(Shape(read), "{list(root): 6, scalar(renamed): 5}");
}

TEST_F(GetRow, ReportsWhatTheTreeReports) {
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

TEST_F(GetRow, IntoTheTableItself) {
    table.AddRow(0, row);
    table.GetRow(0, table);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, id: 7, name: \"eth0\"}");
}

}  // namespace
