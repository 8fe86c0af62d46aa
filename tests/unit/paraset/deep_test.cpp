// Trees of a million levels, paths of a million components and very many siblings, on a
// stack that no recursion over them would fit.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "support/paraset_shape.h"
#include "support/small_stack.h"

namespace {

using FrameUtil::CParaSet;

constexpr int kLevels = 1000000;
constexpr int kFewerLevels = 100000;  // still more than the stack has frames for

// "a.a.a" of `components` names.
std::string LongPath(int components) {
    std::string path = "a";
    for (int i = 1; i != components; ++i) {
        path += ".a";
    }
    return path;
}

void DeepStructure(CParaSet& root) {
    root[LongPath(kLevels)] = 7;
}

void DeepArray(CParaSet& root) {
    CParaSet* node = &root;
    for (int i = 0; i != kLevels; ++i) {
        node = &(*node)[0];
    }
    *node = 7;
}

void DeepMixture(CParaSet& root) {
    CParaSet* node = &root;
    for (int i = 0; i != kFewerLevels; i += 2) {
        (*node)["z"] = 1;
        node = &(*node)["a"];
        (*node)[2] = 2;
        node = &(*node)[1];
    }
    *node = 7;
}

// Lost children of lost children, a chain that nothing but the owners know.
void DeepRemoved(CParaSet& root) {
    CParaSet* node = &root;
    for (int i = 0; i != kFewerLevels; ++i) {
        CParaSet* child = &(*node)["a"];
        node->remove(0);
        node = child;
    }
}

class DeepTree : public testing::TestWithParam<std::pair<const char*, void (*)(CParaSet&)>> {
  protected:
    DeepTree() { GetParam().second(*root); }
    std::unique_ptr<CParaSet> root = std::make_unique<CParaSet>("root");
};

// How many levels lie below the node: the first child each time.
int LevelsBelow(CParaSet& root) {
    int levels = 0;
    for (CParaSet* node = &root;; ++levels) {
        if (!node->GetMapValue().empty()) {
            node = node->GetMapValue().begin()->second;
        } else if (!node->GetVctValue().empty()) {
            node = node->GetVctValue().front() != nullptr ? node->GetVctValue().front()
                                                          : node->GetVctValue()[1];
        } else {
            return levels;
        }
    }
}

TEST_P(DeepTree, IsCopiedClearedAndDestroyed) {
    const int levels = LevelsBelow(*root);
    OnSmallStack([&] {
        CParaSet copy(*root);
        EXPECT_EQ(LevelsBelow(copy), levels);
        root->clear();
        EXPECT_EQ(Shape(*root), "null");
        EXPECT_EQ(LevelsBelow(copy), levels);
        *root = copy;
        EXPECT_EQ(LevelsBelow(*root), levels);
    });
    (*root).clear();
    (*root)["a"] = 1;
    EXPECT_EQ(Shape(*root), "{a: 1}");
}

TEST_P(DeepTree, IsAssignedWithinItself) {
    const int levels = LevelsBelow(*root);
    OnSmallStack([&] {
        CParaSet parent("parent");
        parent["child"] = *root;
        parent["other"];
        parent = parent["child"];
        EXPECT_EQ(LevelsBelow(parent), levels);
        CParaSet below("below");
        below["left"];
        below["right"] = *root;
        below["right"] = below;
    });
}

TEST_P(DeepTree, IsRemoved) {
    const struct {
        const char* name;
        void (*act)(CParaSet& parent);
    } rows[] = {
        {"remove by name", [](CParaSet& p) { EXPECT_TRUE(p.remove("b")); }},
        {"clear by name", [](CParaSet& p) { EXPECT_TRUE(p.clear("b")); }},
        {"remove by index, then clear", [](CParaSet& p) { EXPECT_TRUE(p.remove(1)), p.clear(); }},
        {"remove from an array",
         [](CParaSet& p) {
             CParaSet list("list");
             list[0];
             std::swap(list.GetVctValue()[0], p.GetMapValue()["b"]);
             EXPECT_TRUE(list.remove(0));
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet parent("parent");
        parent["a"];
        parent.GetMapValue()["b"] = root.release();
        OnSmallStack([&] { row.act(parent); });
        root = std::make_unique<CParaSet>("root");
        GetParam().second(*root);
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, DeepTree,
                         testing::Values(std::pair("Structure", &DeepStructure),
                                         std::pair("Array", &DeepArray),
                                         std::pair("Mixture", &DeepMixture),
                                         std::pair("Removed", &DeepRemoved)),
                         [](const auto& shape) { return std::string(shape.param.first); });

TEST(LongPath, IsMadeAndFound) {
    const std::string path = LongPath(kLevels);
    CParaSet root("root");
    OnSmallStack([&] {
        root[path] = 7;
        EXPECT_EQ(root.find(path), &root[path]);
        EXPECT_EQ(root.find(path)->asInt(), 7);
        EXPECT_EQ(root.find(path + ".a"), nullptr);
        EXPECT_TRUE(root.checkParaValid(path));
        EXPECT_EQ(root.GetIndexByName(path), 0);
        EXPECT_FALSE(root.remove(path));
    });
    EXPECT_EQ(LevelsBelow(root), kLevels);
}

TEST(LongPath, OfEmptyComponentsAndIndexes) {
    CParaSet root("root");
    CParaSet list("list");
    list[0] = 5;
    DeepArray(root);
    std::string indexes;
    for (int i = 0; i != kLevels; ++i) {
        indexes += "[0].";
    }
    OnSmallStack([&] {
        EXPECT_EQ(root.find(std::string(kLevels, '.')), &root);
        ASSERT_NE(root.find(indexes), nullptr);
        EXPECT_EQ(root.find(indexes)->asInt(), 7);
        EXPECT_EQ(list.find("[" + std::string(kLevels, '0') + "]"), &list[0]);
        EXPECT_EQ(list.find("[" + std::string(kLevels, '9') + "]"), nullptr);
    });
}

TEST(WideTree, IsUsedAsASmallOne) {
    constexpr int kWidth = 200000;
    CParaSet root("root");
    for (int i = 0; i != kWidth; ++i) {
        root["list"][i] = i;
        root[std::to_string(i)] = i;
    }
    CParaSet copy(root);
    EXPECT_EQ(copy["list"].count(), kWidth);
    EXPECT_EQ(copy.count(), kWidth + 1);
    root = copy["list"];
    EXPECT_EQ(root.count(), kWidth);
    EXPECT_EQ(root[kWidth - 1].asInt(), kWidth - 1);
}

}  // namespace
