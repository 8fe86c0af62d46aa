// Children that a structure loses by index: they outlive their entries.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

// A child that a structure loses by index is not destroyed: who holds a reference goes
// on using it, until the structure is cleared, assigned to or destroyed.
class RemovedChild : public testing::Test {
  protected:
    RemovedChild() {
        p->SetDesc("parent");
        (*p)["a.list"][1] = 1;
        (*p)["b"] = 2;
        kept = p->find("a");
        EXPECT_TRUE(p->remove(0));
        EXPECT_EQ(Shape(*p), "{b: 2}");
    }
    std::unique_ptr<CParaSet> p = std::make_unique<CParaSet>("p");
    CParaSet* kept = nullptr;
};

TEST_F(RemovedChild, StaysUsable) {
    EXPECT_EQ(Shape(*kept), "{list: [-, 1]}");
    (*kept)["more"] = 3;
    (*kept)["list"].remove(1);
    EXPECT_EQ(Shape(*kept), "{list: [-], more: 3}");
    EXPECT_EQ(kept->name(), "a");
    p->remove("b");
    p->clear("b");
    (*p)["c"][5] = 1;
    EXPECT_EQ(Shape(*kept), "{list: [-], more: 3}");
    kept->clear();
    EXPECT_TRUE(kept->isNull());
}

TEST_F(RemovedChild, IsNoLongerPartOfTheParent) {
    EXPECT_EQ(p->find("a"), nullptr);
    EXPECT_EQ(p->GetIndexByName("a"), -1);
    (*p)["a"] = 5;
    EXPECT_NE(&(*p)["a"], kept);
    EXPECT_EQ(Shape(*kept), "{list: [-, 1]}");
    EXPECT_EQ(Shape(*p), "{a: 5, b: 2}");
    CParaSet copy(*p);
    EXPECT_EQ(Shape(copy), "{a: 5, b: 2}");
}

TEST_F(RemovedChild, IsOneOfManyThatAParentMayLose) {
    std::string kept_values;
    for (int i = 0; i != 100; ++i) {
        CParaSet& again = (*p)["a"];
        again = i;
        EXPECT_TRUE(p->remove(p->GetIndexByName("a")));
        EXPECT_EQ(again.asInt(), i);
    }
    EXPECT_EQ(Shape(*p), "{b: 2}");
    EXPECT_EQ(Shape(*kept), "{list: [-, 1]}");
    p->clear();  // the leak check at the program's end knows whether all of them went
}

TEST_F(RemovedChild, GoesWithTheParentInEveryWay) {
    const struct {
        const char* name;
        void (*act)(CParaSet& grandparent);
    } rows[] = {
        {"clear", [](CParaSet& g) { g["parent"].clear(); }},
        {"assignment", [](CParaSet& g) { g["parent"] = CParaSet("other", 1); }},
        {"removal", [](CParaSet& g) { g.remove("parent"); }},
        {"removal by index", [](CParaSet& g) { g.remove(0); }},
        {"clear by name", [](CParaSet& g) { g.clear("parent"); }},
        {"clear of the grandparent", [](CParaSet& g) { g.clear(); }},
        {"destruction", [](CParaSet&) {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet grandparent("grandparent");
        CParaSet& parent = grandparent["parent"];
        parent["a.b.c"] = 1;
        EXPECT_TRUE(parent["a"]["b"].remove(0));
        EXPECT_TRUE(parent["a"].remove(0));
        EXPECT_TRUE(parent.remove(0));
        row.act(grandparent);
        EXPECT_EQ(grandparent.find("parent.a"), nullptr);
    }
}

TEST_F(RemovedChild, CanBeAssignedToItsFormerParent) {
    *p = *kept;
    EXPECT_EQ(Shape(*p), "{list: [1]}");
    EXPECT_EQ(p->name(), "a");
}

TEST_F(RemovedChild, CanTakeItsFormerParent) {
    *kept = *p;
    EXPECT_EQ(Shape(*kept), "{b: 2}");
    EXPECT_EQ(kept->GetDesc(), "parent");
    (*p)["a"] = *kept;
    EXPECT_EQ(Shape(*p), "{a(p): {b: 2}, b: 2}");
}

}  // namespace
