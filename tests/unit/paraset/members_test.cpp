// The child list and the name index in their callers' hands.
#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

// What callers add is made with new and belongs to the tree from then on.
TEST(Members, TakeChildrenThatCallersMade) {
    CParaSet p("p");
    p.SetType(CParaSet::PARA_STRUCT);
    p.GetMapValue()["a"] = new CParaSet("other", 1);
    p.GetMapValue()["b.c"] = new CParaSet("b.c", "text");
    p.GetMapValue()["none"] = nullptr;
    EXPECT_EQ(Shape(p), "{a(other): 1, b.c: \"text\", none: -}");
    EXPECT_EQ(p.find("a"), p.GetMapValue()["a"]);
    EXPECT_EQ(p.find("b.c"), nullptr) << "no path reaches a key with a dot";
    EXPECT_EQ(p.find("none"), nullptr);
    EXPECT_EQ(p.count(), 3);
    EXPECT_TRUE(p.remove("b.c"));
    EXPECT_TRUE(p.remove("none"));
    EXPECT_EQ(Shape(p), "{a(other): 1}");

    CParaSet list("list");
    list.SetType(CParaSet::PARA_ARRAY);
    list.GetVctValue().push_back(new CParaSet("mine", 1));
    list.GetVctValue().insert(list.GetVctValue().begin(), {nullptr, new CParaSet(p)});
    EXPECT_EQ(Shape(list), "[-, {a(other): 1}, 1]");
    EXPECT_TRUE(list.remove(1));
    list[5] = 5;
    EXPECT_EQ(Shape(list), "[-, 1, -, -, -, 5]");
}

// What callers take out is theirs, made by the tree or not.
TEST(Members, GiveChildrenToCallersThatDeleteThem) {
    CParaSet p("p");
    p["a.deep.list"][3] = 1;
    p["b"] = 2;
    std::unique_ptr<CParaSet> taken(std::exchange(p.GetMapValue()["a"], nullptr));
    EXPECT_EQ(Shape(p), "{a: -, b: 2}");
    EXPECT_EQ(p["a"].type(), CParaSet::PARA_NULL);
    taken.reset();
    delete p.find("b");
    p.GetMapValue().erase("b");
    EXPECT_EQ(Shape(p), "{a: null}");

    CParaSet& list = p["a"];
    list[2] = 1;
    delete list.GetVctValue()[2];
    list.GetVctValue().pop_back();
    EXPECT_EQ(Shape(p), "{a: [-, -]}");
}

TEST(Members, LetChildrenMoveFromTreeToTree) {
    CParaSet from("from");
    CParaSet to("to");
    from["x.y"] = 1;
    to["z"] = 2;
    to.GetMapValue().insert(from.GetMapValue().extract("x"));
    EXPECT_EQ(Shape(from), "{}");
    EXPECT_EQ(Shape(to), "{x: {y: 1}, z: 2}");
    from.GetMapValue().swap(to.GetMapValue());
    EXPECT_EQ(Shape(from), "{x: {y: 1}, z: 2}");
    to.clear();
    EXPECT_EQ(Shape(from), "{x: {y: 1}, z: 2}");

    CParaSet list("list");
    list[1] = 1;
    CParaSet other("other");
    other[0] = 0;
    list.GetVctValue().swap(other.GetVctValue());
    EXPECT_EQ(Shape(list) + Shape(other), "[0][-, 1]");
    other.GetVctValue().shrink_to_fit();
    other.GetVctValue().reserve(100);
    other[2] = 2;
    EXPECT_EQ(Shape(other), "[-, 1, 2]");
}

// Both members may hold children at once; each operation sees the one it is about.
TEST(Members, AreClearedAndCopiedWhateverTheType) {
    for (int type = 0; type != 9; ++type) {
        SCOPED_TRACE(type);
        CParaSet p("p");
        p[1] = 1;
        p.SetType(CParaSet::PARA_STRUCT);
        p["a"] = 2;
        p.SetType(static_cast<CParaSet::ValueType>(type));
        CParaSet copy(p);
        EXPECT_EQ(copy.type(), type);
        EXPECT_EQ(copy.GetVctValue().size(), 1U) << "without the null slot";
        EXPECT_EQ(copy.GetMapValue().size(), 1U);
        p.clear();
        EXPECT_TRUE(p.GetVctValue().empty());
        EXPECT_TRUE(p.GetMapValue().empty());
    }
}

}  // namespace
