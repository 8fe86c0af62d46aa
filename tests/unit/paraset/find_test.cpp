// find() and checkParaValid(): which node a path means.
#include <gtest/gtest.h>

#include <string>

#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;

// A tree with a child for every odd name that the paths below may or may not mean.
class Find : public testing::Test {
  protected:
    Find() {
        p["ne.port"][2]["name"] = "eth2";
        p["ne.port"][0] = 80;
        p["lst"][0] = 10;
        p["lst"][1]["x"] = 11;
        p["scalar"] = 5;
        p["none"];
        p["empty"] = 1;
        p.clear("empty");
        p["a]b"][1] = 12;
        p["a[1"]["5]"] = 13;
        p["]["] = 14;
        p["x]"] = 15;
        p[""] = 16;
    }
    CParaSet p{"p"};
};

TEST_F(Find, MeansOneNodeOrNone) {
    CParaSet& port = p["ne"]["port"];
    CParaSet& lst = p["lst"];
    CParaSet* const nothing = nullptr;
    const struct {
        const char* path;
        CParaSet* node;
    } rows[] = {
        // names
        {"ne", &p["ne"]},
        {"ne.port", &port},
        {"ne.none", nothing},
        {"nothing", nothing},
        {"nothing.at.all", nothing},
        {"Ne", nothing},
        {"scalar", &p["scalar"]},
        {"scalar.x", nothing},
        {"none", &p["none"]},
        {"empty", nothing},
        {"empty.x", nothing},
        {"empty[0]", nothing},
        // a component without a name is the node itself
        {"", &p},
        {".", &p},
        {"...", &p},
        {"ne.", &p["ne"]},
        {".ne", &p["ne"]},
        {"ne..port", &port},
        {"nothing.", nothing},
        // indexes
        {"ne.port[2]", &port[2]},
        {"ne.port[2].name", &port[2]["name"]},
        {"ne.port[0]", &port[0]},
        {"ne.port[3]", nothing},
        {"ne.port[3].name", nothing},
        {"lst[0]", &lst[0]},
        {"lst[1].x", &lst[1]["x"]},
        {"lst[2]", nothing},
        {"lst.[1].x", &lst[1]["x"]},
        {"lst.[1]", &lst[1]},
        {"[0]", nothing},
        {"nothing[0]", nothing},
        {"scalar[0]", nothing},
        {"none[0]", nothing},
        // how the number between the brackets is read
        {"lst[-1]", nothing},
        {"lst[-0]", &lst[0]},
        {"[-1]", nothing},
        {"nothing[-1]", nothing},
        {"lst[+1]", &lst[1]},
        {"lst[ 1]", &lst[1]},
        {"lst[01]", &lst[1]},
        {"lst[1x]", &lst[1]},
        {"lst[0x1]", &lst[0]},
        {"lst[]", &lst[0]},
        {"lst[x]", &lst[0]},
        {"lst[2147483648]", nothing},
        {"lst[4294967296]", nothing},
        {"lst[4294967297]", nothing},
        {"lst[9223372036854775807]", nothing},
        {"lst[18446744073709551616]", nothing},
        {"lst[99999999999999999999999]", nothing},
        {"lst[-99999999999999999999999]", nothing},
        // what stands behind the brackets does not matter
        {"lst[1]y", &lst[1]},
        {"lst[0][1]", &lst[0]},
        {"lst[1]].x", &lst[1]["x"]},
        {"lst[[1]", &lst[0]},
        // brackets that are no index
        {"a[1", &p["a[1"]},
        {"a[1.5]", &p["a[1"]["5]"]},
        {"lst[1.x]", nothing},
        {"lst[", nothing},
        {"lst]", nothing},
        {"x]", &p["x]"]},
        // the name ends at the first opening bracket, whatever stands before it; the number
        // is read behind that bracket
        {"a]b[1]", &p["a]b"][1]},
        {"a]b[7]", nothing},
    };
    const std::string before = Shape(p);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(p.find(row.path), row.node);
        EXPECT_EQ(p.find(std::string(row.path)), row.node);
        EXPECT_EQ(p.checkParaValid(row.path), row.node != nullptr && !row.node->isNull());
    }
    EXPECT_EQ(Shape(p), before) << "nothing is made";
}

TEST_F(Find, TakesAnIndexWithoutANameAsItsOwn) {
    CParaSet& lst = p["lst"];
    EXPECT_EQ(lst.find("[1]"), &lst[1]);
    EXPECT_EQ(lst.find("[1].x"), &lst[1]["x"]);
    EXPECT_EQ(lst.find("[2]"), nullptr);
    EXPECT_EQ(lst.find("[-1]"), nullptr);
    EXPECT_EQ(lst.find(""), &lst);
    EXPECT_EQ(lst.find("x"), nullptr);
}

TEST_F(Find, FillsANullSlot) {
    CParaSet& port = p["ne.port"];
    ASSERT_EQ(port.GetVctValue()[1], nullptr);
    EXPECT_FALSE(p.checkParaValid("ne.port[1]"));
    ASSERT_NE(port.GetVctValue()[1], nullptr) << "an element that is asked for is made";
    EXPECT_EQ(p.find("ne.port[1]"), port.GetVctValue()[1]);
    EXPECT_EQ(port[1].name(), "root");
    EXPECT_TRUE(port[1].isNull());
    EXPECT_EQ(p.find("ne.port[1].x"), nullptr);
    EXPECT_TRUE(port[1].isNull()) << "but no named child is";
}

// Names are looked up whatever the type says, and so is the child list's length.
TEST_F(Find, LooksAtChildrenWhateverTheType) {
    for (int type = 0; type != 8; ++type) {
        if (type == CParaSet::PARA_STRUCT) {
            continue;  // the next test
        }
        SCOPED_TRACE(type);
        CParaSet node("n");
        CParaSet& element = node[0];
        node.SetType(CParaSet::PARA_STRUCT);
        CParaSet& child = node["a"];
        node.SetType(static_cast<CParaSet::ValueType>(type));
        EXPECT_EQ(node.find("a"), &child);
        EXPECT_EQ(node.find("[1]"), nullptr);
        // Index access of a node with no value begins an array, of a scalar is the scalar.
        const bool is_list = type == CParaSet::PARA_ARRAY || type == CParaSet::PARA_NULL;
        EXPECT_EQ(node.find("[0]"), is_list ? &element : &node);
    }
}

TEST_F(Find, IndexesAStructureThatHasAListAsWell) {
    CParaSet node("n");
    node[2] = 1;
    node.SetType(CParaSet::PARA_STRUCT);
    node["a"] = 1;
    node["b"] = 2;
    node.clear("b");
    EXPECT_EQ(node.find("[0]"), node.find("a"));
    EXPECT_EQ(CodeOf([&] { node.find("[1]"); }), -2) << "an entry without a child";
    EXPECT_EQ(CodeOf([&] { node.find("[2]"); }), -2) << "fewer entries than slots";
    EXPECT_EQ(node.find("[3]"), nullptr) << "not in the list at all";
}

}  // namespace
