// A node by itself: how it is made, what it is called, what its type says of it.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;
using FrameUtil::FRexception;

constexpr auto kUnknownType = static_cast<CParaSet::ValueType>(99);

TEST(Node, TypesHaveTheValuesThatPeersAndFilesKnow) {
    EXPECT_EQ(CParaSet::PARA_NULL, 0);
    EXPECT_EQ(CParaSet::PARA_DOUBLE, 1);
    EXPECT_EQ(CParaSet::PARA_INT, 2);
    EXPECT_EQ(CParaSet::PARA_STRING, 3);
    EXPECT_EQ(CParaSet::PARA_ARRAY, 4);
    EXPECT_EQ(CParaSet::PARA_STRUCT, 5);
    EXPECT_EQ(CParaSet::PARA_RESERVED, 6);
    EXPECT_EQ(CParaSet::PARA_RESID, 7);
    static_assert(std::is_same_v<std::underlying_type_t<CParaSet::ValueType>, std::int32_t>);
}

TEST(Node, IsMadeWithANameAlone) {
    CParaSet node("ne");
    EXPECT_EQ(node.name(), "ne");
    EXPECT_TRUE(node.isNull());
    EXPECT_EQ(node.asResID(), nullptr);
    EXPECT_EQ(node.GetDesc(), "");
    EXPECT_EQ(node.GetTableCount(), 0);
    EXPECT_EQ(node.GetRowCount(), -1);
    EXPECT_TRUE(node.GetVctValue().empty());
    EXPECT_TRUE(node.GetMapValue().empty());
    EXPECT_EQ(FieldsOf(node), (Fields{CParaSet::PARA_NULL, 0, 0.0, ""}));
}

TEST(Node, IsMadeWithAnIntegerOrAText) {
    CParaSet number("n", INT_MIN);
    EXPECT_EQ(number.name(), "n");
    EXPECT_EQ(FieldsOf(number), (Fields{CParaSet::PARA_INT, INT_MIN, 0.0, ""}));
    EXPECT_EQ(number.GetDesc(), "");
    EXPECT_EQ(number.asResID(), nullptr);

    CParaSet text("t", "some text");
    EXPECT_EQ(text.name(), "t");
    EXPECT_EQ(FieldsOf(text), (Fields{CParaSet::PARA_STRING, 0, 0.0, "some text"}));
    EXPECT_EQ(text.GetDesc(), "");
    EXPECT_EQ(text.asResID(), nullptr);
}

// What a type says of its node, and how much of a value each counts. Array and structure
// have children there, string has text, and the fields that the type hides do not count.
TEST(Node, TypeDecidesTagCountAndSize) {
    struct {
        const char* name;
        CParaSet::ValueType type;
        bool is_null;
        int tag;
        int count;
        int size;
    } const rows[] = {
        {"null", CParaSet::PARA_NULL, true, 5, 0, 0},
        {"double", CParaSet::PARA_DOUBLE, false, 9, 1, 8},
        {"int", CParaSet::PARA_INT, false, 2, 1, 4},
        {"string", CParaSet::PARA_STRING, false, 4, 6, 6},
        {"array", CParaSet::PARA_ARRAY, false, 257, 4, 4},
        {"struct", CParaSet::PARA_STRUCT, false, 48, 3, 3},
        {"reserved", CParaSet::PARA_RESERVED, false, 5, 0, 0},
        {"resource", CParaSet::PARA_RESID, false, 48, 0, 0},
        {"unknown", kUnknownType, false, 5, 0, 0},
        {"negative", static_cast<CParaSet::ValueType>(-1), false, 5, 0, 0},
    };
    CParaSet node("n");
    node[3] = 1;  // three null slots before it
    node = 7;
    node["a"] = 1;
    node["b"] = 1;
    node["c"] = 1;
    node.clear("b");  // a null entry
    node.SetType(CParaSet::PARA_STRING);
    node = std::string("ab\0cde", 6);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        node.SetType(row.type);
        EXPECT_EQ(node.type(), row.type);
        EXPECT_EQ(node.isNull(), row.is_null);
        EXPECT_EQ(node.getType(), row.tag);
        EXPECT_EQ(node.count(), row.count);
        EXPECT_EQ(node.size(), row.size);
    }
}

TEST(Node, SetTypeChangesNothingElse) {
    CParaSet node("n");
    node["a"] = 1;
    for (int type = -1; type != 9; ++type) {
        node.SetType(static_cast<CParaSet::ValueType>(type));
    }
    node.SetType(CParaSet::PARA_STRUCT);
    EXPECT_EQ(Shape(node), "{a: 1}");
    EXPECT_EQ(node.name(), "n");
}

TEST(Node, RenamingLeavesTheParentsKey) {
    CParaSet parent("p");
    parent["a"] = 1;
    parent["a"].SetName("b");
    EXPECT_EQ(Shape(parent), "{a(b): 1}");
    EXPECT_EQ(parent.find("b"), nullptr);
    parent.SetName(std::string("p\0q", 3));
    EXPECT_EQ(parent.name(), std::string("p\0q", 3));
}

TEST(Node, DescriptionIsItsOwn) {
    CParaSet node("n");
    std::string text = "what it is";
    node.SetDesc(text);
    text = "changed";
    EXPECT_EQ(node.GetDesc(), "what it is");
    node.GetDesc() += ", and more";
    EXPECT_EQ(node.GetDesc(), "what it is, and more");
    node["a"];
    EXPECT_EQ(node["a"].GetDesc(), "");
}

TEST(Node, ExceptionCarriesItsCode) {
    for (const int code : {-1, -2, -3}) {
        const FRexception failure(code);
        EXPECT_EQ(failure.code(), code);
        EXPECT_STRNE(failure.what(), "");
    }
}

// Nodes may lie wherever their users put them.
TEST(Node, LivesInAnyStorage) {
    const auto single = std::make_unique<CParaSet>("single");
    const auto shared = std::make_shared<CParaSet>("shared");
    const std::unique_ptr<CParaSet[]> several(new CParaSet[2]{"zero", "one"});
    std::vector<CParaSet> grown;
    for (int i = 0; i != 9; ++i) {
        grown.emplace_back("n", i);
    }
    alignas(CParaSet) unsigned char place[sizeof(CParaSet)];
    auto* placed = new (place) CParaSet("placed");
    for (CParaSet* node : {single.get(), shared.get(), &several[1], &grown[0], placed}) {
        (*node)["a.b"][1] = 5;
        EXPECT_EQ(Shape(*node), "{a: {b: [-, 5]}}") << node->name();
    }
    EXPECT_EQ(grown[8].asInt(), 8);
    placed->~CParaSet();
}

}  // namespace
