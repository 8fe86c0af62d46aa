// A tree to a common request.
#include <gtest/gtest.h>

#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnTable;
using FrameUtil::CParaSet;

AsnTable& AddTable(AsnCommonRequest& request, const char* name, int value) {
    AsnTable& table = request.tables.Ensure().Append();
    if (name != nullptr) {
        table.name.Emplace(name);
    }
    AddColumn(table, "a", 2);
    AppendRow(table, {value});
    return table;
}

TEST(RequestFromTree, CarriesTheUser) {
    const struct {
        const char* name;
        void (*fill)(CParaSet&);
        std::int64_t user;
    } rows[] = {
        {"integer", [](CParaSet& r) { r["##UserID"] = 7; }, 7},
        {"string", [](CParaSet& r) { r["##UserID"] = "42abc"; }, 42},
        {"double", [](CParaSet& r) { r["##UserID"] = 3.0; }, -1},
        {"not valued", [](CParaSet& r) { r["##UserID"]; }, -1},
        {"none", [](CParaSet& r) { r["a"] = 1; }, -1},
        {"empty tree", [](CParaSet&) {}, -1},
        {"an entry without a child", [](CParaSet& r) { r["##UserID"] = 7, r.clear("##UserID"); },
         -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet root("root");
        row.fill(root);
        AsnCommonRequest request;
        request.userID = 99;
        EXPECT_EQ(root.Para2CommonReqAsn(request), 0);
        EXPECT_EQ(request.userID, row.user);
        EXPECT_FALSE(request.tables);
        EXPECT_FALSE(request.resID);
        EXPECT_NE(root.find("##UserID"), nullptr) << "the child is made";
    }
}

TEST(RequestFromTree, OfAnArrayIsRefused) {
    CParaSet list("list");
    list[0] = 1;
    AsnCommonRequest request;
    EXPECT_EQ(CodeOf([&] { list.Para2CommonReqAsn(request); }), -3);
}

TEST(RequestFromTree, CarriesTheResource) {
    AsnDistinguishedResource resource = Resource("dn");
    resource.maintype.Emplace(5);
    CParaSet root("root");
    root["##ResID"] = &resource;
    AsnCommonRequest request;
    request.resID.Emplace().label.Emplace("before");
    root.Para2CommonReqAsn(request);
    ASSERT_TRUE(request.resID);
    EXPECT_EQ(request.resID->resDN.str(), "dn");
    EXPECT_EQ(*request.resID->maintype, 5);
    EXPECT_FALSE(request.resID->label) << "what was there has been cleared";

    root["##ResID"].asResID()->resDN = "changed";
    EXPECT_EQ(request.resID->resDN.str(), "dn") << "it is a copy";

    CParaSet without("root");
    without["##UserID"] = 1;
    without.Para2CommonReqAsn(request);
    EXPECT_TRUE(request.resID) << "no ##ResID leaves the request's";
}

TEST(RequestFromTree, MakesAnEmptyResourceOfANodeWithoutOne) {
    CParaSet root("root");
    root["##ResID"] = 5;
    AsnCommonRequest request;
    request.resID.Emplace().resDN = "before";
    root.Para2CommonReqAsn(request);
    ASSERT_TRUE(request.resID);
    EXPECT_EQ(request.resID->resDN.str(), "");
}

// "##TableCount" decides what becomes of the tables; the request held one before.
TEST(RequestFromTree, CarriesTheTablesThatTheCountAnnounces) {
    const struct {
        const char* name;
        void (*fill)(CParaSet&);
        const char* tables;
    } rows[] = {
        {"no count leaves the list", [](CParaSet& r) { r["a"]["##RowCount"] = 1; },
         "old (a:2) [9]"},
        {"a count without a child leaves it",
         [](CParaSet& r) { r["##TableCount"] = 1, r.clear("##TableCount"); }, "old (a:2) [9]"},
        {"count 0 clears it", [](CParaSet& r) { r["##TableCount"] = 0; }, ""},
        {"a negative count clears it", [](CParaSet& r) { r["##TableCount"] = -5; }, ""},
        {"a count that is not valued clears it", [](CParaSet& r) { r["##TableCount"]; }, ""},
        {"a double clears it", [](CParaSet& r) { r["##TableCount"] = 1.0; }, ""},
        {"one: the root itself",
         [](CParaSet& r) {
             r["##TableCount"] = 1;
             r["##RowCount"] = 1;
             r["a"] = 1;
             r["b"] = "x";
         },
         "(a:2, b:4) [1, \"x\"]"},
        {"one, three rows",
         [](CParaSet& r) {
             r["##TableCount"] = 1;
             r["##RowCount"] = 3;
             for (int i = 0; i != 3; ++i) {
                 r["a"][i] = i;
             }
             r["b"] = "x";
         },
         "(a:2, b:4) [0, \"x\"] [1, \"x\"] [2, \"x\"]"},
        {"one, without a row count: an empty table",
         [](CParaSet& r) { r["##TableCount"] = 1, r["a"] = 1; }, ""},
        {"one, as text", [](CParaSet& r) { r["##TableCount"] = "1", r["##RowCount"] = 1; },
         "() []"},
        {"two: the children that are no headers, in key order",
         [](CParaSet& r) {
             r["##TableCount"] = 2;
             r["##RowCount"] = 1;
             r["#x"]["##RowCount"] = 1;
             r["t2"]["##RowCount"] = 1;
             r["t2"]["b"] = 2;
             r["t1"]["##RowCount"] = 2;
             r["t1"]["a"][1] = 1;
             r["t1"]["a"][0] = 0;
         },
         "t1 (a:2) [0] [1]; t2 (b:2) [2]"},
        {"two: whatever their number",
         [](CParaSet& r) {
             r["##TableCount"] = 7;
             r["t"]["##RowCount"] = -1;
             r["t"]["a"] = 2;
         },
         "t (a:2)"},
        {"two: children that are no tables travel empty",
         [](CParaSet& r) {
             r["##TableCount"] = 2;
             r["scalar"] = 1;
             r["list"][0] = 1;
             r["null"];
             r["gone"];
             r.clear("gone");
             r["zero"]["##RowCount"] = 0;
         },
         "gone; list; null; scalar; zero"},
        {"two: a table is named by its key",
         [](CParaSet& r) {
             CParaSet table("its own name");
             table["##RowCount"] = 1;
             table["a"] = 1;
             r["##TableCount"] = 2;
             r["key"] = table;
         },
         "key (a:2) [1]"},
        {"two, and no children", [](CParaSet& r) { r["##TableCount"] = 2; }, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet root("root");
        row.fill(root);
        AsnCommonRequest request;
        AddTable(request, "old", 9);
        EXPECT_EQ(root.Para2CommonReqAsn(request), 0);
        EXPECT_EQ(TextOf(request.tables), row.tables);
    }
}

TEST(RequestFromTree, MakesNoListWithoutTables) {
    CParaSet root("root");
    root["##TableCount"] = 0;
    AsnCommonRequest request;
    root.Para2CommonReqAsn(request);
    EXPECT_FALSE(request.tables);
}

TEST(RequestFromTree, GivesASingleTableNoName) {
    CParaSet root("named");
    root["##TableCount"] = 1;
    root["##RowCount"] = 1;
    AsnCommonRequest request;
    root.Para2CommonReqAsn(request);
    ASSERT_EQ(request.tables->Count(), 1U);
    EXPECT_FALSE(request.tables->begin()->name);
}

}  // namespace
