// The entries without a child that build leaves where the description has names and the
// structure has not: every operation of the parameter set goes on working.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "support/codec.h"
#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;

const FrameUtil::CEndeCode& Codec() {
    static const auto codec = support::CodecOf("1100 0 x 2 -1 -1\n1100 0 y 257 2 -1\n");
    return *codec;
}

// A structure {a: 1} into which build has entered x and y.
class NullEntries : public testing::Test {
  protected:
    NullEntries() {
        tree["a"] = 1;
        EXPECT_EQ(support::Built(Codec(), tree, {1100}), "30 83 00 00 02 30 00");
        EXPECT_EQ(Shape(tree), "{a: 1, x: -, y: -}");
    }
    CParaSet tree{"tree"};
};

TEST_F(NullEntries, Copies) {
    CParaSet copy(tree);
    EXPECT_EQ(Shape(copy), "{a: 1}") << "entries without a child are left out";
    CParaSet assigned("other");
    assigned["x"] = 5;
    assigned = tree;
    EXPECT_EQ(Shape(assigned), "{a: 1}");
    CParaSet outer("outer");
    outer["in"] = tree;
    EXPECT_EQ(Shape(outer), "{in(tree): {a: 1}}");
}

TEST_F(NullEntries, LookUps) {
    EXPECT_EQ(tree.find("x"), nullptr);
    EXPECT_EQ(tree.find("x.z"), nullptr);
    EXPECT_EQ(tree.find("x[0]"), nullptr);
    EXPECT_FALSE(tree.checkParaValid("x"));
    EXPECT_TRUE(tree.checkParaValid("a"));
    EXPECT_EQ(tree.GetIndexByName("x"), 1);
    EXPECT_EQ(tree.count(), 3);
    EXPECT_EQ(tree.size(), 3);
    EXPECT_EQ(tree[0].asInt(), 1);
    EXPECT_EQ(CodeOf([&] { tree[1]; }), -2);
    tree["x"] = 7;
    EXPECT_EQ(Shape(tree), "{a: 1, x: 7, y: -}");
    tree["y.z"] = 8;
    EXPECT_EQ(Shape(tree), "{a: 1, x: 7, y: {z: 8}}");
}

TEST_F(NullEntries, Removal) {
    EXPECT_FALSE(tree.clear("x"));
    EXPECT_TRUE(tree.remove("x"));
    EXPECT_EQ(Shape(tree), "{a: 1, y: -}");
    EXPECT_TRUE(tree.remove(1));
    EXPECT_EQ(Shape(tree), "{a: 1}");
    support::Built(Codec(), tree, {1100});
    tree.clear();
    EXPECT_EQ(Shape(tree), "null");
    tree["b"] = 2;
    EXPECT_EQ(Shape(tree), "{b: 2}");
}

TEST_F(NullEntries, Text) {
    std::ostringstream out;
    int count = 0;
    tree.subDisplay("t", out, count);
    EXPECT_EQ(out.str(), "\nt.a:1(integer).\nt.x:not valued(NULL).\nt.y:not valued(NULL).");
    EXPECT_EQ(count, 1);
}

TEST_F(NullEntries, Rows) {
    CParaSet table("table");
    table.AddRow(0, tree);
    EXPECT_EQ(Shape(table), "{##RowCount: 1, a: [1], x: [null], y: [null]}");
    CParaSet columns("columns");
    columns["a"][0] = 1;
    columns["a"][1] = 2;
    support::Built(Codec(), columns, {1100});
    CParaSet row("row");
    columns.GetRow(1, row);
    EXPECT_EQ(row["a"].asInt(), 2);
    EXPECT_EQ(columns.DelRow(0).asInt(), columns.GetRowCount());
    EXPECT_EQ(columns["a"][0].asInt(), 2);
}

TEST_F(NullEntries, Converters) {
    tree["##TableCount"] = 1;
    tree.GetMapValue()["##UserID"] = nullptr;
    tree.GetMapValue()["##ResID"] = nullptr;
    tree.GetMapValue()["##retCode"] = nullptr;
    tree.GetMapValue()["##ver"] = nullptr;
    FrameUtil::AsnCommonRequest request;
    EXPECT_EQ(tree.Para2CommonReqAsn(request), 0);
    CParaSet from_request("r");
    EXPECT_EQ(from_request.CommonReqAsn2Para(request), 0);
    tree["##TableCount"] = 2;
    FrameUtil::AsnCommonResponse response;
    EXPECT_EQ(tree.Para2CommonRspAsn(response), 0);
    CParaSet from_response("r");
    EXPECT_EQ(from_response.CommonRspAsn2Para(response), 0);
}

TEST_F(NullEntries, Builds) {
    const std::string octets = support::Built(Codec(), tree, {257, 258});
    EXPECT_EQ(octets, "30 83 00 00 0b 30 83 00 00 06 04 01 61 02 01 01");
    EXPECT_EQ(support::Built(Codec(), tree, {257, 258}, 100, support::Form::kText),
              "30 83 00 00 0b 30 83 00 00 06 04 01 61 04 01 31");
}

// A description may be asked of any node; what it enters does not show where the node is no
// structure.
TEST(NullEntriesOfAnyNode, LeaveItsValueAsItWas) {
    for (const CParaSet::ValueType type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("node");
        MakeNode(node, type);
        CParaSet untouched("node");
        MakeNode(untouched, type);
        const std::string built = support::Built(Codec(), node, {1100});
        if (type == CParaSet::PARA_NULL) {
            EXPECT_EQ(built, "");
            continue;
        }
        EXPECT_EQ(built, "30 83 00 00 02 30 00");
        EXPECT_EQ(node.GetMapValue().count("x"), 1u);
        EXPECT_EQ(FieldsOf(node), FieldsOf(untouched));
        const auto shown = [](CParaSet& tree) {
            std::ostringstream out;
            int count = 0;
            tree.subDisplay(nullptr, out, count);
            return out.str();
        };
        CParaSet copy(node);
        EXPECT_EQ(shown(copy), shown(untouched));
        EXPECT_EQ(node.find("x"), nullptr);
        if (type != CParaSet::PARA_STRUCT) {
            EXPECT_EQ(shown(node), shown(untouched));
            EXPECT_EQ(node.count(), untouched.count());
            if (type == CParaSet::PARA_ARRAY) {
                EXPECT_EQ(node.find("[1]")->asInt(), 2);
                EXPECT_TRUE(node.remove(1));
            }
        }
        node.clear();
        EXPECT_TRUE(node.GetMapValue().empty());
    }
}

}  // namespace
