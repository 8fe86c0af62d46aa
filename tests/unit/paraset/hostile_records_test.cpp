// Records as a peer may send them: whatever they hold, a tree comes out that can be used
// and destroyed, and nothing is believed that is not there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

#include "paraset/tables.h"
#include "support/captured_log.h"
#include "support/small_stack.h"
#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnCommonResponse;
using FrameUtil::AsnTable;
using FrameUtil::CParaSet;

TEST(HostileRecords, NamesOfOneLevelStayOnThatLevel) {
    // A name with dots is one name: a peer does not choose how deep the tree becomes.
    const std::string dotted = "a.b[1].c";
    AsnCommonResponse response;
    for (int i = 0; i != 2; ++i) {
        AsnTable& table = response.tables.Ensure().Append();
        table.name.Emplace(i == 0 ? dotted : ".");
        AddColumn(table, dotted.c_str(), 2);
        AppendRow(table, {i});
    }
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root),
              "{##TableCount: 2, ##retCode: 0, .: {##RowCount: 1, a.b[1].c: 1}, "
              "a.b[1].c: {##RowCount: 1, a.b[1].c: 0}}");
}

TEST(HostileRecords, AMillionDotsInAName) {
    AsnCommonRequest request;
    AsnTable& table = request.tables.Ensure().Append();
    table.name.Emplace(std::string(1000000, '.'));
    AddColumn(table, std::string(1000000, '.').c_str(), 2);
    AppendRow(table, {1});
    OnSmallStack([&] {
        CParaSet root("root");
        EXPECT_EQ(root.CommonReqAsn2Para(request), 0);
        CParaSet copy(root);
        EXPECT_EQ(copy["##TableCount"].asInt(), 1);
    });
}

TEST(HostileRecords, TablesNamedAsHeaders) {
    for (const char* name : {"##TableCount", "##UserID", "##ResID", "##RowCount"}) {
        SCOPED_TRACE(name);
        AsnCommonRequest request;
        AsnTable& table = request.tables.Ensure().Append();
        table.name.Emplace(name);
        AddColumn(table, "a", 2);
        AppendRow(table, {1});
        request.resID.Emplace().resDN = "dn";
        CParaSet root("root");
        EXPECT_EQ(root.CommonReqAsn2Para(request), 0);
        EXPECT_EQ(Shape(root[name]), "{##RowCount: 1, a: 1}");
        AsnCommonRequest again;
        EXPECT_EQ(root.Para2CommonReqAsn(again), 0);
    }
}

TEST(HostileRecords, ColumnsNamedAsHeaders) {
    AsnCommonResponse response;
    response.retCode = 5;
    response.ver.Emplace("1.0");
    AsnTable& table = response.tables.Ensure().Append();
    for (const char* name : {"##TableCount", "##retCode", "##ver", "#", "##ResID"}) {
        AddColumn(table, name, 2);
    }
    AppendRow(table, {70, 71, 72, 73, 74});
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root),
              "{#: 73, ##ResID: 74, ##RowCount: 1, ##TableCount: 70, ##retCode: 71, ##ver: 72}");
}

// `rows` rows without values and one with a value for each of `columns` columns.
void FillSparsely(AsnTable& table, int columns, int rows) {
    for (int i = 0; i != columns; ++i) {
        AddColumn(table, std::to_string(i).c_str(), 2);
    }
    for (int r = 0; r != rows; ++r) {
        table.rows.Append();
    }
    auto& last = table.rows.Append();
    for (int i = 0; i != columns; ++i) {
        last.Append().iVal.Emplace(i);
    }
}

// A thousand columns of a million slots would take eight gigaoctets.
TEST(HostileRecords, ATableOfGapsIsLeftOut) {
    AsnCommonResponse response;
    FillSparsely(response.tables.Ensure().Append(), 1000, 1000000);
    response.tables->begin()->name.Emplace("gaps");
    AsnTable& good = response.tables->Append();
    AddColumn(good, "a", 2);
    AppendRow(good, {1});
    CapturedLog log;
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root),
              "{##TableCount: 2, ##retCode: 0, gaps: null, tab1: {##RowCount: 1, a: 1}}");
    EXPECT_THAT(log.Texts(),
                testing::ElementsAre("[Frame][Table2ParaSet] table \"gaps\" left out: its 1000001 "
                                     "rows lack most of 1000 columns"));
}

TEST(HostileRecords, GapsUpToTheLimitAreDecoded) {
    // 64 columns and their 64 values: 65536 gaps are free, 16 more for each value.
    for (const auto& [rows, code] : {std::pair(1024 + 16, 0), std::pair(1024 + 17, -3)}) {
        SCOPED_TRACE(rows);
        AsnTable table;
        FillSparsely(table, 64, rows);
        CParaSet node("n");
        EXPECT_EQ(FrameUtil::Table2ParaSet(&table, node), code);
        EXPECT_EQ(node.GetRowCount(), code == 0 ? rows + 1 : -1);
        EXPECT_EQ(node.count(), code == 0 ? 65 : 0);
    }
}

TEST(HostileRecords, ManyRowsAndColumnsWithFewValues) {
    AsnCommonResponse response;
    AsnTable& table = response.tables.Ensure().Append();
    for (int i = 0; i != 100; ++i) {
        AddColumn(table, "same", INT_MAX - i);
    }
    for (int r = 0; r != 100; ++r) {
        table.rows.Append();
    }
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root), "{##RowCount: 100, ##TableCount: 1, ##retCode: 0}");
}

TEST(HostileRecords, CellsWithEveryFieldAtOnce) {
    AsnCommonResponse response;
    AsnTable& table = response.tables.Ensure().Append();
    AddColumn(table, "i", 2);
    AddColumn(table, "s", 4);
    AddColumn(table, "d", 9);
    auto& row = table.rows.Append();
    for (int i = 0; i != 3; ++i) {
        auto& cell = row.Append();
        cell.bVal.Emplace(true);
        cell.iVal.Emplace(7);
        cell.dVal.Emplace(2.5);
        cell.sVal.Emplace("x");
    }
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root),
              "{##RowCount: 1, ##TableCount: 1, ##retCode: 0, d: 2.5d, i: 7, s: \"x\"}");
}

}  // namespace
