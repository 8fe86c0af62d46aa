// Copying and assigning whole nodes.
#include <gtest/gtest.h>

#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

TEST(Copy, TakesNameDescriptionTypeAndEveryField) {
    for (int type = -1; type != 9; ++type) {
        SCOPED_TRACE(type);
        CParaSet source("source");
        source = std::string("te\0xt", 5);
        source.SetDesc("description");
        source.SetType(CParaSet::PARA_INT);
        source = 3;
        source.SetType(CParaSet::PARA_DOUBLE);
        source = 2.5;
        source.SetType(static_cast<CParaSet::ValueType>(type));

        CParaSet copy(source);
        CParaSet assigned("assigned", "before");
        CParaSet set("set");
        assigned["a"] = 1;
        EXPECT_EQ(&(assigned = source), &assigned);
        EXPECT_EQ(&set.setValue(source), &set);
        for (CParaSet* node : {&copy, &assigned, &set}) {
            EXPECT_EQ(FieldsOf(*node), (Fields{source.type(), 3, 2.5, std::string("te\0xt", 5)}));
            EXPECT_EQ(node->name(), "source");
            EXPECT_EQ(node->GetDesc(), "description");
            EXPECT_TRUE(node->GetMapValue().empty());
        }
    }
}

TEST(Copy, IsDeep) {
    CParaSet source("source");
    source["list"][1]["x.y"] = 1;
    source["text"] = "abc";
    source["list"][1].SetDesc("element");
    CParaSet copy(source);
    EXPECT_EQ(Shape(copy), "{list: [{x: {y: 1}}], text: \"abc\"}");
    EXPECT_EQ(copy["list"][0].GetDesc(), "element");
    source["list"][1]["x.y"] = 2;
    copy["text"] = "def";
    EXPECT_EQ(Shape(copy), "{list: [{x: {y: 1}}], text: \"def\"}");
    EXPECT_EQ(Shape(source), "{list: [-, {x: {y: 2}}], text: \"abc\"}");
    source.clear();
    EXPECT_EQ(Shape(copy), "{list: [{x: {y: 1}}], text: \"def\"}");
}

TEST(Copy, LeavesOutNullSlotsAndEntries) {
    CParaSet source("source");
    source["list"][0] = 10;
    source["list"][2] = 12;
    source["gone"] = 1;
    source["nulls"][3];
    source["nulls"].remove(3);
    source.clear("gone");
    CParaSet copy(source);
    EXPECT_EQ(Shape(copy), "{list: [10, 12], nulls: []}");
    EXPECT_EQ(copy["list"][1].asInt(), 12);
    EXPECT_EQ(Shape(source), "{gone: -, list: [10, -, 12], nulls: [-, -, -]}");
}

TEST(Copy, KeepsKeysAndNamesApart) {
    CParaSet source("source");
    source["a"] = 1;
    source["a"].SetName("b");
    source["list"][0].SetName("element");
    CParaSet copy(source);
    EXPECT_EQ(Shape(copy), "{a(b): 1, list: [null]}");
    EXPECT_EQ(copy["list"][0].name(), "element");
    CParaSet parent("parent");
    parent["child"] = copy;
    EXPECT_EQ(Shape(parent), "{child(source): {a(b): 1, list: [null]}}");
}

TEST(Copy, LeavesTheCountersBehind) {
    CParaSet row("row");
    row["a"] = 1;
    CParaSet source("source");
    source.SetTableCount(3);
    source.AddRow(0, row);
    source.AddRow(1, row);

    CParaSet copy(source);
    EXPECT_EQ(copy.GetTableCount(), 0);
    copy.AddRow(2, row);
    EXPECT_EQ(copy.GetRowCount(), 1) << "the copy's row counter began at 0";

    CParaSet assigned("assigned");
    assigned.SetTableCount(7);
    assigned.AddRow(0, row);
    assigned = source;
    EXPECT_EQ(assigned.GetTableCount(), 7);
    EXPECT_EQ(assigned.GetRowCount(), 2) << "the child of that name is copied";
    assigned.AddRow(2, row);
    EXPECT_EQ(assigned.GetRowCount(), 2) << "the counter stayed at 1";

    CParaSet parent("parent");
    parent["table"] = source;
    parent["table"].SetTableCount(5);
    CParaSet deep(parent);
    EXPECT_EQ(deep["table"].GetTableCount(), 0);
}

// Only a resource node's record is copied; this node's own stays otherwise.
TEST(Copy, TakesTheResourceOfAResourceNodeOnly) {
    const AsnDistinguishedResource theirs = Resource("theirs");
    const AsnDistinguishedResource mine = Resource("mine");
    const struct {
        const char* name;
        bool source_has_one;
        CParaSet::ValueType source_type;
        bool target_has_one;
        const char* result;
    } rows[] = {
        {"resource over nothing", true, CParaSet::PARA_RESID, false, "theirs"},
        {"resource over another", true, CParaSet::PARA_RESID, true, "theirs"},
        {"resource node without record", false, CParaSet::PARA_RESID, true, "mine"},
        {"neither has one", false, CParaSet::PARA_RESID, false, nullptr},
        {"record behind another type", true, CParaSet::PARA_INT, false, nullptr},
        {"record behind another type, over one", true, CParaSet::PARA_INT, true, "mine"},
        {"record of a cleared node", true, CParaSet::PARA_NULL, false, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet source("source");
        CParaSet target("target");
        if (row.source_has_one) {
            source = &theirs;
        }
        source.SetType(row.source_type);
        if (row.target_has_one) {
            target = &mine;
        }
        target = source;
        EXPECT_EQ(target.type(), row.source_type);
        ASSERT_EQ(target.asResID() != nullptr, row.result != nullptr);
        if (row.result != nullptr) {
            EXPECT_EQ(target.asResID()->resDN.str(), row.result);
            EXPECT_NE(target.asResID(), source.asResID());
        }
    }
}

TEST(Assignment, OfANodeToItselfChangesNothing) {
    CParaSet p("p");
    p["list"][1] = 1;
    p["gone"];
    p.clear("gone");
    CParaSet& same = p;
    p = same;
    EXPECT_EQ(Shape(p), "{gone: -, list: [-, 1]}");
}

// Source and target in one tree: as if the source had been copied first.
TEST(Assignment, WithinOneTreeCopiesTheSourceFirst) {
    const struct {
        const char* name;
        const char* target;
        const char* source;
        const char* result;
    } rows[] = {
        {"child to parent", "", "a", "{b: {c: [1, {x: 2}]}}"},
        {"grandchild to root", "", "a.b", "{c: [1, {x: 2}]}"},
        {"element to root", "", "a.b.c[2]", "{x: 2}"},
        {"leaf to root", "", "a.b.c[1]", "1"},
        {"list to its parent", "a.b", "a.b.c", "{a: {b(c): [1, {x: 2}]}, d: 3}"},
        {"element to its list", "a.b.c", "a.b.c[2]", "{a: {b: {c(root): {x: 2}}}, d: 3}"},
        {"parent to child", "a", "", "{a(p): {a: {b: {c: [1, {x: 2}]}}, d: 3}, d: 3}"},
        {"leaf to element", "a.b.c[1]", "d", "{a: {b: {c: [-, 3, {x: 2}]}}, d: 3}"},
        {"list to its element", "a.b.c[1]", "a.b.c",
         "{a: {b: {c: [-, [1, {x: 2}], {x: 2}]}}, d: 3}"},
        {"sibling to sibling", "d", "a.b", "{a: {b: {c: [-, 1, {x: 2}]}}, d(b): {c: [1, {x: 2}]}}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet p("p");
        p["a.b.c"][1] = 1;
        p["a.b.c"][2]["x"] = 2;
        p["d"] = 3;
        CParaSet* target = p.find(row.target);
        CParaSet* source = p.find(row.source);
        ASSERT_TRUE(target != nullptr && source != nullptr);
        const std::string name = source->name();
        *target = *source;
        EXPECT_EQ(target->name(), name);
        EXPECT_EQ(Shape(p), row.result);
    }
}

TEST(Assignment, OfADescendantTakesItsResource) {
    const AsnDistinguishedResource resource = Resource("inner");
    const AsnDistinguishedResource own = Resource("own");
    CParaSet p("p");
    p = &own;
    p["a.b"] = &resource;
    p = p["a.b"];
    EXPECT_EQ(Shape(p), "resource(inner)");
    EXPECT_EQ(p.name(), "b");
}

}  // namespace
