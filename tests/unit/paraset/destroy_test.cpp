// clear() and remove(): what goes, what stays, and what references stay good.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

TEST(Clear, TakesChildrenAndTypeAndKeepsTheRest) {
    const AsnDistinguishedResource resource = Resource("dn");
    CParaSet p("p", "text");
    p.SetDesc("description");
    p.SetTableCount(3);
    p["a.b"] = 1;
    p["list"][2] = 1;
    p.clear("a");
    p = &resource;
    p.SetType(CParaSet::PARA_NULL);
    p[1] = 1;

    p.clear();
    EXPECT_TRUE(p.isNull());
    EXPECT_TRUE(p.GetVctValue().empty());
    EXPECT_TRUE(p.GetMapValue().empty());
    EXPECT_EQ(p.name(), "p");
    EXPECT_EQ(p.GetDesc(), "description");
    EXPECT_EQ(p.GetTableCount(), 3);
    EXPECT_EQ(FieldsOf(p).text, "text");
    ASSERT_NE(p.asResID(), nullptr);
    EXPECT_EQ(p.asResID()->resDN.str(), "dn");

    p.clear();
    EXPECT_TRUE(p.isNull()) << "clearing nothing is no error";
    p[0] = 1;
    EXPECT_EQ(Shape(p), "[1]");
}

TEST(Clear, KeepsTheRowCounter) {
    CParaSet table("t");
    CParaSet row("r");
    row["a"] = 1;
    table.AddRow(0, row);
    table.clear();
    table.AddRow(0, row);
    EXPECT_EQ(table.GetRowCount(), 2);
}

TEST(ClearByName, DestroysTheChildAndKeepsItsEntry) {
    CParaSet p("p");
    p["a.b"] = 1;
    p["c"] = 2;
    EXPECT_TRUE(p.clear("a"));
    EXPECT_EQ(p.count(), 2);
    EXPECT_EQ(p.size(), 2);
    EXPECT_EQ(p.GetIndexByName("c"), 1);
    EXPECT_EQ(p.find("a"), nullptr);
    EXPECT_EQ(Shape(p), "{a: -, c: 2}");
    EXPECT_FALSE(p.clear("a")) << "there is no child any more";
    EXPECT_TRUE(p.clear(std::string("c")));
    EXPECT_EQ(Shape(p), "{a: -, c: -}");
    EXPECT_TRUE(p["a"].isNull());
}

// Both take the name for a key, dots and brackets included, and ask for no type.
TEST(RemoveAndClearByName, TakeTheExactKey) {
    const struct {
        const char* name;
        bool found;
    } rows[] = {
        {"a", true},  {"a.b", false}, {"a.", false},      {"", true},     {".", false},
        {"A", false}, {"list", true}, {"list[0]", false}, {"a[1]", true}, {"nothing", false},
    };
    for (const auto& row : rows) {
        for (int type = 0; type != 8; ++type) {
            SCOPED_TRACE(std::string(row.name) + " of type " + std::to_string(type));
            CParaSet p("p");
            p["a.b"] = 1;
            p[""] = 2;
            p["list"][0] = 3;
            p["a[1]"] = 4;
            CParaSet q(p);
            p.SetType(static_cast<CParaSet::ValueType>(type));
            q.SetType(static_cast<CParaSet::ValueType>(type));
            EXPECT_EQ(p.remove(row.name), row.found);
            EXPECT_EQ(p.GetMapValue().size(), row.found ? 3U : 4U);
            EXPECT_EQ(p.type(), type);
            EXPECT_FALSE(row.found && p.remove(std::string(row.name))) << "it is gone";
            EXPECT_EQ(q.clear(row.name), row.found);
            EXPECT_EQ(q.GetMapValue().size(), 4U);
            EXPECT_EQ(q.type(), type);
            EXPECT_EQ(q.remove(row.name), row.found) << "the entry without a child goes too";
        }
    }
}

// A std::string is passed on as characters: its key ends at the first zero octet.
TEST(RemoveAndClearByName, TakeAStringUpToItsFirstZero) {
    const std::string name("a\0b", 3);
    CParaSet p("p");
    p["a"] = 1;
    p.GetMapValue()[name] = new CParaSet("unreachable", 2);
    EXPECT_EQ(&p[name], p.find("a"));
    EXPECT_EQ(p.find(name), p.find("a"));
    EXPECT_EQ(p.GetIndexByName(name), 0);
    EXPECT_TRUE(p.clear(name));
    EXPECT_FALSE(p.clear(name));
    EXPECT_TRUE(p.remove(name));
    EXPECT_FALSE(p.remove(name));
    EXPECT_EQ(p.GetMapValue().count(name), 1U);
}

TEST(RemoveByName, LeavesTheTypeWhenNoChildIsLeft) {
    CParaSet p("p");
    p["a.b.c"] = 1;
    EXPECT_TRUE(p.remove("a"));
    EXPECT_EQ(p.type(), CParaSet::PARA_STRUCT);
    EXPECT_EQ(p.count(), 0);
    EXPECT_EQ(p.find("a"), nullptr);
}

TEST(RemoveByIndex, TakesAnElementOfAnArray) {
    CParaSet p("p");
    p[0] = 10;
    p[2]["deep.list"][3] = 12;
    p[3] = 13;
    CParaSet* last = &p[3];
    EXPECT_TRUE(p.remove(1)) << "a null slot is no element to take";
    EXPECT_EQ(p.count(), 4);
    EXPECT_TRUE(p.remove(2));
    EXPECT_EQ(Shape(p), "[10, -, 13]");
    EXPECT_EQ(&p[2], last) << "later elements move down";
    EXPECT_TRUE(p.remove(0));
    EXPECT_TRUE(p.remove(1));
    EXPECT_EQ(Shape(p), "[-]");
    EXPECT_TRUE(p.remove(0));
    EXPECT_EQ(Shape(p), "[-]");
    EXPECT_EQ(p.type(), CParaSet::PARA_ARRAY);
}

TEST(RemoveByIndex, TakesAnEntryOfAStructureInKeyOrder) {
    CParaSet p("p");
    p["b"] = 2;
    p["a"] = 1;
    p["c"] = 3;
    EXPECT_TRUE(p.remove(1));
    EXPECT_EQ(Shape(p), "{a: 1, c: 3}");
    p.clear("a");
    EXPECT_TRUE(p.remove(0)) << "an entry without a child";
    EXPECT_TRUE(p.remove(0));
    EXPECT_EQ(Shape(p), "{}");
    EXPECT_EQ(p.type(), CParaSet::PARA_STRUCT);
    EXPECT_EQ(CodeOf([&] { p.remove(0); }), -2);
}

TEST(RemoveByIndex, ReportsABadIndex) {
    for (int type = 0; type != 9; ++type) {
        SCOPED_TRACE(type);
        CParaSet p("p");
        p[1] = 1;  // two slots
        p.SetType(CParaSet::PARA_STRUCT);
        p["a"] = 1;  // one entry
        p.SetType(static_cast<CParaSet::ValueType>(type));
        EXPECT_EQ(CodeOf([&] { p.remove(-1); }), -1) << "whatever the type";
        EXPECT_EQ(CodeOf([&] { p.remove(INT_MIN); }), -1);
        const bool list = type == CParaSet::PARA_ARRAY;
        const bool structure = type == CParaSet::PARA_STRUCT;
        if (list || structure) {
            EXPECT_EQ(CodeOf([&] { p.remove(list ? 2 : 1); }), -2);
            EXPECT_EQ(CodeOf([&] { p.remove(INT_MAX); }), -2);
            EXPECT_TRUE(p.remove(list ? 1 : 0));
        } else {
            EXPECT_FALSE(p.remove(0));
            EXPECT_FALSE(p.remove(INT_MAX));
        }
    }
}

}  // namespace
