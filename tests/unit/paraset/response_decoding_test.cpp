// A common response into a tree.
#include <gtest/gtest.h>

#include <string>

#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnCommonResponse;
using FrameUtil::AsnTable;
using FrameUtil::CParaSet;

AsnTable& AddTable(AsnCommonResponse& response, const char* name, int value) {
    AsnTable& table = response.tables.Ensure().Append();
    if (name != nullptr) {
        table.name.Emplace(name);
    }
    AddColumn(table, "a", 2);
    AppendRow(table, {value});
    return table;
}

TEST(TreeFromResponse, TakesTheHeaders) {
    AsnCommonResponse response;
    response.retCode = (std::int64_t{1} << 32) - 1;
    CParaSet bare("root");
    EXPECT_EQ(bare.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(bare), "{##TableCount: 0, ##retCode: -1}");

    response.retCodeEx.Emplace(6);
    response.ver.Emplace(std::string("1.2\0.3", 6));
    CParaSet full("root");
    EXPECT_EQ(full.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(full), "{##TableCount: 0, ##retCode: -1, ##retCodeEx: 6, ##ver: \"1.2\"}");
}

TEST(TreeFromResponse, TakesTheTables) {
    const struct {
        const char* name;
        void (*fill)(AsnCommonResponse&);
        const char* tree;
    } rows[] = {
        {"an empty list", [](AsnCommonResponse& r) { r.tables.Emplace(); },
         "{##TableCount: 0, ##retCode: 0}"},
        {"one without a name: the root", [](AsnCommonResponse& r) { AddTable(r, nullptr, 1); },
         "{##RowCount: 1, ##TableCount: 1, ##retCode: 0, a: 1}"},
        {"one with a name: the root all the same",
         [](AsnCommonResponse& r) { AddTable(r, "ports", 1); },
         "{##RowCount: 1, ##TableCount: 1, ##retCode: 0, a: 1}"},
        {"two without names",
         [](AsnCommonResponse& r) {
             AddTable(r, nullptr, 1);
             AddTable(r, "", 2);
         },
         "{##TableCount: 2, ##retCode: 0, tab0: {##RowCount: 1, a: 1}, "
         "tab1: {##RowCount: 1, a: 2}}"},
        {"an unnamed one and one named like it",
         [](AsnCommonResponse& r) {
             AddTable(r, "tab1", 1);
             AddTable(r, nullptr, 2);
         },
         "{##TableCount: 2, ##retCode: 0, tab1: {##RowCount: 1, a: 2}}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnCommonResponse response;
        row.fill(response);
        CParaSet root("root");
        EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
        EXPECT_EQ(Shape(root), row.tree);
    }
}

TEST(TreeFromResponse, NumbersUnnamedTablesInDecimal) {
    AsnCommonResponse response;
    for (int i = 0; i != 12; ++i) {
        AddTable(response, nullptr, i);
    }
    CParaSet root("root");
    root.CommonRspAsn2Para(response);
    EXPECT_EQ(root["##TableCount"].asInt(), 12);
    EXPECT_EQ(root["tab11"]["a"].asInt(), 11);
    EXPECT_EQ(root["tab9"]["a"].asInt(), 9);
}

// A record without a schema or without rows changes nothing but the count of tables.
TEST(TreeFromResponse, SkipsTablesThatAreNone) {
    AsnCommonResponse response;
    response.tables.Ensure().Append();
    CParaSet root("root");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root), "{##TableCount: 1, ##retCode: 0}");
    AddColumn(response.tables->Append(), "a", 2);
    response.tables->At(1)->name.Emplace("t");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root), "{##TableCount: 2, ##retCode: 0, t: null, tab0: null}");
}

TEST(TreeFromResponse, MergesIntoWhatIsThere) {
    CParaSet root("root");
    root["##ver"] = "old";
    root["kept"] = 1;
    root["a"] = 2;
    AsnCommonResponse response;
    response.retCode = 5;
    AddTable(response, nullptr, 7);
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root),
              "{##RowCount: 1, ##TableCount: 1, ##retCode: 5, ##ver: \"old\", a: 7, kept: 1}");

    // A version over an integer is taken (with a trace); a double over one is refused.
    root["##ver"].clear();
    root["##ver"] = 1;
    response.ver.Emplace("new");
    EXPECT_EQ(root.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(Shape(root["##ver"]), "\"new\"");
    AsnTable& table = *response.tables->begin();
    table.schema->begin()->type = 9;
    table.rows.begin()->begin()->dVal.Emplace(1.5);
    EXPECT_EQ(CodeOf([&] { root.CommonRspAsn2Para(response); }), -3);
    EXPECT_EQ(Shape(root["a"]), "7");
}

TEST(TreeFromResponse, IntoAnArrayIsRefused) {
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { list.CommonRspAsn2Para(AsnCommonResponse()); }), -3);
    EXPECT_EQ(Shape(list), "[1]");
}

TEST(TreeFromResponse, IsTheWayBack) {
    CParaSet root("root");
    root["##retCode"] = 5;
    root["##retCodeEx"] = -6;
    root["##ver"] = "1.0";
    root["##TableCount"] = 1;
    root["##RowCount"] = 2;
    for (int r = 0; r != 2; ++r) {
        root["i"][r] = r;
        root["d"][r] = r + 0.5;
        root["s"][r] = "text";
    }
    AsnCommonResponse response;
    root.Para2CommonRspAsn(response);
    CParaSet back("root");
    back.CommonRspAsn2Para(response);
    EXPECT_EQ(Shape(back), Shape(root));
}

}  // namespace
