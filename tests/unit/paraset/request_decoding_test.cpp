// A common request into a tree.
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

TEST(TreeFromRequest, TakesTheHeaders) {
    AsnCommonRequest request;
    request.userID = (std::int64_t{1} << 32) + 7;
    request.resID.Emplace().resDN = "dn";
    CParaSet root("root");
    EXPECT_EQ(root.CommonReqAsn2Para(request), 0);
    EXPECT_EQ(Shape(root), "{##ResID: resource(dn), ##TableCount: 0, ##UserID: 7}");
    EXPECT_NE(root["##ResID"].asResID(), request.resID.get());

    CParaSet bare("root");
    bare.CommonReqAsn2Para(AsnCommonRequest());
    EXPECT_EQ(Shape(bare), "{##TableCount: 0, ##UserID: 0}");
}

TEST(TreeFromRequest, TakesTheTables) {
    const struct {
        const char* name;
        void (*fill)(AsnCommonRequest&);
        const char* tree;
    } rows[] = {
        {"an empty list", [](AsnCommonRequest& r) { r.tables.Emplace(); },
         "{##TableCount: 0, ##UserID: 0}"},
        {"one without a name: the root", [](AsnCommonRequest& r) { AddTable(r, nullptr, 1); },
         "{##RowCount: 1, ##TableCount: 1, ##UserID: 0, a: 1}"},
        {"one with an empty name: the root", [](AsnCommonRequest& r) { AddTable(r, "", 1); },
         "{##RowCount: 1, ##TableCount: 1, ##UserID: 0, a: 1}"},
        {"one with a name: the child", [](AsnCommonRequest& r) { AddTable(r, "ports", 1); },
         "{##TableCount: 1, ##UserID: 0, ports: {##RowCount: 1, a: 1}}"},
        {"several",
         [](AsnCommonRequest& r) {
             AddTable(r, nullptr, 0);
             AddTable(r, "ports", 1);
             AddTable(r, "", 2);
         },
         "{##TableCount: 3, ##UserID: 0, ports: {##RowCount: 1, a: 1}, "
         "tab0: {##RowCount: 1, a: 0}, tab2: {##RowCount: 1, a: 2}}"},
        {"several of one name are merged",
         [](AsnCommonRequest& r) {
             AddTable(r, "t", 1);
             AddColumn(AddTable(r, "t", 2), "b", 2);
         },
         "{##TableCount: 2, ##UserID: 0, t: {##RowCount: 1, a: 2}}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnCommonRequest request;
        row.fill(request);
        CParaSet root("root");
        EXPECT_EQ(root.CommonReqAsn2Para(request), 0);
        EXPECT_EQ(Shape(root), row.tree);
    }
}

TEST(TreeFromRequest, IsTheWayBack) {
    const AsnDistinguishedResource resource = Resource("dn");
    CParaSet root("root");
    root["##UserID"] = 7;
    root["##ResID"] = &resource;
    root["##TableCount"] = 1;
    root["##RowCount"] = 1;
    root["a"] = 1;
    root["b"] = "x";
    root["c"] = 2.5;
    AsnCommonRequest request;
    root.Para2CommonReqAsn(request);
    CParaSet back("root");
    back.CommonReqAsn2Para(request);
    EXPECT_EQ(Shape(back), Shape(root));

    root.clear();
    root["##UserID"] = 7;
    root["##TableCount"] = 2;
    for (const char* table : {"one", "two"}) {
        root[table]["##RowCount"] = 2;
        for (int r = 0; r != 2; ++r) {
            root[table]["a"][r] = r;
            root[table]["b"][r] = "x";
            root[table]["c"][r] = r + 0.5;
        }
    }
    AsnCommonRequest tables;
    root.Para2CommonReqAsn(tables);
    CParaSet back_again("root");
    back_again.CommonReqAsn2Para(tables);
    EXPECT_EQ(Shape(back_again), Shape(root));
}

}  // namespace
