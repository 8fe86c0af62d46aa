// Index access, and the positions of named children.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

TEST(IndexAccess, MakesAnArrayOfANodeWithoutValue) {
    CParaSet p("p");
    CParaSet& element = p[3];
    EXPECT_EQ(p.type(), CParaSet::PARA_ARRAY);
    EXPECT_EQ(p.count(), 4);
    EXPECT_EQ(Shape(p), "[-, -, -, null]");
    EXPECT_EQ(element.name(), "root");
    EXPECT_EQ(&p[3], &element);
    p[1] = 1;
    EXPECT_EQ(Shape(p), "[-, 1, -, null]") << "a slot inside is filled without growing";
    p[4] = 4;
    EXPECT_EQ(Shape(p), "[-, 1, -, null, 4]");
    EXPECT_EQ(&p[3], &element) << "elements stay where they are when the list grows";
}

TEST(IndexAccess, OfAScalarIsTheScalar) {
    for (const auto type :
         {CParaSet::PARA_DOUBLE, CParaSet::PARA_INT, CParaSet::PARA_STRING, CParaSet::PARA_RESERVED,
          CParaSet::PARA_RESID, static_cast<CParaSet::ValueType>(99)}) {
        SCOPED_TRACE(type);
        CParaSet p("p", 3);
        p.SetType(type);
        EXPECT_EQ(&p[0], &p);
        EXPECT_EQ(&p[17], &p);
        EXPECT_EQ(&p[INT_MAX], &p);
        EXPECT_EQ(p.type(), type);
        EXPECT_TRUE(p.GetVctValue().empty());
    }
}

TEST(IndexAccess, OfAStructureFollowsTheKeys) {
    CParaSet p("p");
    p["b"] = 2;
    p["a"] = 1;
    EXPECT_EQ(&p[0], p.find("a"));
    EXPECT_EQ(&p[1], p.find("b"));
    EXPECT_EQ(p.GetIndexByName("b"), 1);
    EXPECT_EQ(CodeOf([&] { p[2]; }), -2);
    EXPECT_EQ(Shape(p), "{a: 1, b: 2}");
}

TEST(IndexAccess, ReportsABadIndex) {
    CParaSet five("p");
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        five[name] = 1;
    }
    CParaSet empty("p");
    empty.SetType(CParaSet::PARA_STRUCT);
    CParaSet list("p");
    list[0] = 1;
    CParaSet null("p");
    CParaSet number("p", 3);
    const struct {
        const char* name;
        CParaSet& node;
        int index;
        int code;
    } rows[] = {
        {"structure, last", five, 4, 0},           {"structure, behind the last", five, 5, -2},
        {"structure, largest", five, INT_MAX, -2}, {"structure, negative", five, -1, -1},
        {"empty structure", empty, 0, -2},         {"array, negative", list, -1, -1},
        {"array, smallest", list, INT_MIN, -1},    {"null, negative", null, -1, -1},
        {"scalar, negative", number, -1, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(CodeOf([&] { row.node[row.index]; }), row.code);
    }
    EXPECT_TRUE(null.isNull()) << "a failed access leaves the type";
    EXPECT_EQ(list.count(), 1);
}

// A null reference would be no answer, so an entry without a child is an index that the
// structure does not have.
TEST(IndexAccess, ReportsAnEntryWithoutAChild) {
    CParaSet p("p");
    p["a"] = 1;
    p["b"] = 2;
    p.clear("a");
    EXPECT_EQ(CodeOf([&] { p[0]; }), -2);
    EXPECT_EQ(&p[1], p.find("b"));
    EXPECT_EQ(Shape(p), "{a: -, b: 2}");
}

TEST(GetIndexByName, CountsKeysUpToTheNameBeforeTheFirstDot) {
    CParaSet p("p");
    p["b"] = 1;
    p["a"] = 1;
    p[""] = 1;
    p["a[1]"] = 1;
    p["c"] = 1;
    p.clear("c");
    const struct {
        const char* name;
        int index;
    } rows[] = {
        {"", 0},  {"a", 1},  {"a[1]", 2}, {"b", 3},    {"c", 4},  {"d", -1},    {"a.b", 1},
        {".", 0}, {".a", 0}, {"b.", 3},   {"d.a", -1}, {"A", -1}, {"a[0]", -1}, {"a[1].x", 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(p.GetIndexByName(row.name), row.index);
        EXPECT_EQ(p.GetIndexByName(std::string(row.name)), row.index);
    }
    for (int type = 0; type != 8; ++type) {
        p.SetType(static_cast<CParaSet::ValueType>(type));
        EXPECT_EQ(p.GetIndexByName("a"), type == CParaSet::PARA_STRUCT ? 1 : -1) << type;
    }
}

}  // namespace
