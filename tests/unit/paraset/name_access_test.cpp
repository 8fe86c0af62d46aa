// Name access: what a dotted path reaches and what it makes on the way.
#include <gtest/gtest.h>

#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

TEST(NameAccess, MakesTheStructuresOnTheWay) {
    CParaSet p("p");
    p["a"]["b"] = 1;
    EXPECT_EQ(p.type(), CParaSet::PARA_STRUCT);
    EXPECT_EQ(p["a"].type(), CParaSet::PARA_STRUCT);
    EXPECT_EQ(p["a"]["b"].type(), CParaSet::PARA_INT);
    EXPECT_EQ(p.find("a.b"), &p["a"]["b"]);
    EXPECT_EQ(p.find("a.c"), nullptr);
    EXPECT_EQ(Shape(p), "{a: {b: 1}}");
}

// The path is split at dots only: brackets are ordinary characters, and a component may
// be empty, which is a name like any other.
TEST(NameAccess, SplitsThePathAtDots) {
    const struct {
        const char* name;
        std::string path;
        const char* shape;
    } rows[] = {
        {"one component", "a", "{a: 1}"},
        {"two components", "a.b", "{a: {b: 1}}"},
        {"four components", "a.b.c.d", "{a: {b: {c: {d: 1}}}}"},
        {"empty path", "", "{: 1}"},
        {"a dot alone", ".", "{: {: 1}}"},
        {"two dots", "..", "{: {: {: 1}}}"},
        {"dot at the end", "a.", "{a: {: 1}}"},
        {"dot at the front", ".a", "{: {a: 1}}"},
        {"two dots between", "a..b", "{a: {: {b: 1}}}"},
        {"index", "a[1]", "{a[1]: 1}"},
        {"index alone", "[0]", "{[0]: 1}"},
        {"negative index", "a[-1].b", "{a[-1]: {b: 1}}"},
        {"open bracket", "a[1", "{a[1: 1}"},
        {"a dot between brackets", "a[1.5]", "{a[1: {5]: 1}}"},
        {"reserved name", "##RowCount", "{##RowCount: 1}"},
        {"blanks", " a . b ", "{ a : { b : 1}}"},
        {"octets above 127", "\xc3\xa9.\xff", "{\xc3\xa9: {\xff: 1}}"},
        {"a long name", std::string(300, 'x') + ".y", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet by_pointer("p");
        CParaSet by_string("p");
        CParaSet& made = by_pointer[row.path.c_str()];
        EXPECT_TRUE(made.isNull());
        made = 1;
        by_string[row.path] = 1;
        const std::string expected =
            row.shape == nullptr ? "{" + std::string(300, 'x') + ": {y: 1}}" : row.shape;
        EXPECT_EQ(Shape(by_pointer), expected);
        EXPECT_EQ(Shape(by_string), expected);
        EXPECT_EQ(&by_pointer[row.path], &made) << "the second time it is there";
        EXPECT_EQ(Shape(by_pointer), expected);
    }
}

TEST(NameAccess, ReachesWhatStepwiseAccessReaches) {
    CParaSet p("p");
    CParaSet& stepwise = p["a"]["b"];
    EXPECT_EQ(&p["a.b"], &stepwise);
    EXPECT_EQ(&p[std::string("a.b")], &stepwise);
    EXPECT_EQ(stepwise.name(), "b");
}

// Keys are told apart by their octets.
TEST(NameAccess, KeepsChildrenInTheOrderOfTheirKeysOctets) {
    CParaSet p("p");
    for (const char* name : {"b", "a", "B", "\xff", "ab", "##RowCount", "a1", "_"}) {
        p[name] = 1;
    }
    std::string keys;
    for (const auto& entry : p.GetMapValue()) {
        keys += entry.first + " ";
    }
    EXPECT_EQ(keys, "##RowCount B _ a a1 ab b \xff ");
}

// A child made on a node turns it into a structure whatever it was, with its old fields
// and children still there; a child that is found leaves the type alone.
TEST(NameAccess, TurnsTheParentIntoAStructureWhenItMakesAChild) {
    const struct {
        const char* name;
        CParaSet::ValueType before;
    } rows[] = {
        {"null", CParaSet::PARA_NULL},         {"double", CParaSet::PARA_DOUBLE},
        {"int", CParaSet::PARA_INT},           {"string", CParaSet::PARA_STRING},
        {"struct", CParaSet::PARA_STRUCT},     {"resource", CParaSet::PARA_RESID},
        {"reserved", CParaSet::PARA_RESERVED}, {"unknown", static_cast<CParaSet::ValueType>(99)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet p("p", 3);
        p.SetType(row.before);
        CParaSet& child = p["a"];
        EXPECT_EQ(FieldsOf(p), (Fields{CParaSet::PARA_STRUCT, 3, 0.0, ""}));

        p.SetType(row.before);
        EXPECT_EQ(&p["a"], &child);
        EXPECT_EQ(p.type(), row.before) << "an existing child leaves the type alone";

        ASSERT_TRUE(p.clear("a"));
        p.SetType(row.before);
        EXPECT_TRUE(p["a"].isNull());
        EXPECT_EQ(p.type(), CParaSet::PARA_STRUCT) << "a refilled entry is a made child";
    }
}

TEST(NameAccess, RefusesArraysAndChangesNothing) {
    CParaSet p("p");
    p["list"][1] = 5;
    p["deep.list"][0] = 6;
    const std::string before = Shape(p);
    for (const char* path : {"list.a", "list.", "list.a.b", "deep.list.a", "deep.list.."}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(CodeOf([&] { p[path]; }), -3);
        EXPECT_EQ(CodeOf([&] { p[std::string(path)]; }), -3);
        EXPECT_EQ(Shape(p), before);
    }
    CParaSet& list = p["list"];
    EXPECT_EQ(CodeOf([&] { list["a"]; }), -3);
    EXPECT_EQ(CodeOf([&] { list[""]; }), -3);
    EXPECT_TRUE(list.GetMapValue().empty());
}

TEST(NameAccess, RefusesAnArrayEvenWhenTheNameIsThere) {
    CParaSet p("p");
    p["a"] = 1;
    p.SetType(CParaSet::PARA_ARRAY);
    EXPECT_EQ(CodeOf([&] { p["a"]; }), -3);
    EXPECT_NE(p.find("a"), nullptr);
}

TEST(NameAccess, FillsAnEntryWithoutAChild) {
    CParaSet p("p");
    p["a"] = 1;
    p["b"] = 2;
    EXPECT_TRUE(p.clear("a"));
    EXPECT_EQ(p.count(), 2);
    EXPECT_EQ(p.find("a"), nullptr);
    EXPECT_TRUE(p["a"].isNull());
    EXPECT_EQ(p["a"].name(), "a");
    EXPECT_EQ(Shape(p), "{a: null, b: 2}");

    p.clear("a");
    p["a.c"] = 3;
    EXPECT_EQ(Shape(p), "{a: {c: 3}, b: 2}");
}

}  // namespace
