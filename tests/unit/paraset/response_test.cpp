// A tree to a common response.
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

std::string HeadersOf(const AsnCommonResponse& response) {
    std::string text = std::to_string(std::int64_t{response.retCode});
    text += response.retCodeEx ? " " + std::to_string(std::int64_t{*response.retCodeEx}) : " -";
    return text + " " + (response.ver ? Quoted(response.ver->str()) : "-");
}

TEST(ResponseFromTree, CarriesTheHeadersThatAreThere) {
    const struct {
        const char* name;
        void (*fill)(CParaSet&);
        const char* fresh;   // in a new response
        const char* filled;  // in one that held 1, 2 and "v"
    } rows[] = {
        {"none", [](CParaSet&) {}, "0 - -", "1 2 \"v\""},
        {"all",
         [](CParaSet& r) {
             r["##retCode"] = 5;
             r["##retCodeEx"] = 6;
             r["##ver"] = "7";
         },
         "5 6 \"7\"", "5 6 \"7\""},
        {"a code", [](CParaSet& r) { r["##retCode"] = -5; }, "-5 - -", "-5 2 \"v\""},
        {"codes that are not valued", [](CParaSet& r) { r["##retCode"], r["##retCodeEx"]; },
         "-1 -1 -", "-1 -1 \"v\""},
        {"codes that are text", [](CParaSet& r) { r["##retCode"] = "5x", r["##retCodeEx"] = "y"; },
         "5 0 -", "5 0 \"v\""},
        {"entries without a child",
         [](CParaSet& r) {
             for (const char* name : {"##retCode", "##retCodeEx", "##ver"}) {
                 r[name] = 1;
                 r.clear(name);
             }
         },
         "0 - -", "1 2 \"v\""},
        {"a version that is a number", [](CParaSet& r) { r["##ver"] = 2.5; }, "0 - \"2.5\"",
         "1 2 \"2.5\""},
        {"a version cut at its zero octet",
         [](CParaSet& r) { r["##ver"] = std::string("1.2\0.3", 6); }, "0 - \"1.2\"", "1 2 \"1.2\""},
        {"an empty version", [](CParaSet& r) { r["##ver"] = ""; }, "0 - \"\"", "1 2 \"\""},
        {"a version that is no text", [](CParaSet& r) { r["##ver"]["x"] = 1; }, "0 - -", "1 2 -"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet root("root");
        row.fill(root);
        AsnCommonResponse fresh;
        EXPECT_EQ(root.Para2CommonRspAsn(fresh), 0);
        EXPECT_EQ(HeadersOf(fresh), row.fresh);
        EXPECT_FALSE(fresh.tables);
        AsnCommonResponse filled;
        filled.retCode = 1;
        filled.retCodeEx.Emplace(2);
        filled.ver.Emplace("v");
        EXPECT_EQ(root.Para2CommonRspAsn(filled), 0);
        EXPECT_EQ(HeadersOf(filled), row.filled);
    }
}

// Unlike a request's: a count of 0 leaves the list, and a single table is the root only
// when the root has a row count.
TEST(ResponseFromTree, CarriesTheTablesThatTheCountAnnounces) {
    const char* const kUntouched = "old (a:2) [9]";
    const struct {
        const char* name;
        void (*fill)(CParaSet&);
        const char* tables;
    } rows[] = {
        {"no count leaves the list", [](CParaSet& r) { r["##RowCount"] = 1; }, kUntouched},
        {"a count without a child leaves it",
         [](CParaSet& r) { r["##TableCount"] = 1, r.clear("##TableCount"); }, kUntouched},
        {"count 0 leaves it", [](CParaSet& r) { r["##TableCount"] = 0; }, kUntouched},
        {"a negative count leaves it", [](CParaSet& r) { r["##TableCount"] = -1; }, kUntouched},
        {"one with a row count: the root itself",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"] = 1, r["a"] = 1; }, "(a:2) [1]"},
        {"one with row count 0: an empty table",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"] = 0, r["a"] = 1; }, ""},
        {"one with row count -2: no rows",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"] = -2, r["a"] = 1; }, "(a:2)"},
        {"one without a row count: a table a child",
         [](CParaSet& r) {
             r["##TableCount"] = 1;
             r["t"]["##RowCount"] = 1;
             r["t"]["a"] = 1;
             r["scalar"] = 1;
             r["##ver"] = "v";
         },
         "scalar; t (a:2) [1]"},
        {"one with row count -1: a table a child",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"] = -1, r["a"] = 1; }, "a"},
        {"one with a row count that is not valued: a table a child",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"], r["a"] = 1; }, "a"},
        {"one with a row count that is a double: a table a child",
         [](CParaSet& r) { r["##TableCount"] = 1, r["##RowCount"] = 2.0, r["a"] = 1; }, "a"},
        {"two: a table a child, row count or not",
         [](CParaSet& r) {
             r["##TableCount"] = 2;
             r["##RowCount"] = 1;
             r["b"]["##RowCount"] = 1;
             r["a"] = 1;
         },
         "a; b () []"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet root("root");
        row.fill(root);
        AsnCommonResponse response;
        AddTable(response, "old", 9);
        EXPECT_EQ(root.Para2CommonRspAsn(response), 0);
        EXPECT_EQ(TextOf(response.tables), row.tables);
    }
}

TEST(ResponseFromTree, OfAnArrayIsEmpty) {
    CParaSet list("list");
    list[0] = 1;
    AsnCommonResponse response;
    EXPECT_EQ(list.Para2CommonRspAsn(response), 0);
    EXPECT_EQ(HeadersOf(response), "0 - -");
}

}  // namespace
