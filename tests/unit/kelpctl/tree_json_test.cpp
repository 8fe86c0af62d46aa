#include "kelpctl/paraset/tree_json.h"

#include <gmock/gmock.h>

#include <sstream>

#include "kelpctl/paraset/compare.h"
#include "random_tree.h"
#include "support/paraset_shape.h"

namespace {

using FrameUtil::CParaSet;
using kelpctl::Complaint;
using kelpctl::ParseTree;
using kelpctl::PrintTree;
using testing::HasSubstr;

std::string Printed(CParaSet& tree) {
    std::ostringstream out;
    PrintTree(tree, out);
    return out.str();
}

// Each kind of value has one spelling in JSON, which reads back as it.
TEST(TreeJson, EveryKindComesBack) {
    const struct {
        const char* json;
        const char* shape;
    } cases[] = {
        {"null", "null"},
        {"-2147483648", "-2147483648"},
        {"1.0", "1d"},
        {"-0.0", "-0d"},
        {"1e+300", "1e+300d"},
        {R"({"$double": "NaN"})", "nand"},
        {R"({"$double": "-Infinity"})", "-infd"},
        {R"("a\"\\ \u0007\u0000 \u202e")", "\"a\"\\ \a\\0 \u202e\""},
        {R"({"$bytes": "ff00"})", "\"\xff\\0\""},
        {"[]", "[]"},
        {"{}", "{}"},
        {R"([1, {"$absent": true}, null])", "[1, -, null]"},
        {"{\n  \"$$a\": 1,\n  \"$bytes:ff\": 2,\n  \"b\": {\"$absent\": true}\n}",
         "{$a: 1, b: -, \xff: 2}"},
        {"{\n  \"a\": {\"$name\": \"b\", \"$value\": 7}\n}", "{a(b): 7}"},
        {R"({"$resource": null})", "resource(-)"},
        {R"({"$resource": {"resDN": "NE=7"}})", "resource(NE=7)"},
    };
    for (const auto& c : cases) {
        CParaSet tree("root");
        Complaint why;
        ASSERT_TRUE(ParseTree(c.json, tree, why)) << c.json << ": " << why.Line();
        EXPECT_EQ(Shape(tree), c.shape) << c.json;
        if (std::string_view(c.json).find("$$a") == std::string_view::npos) {
            EXPECT_EQ(Printed(tree), std::string(c.json) + "\n");
        }
    }
}

TEST(TreeJson, NameAndDescriptionStandBesideTheValue) {
    CParaSet tree("root");
    Complaint why;
    const char* const json = R"({"$name": {"$bytes": "ff"}, "$desc": "ports", "$value": [1]})";
    ASSERT_TRUE(ParseTree(json, tree, why)) << why.Line();
    EXPECT_EQ(tree.name(), "\xff");
    EXPECT_EQ(tree.GetDesc(), "ports");
    EXPECT_EQ(tree[0].asInt(), 1);
    EXPECT_EQ(Printed(tree), std::string(json) + "\n");
}

TEST(TreeJson, ResourceRecordsKeepEveryField) {
    const char* const json =
        R"({"$resource": {"resDN": "a", "label": {"$bytes": "ff"}, "maintype": 9000000000, )"
        R"("subtype": -1, "iResNumber": 2, "wholeLabel": "w", "aResRelation": )"
        R"([{"iRelation": 1, "iDepend": 2, "aResDN": ["x", "y"]}]}})";
    CParaSet tree("root");
    Complaint why;
    ASSERT_TRUE(ParseTree(json, tree, why)) << why.Line();
    EXPECT_EQ(*tree.asResID()->maintype, 9000000000);
    EXPECT_EQ(Printed(tree), std::string(json) + "\n");
}

TEST(TreeJson, RefusalNamesThePlace) {
    const struct {
        const char* json;
        const char* path;
        const char* text;
    } cases[] = {
        {"{", "", "malformed JSON"},
        {R"({"a": [0, {"b c": 3000000000}]})", R"($.a[1]["b c"])", "does not fit an integer"},
        {"[-]", "$[0]", "- is no number"},
        {"[00]", "$[0]", "00 is no number"},
        {"[1.]", "$[0]", "1. is no number"},
        {"[1e]", "", "malformed JSON"},
        {"[false]", "$[0]", "true and false"},
        {R"({"$resource": {"resDN": "", "maintype": 1.5}})", R"($["$resource"].maintype)",
         "is no integer of 64 bits"},
        {R"({"$resource": {"resDN": "", "aResRelation": [{}]}})",
         R"($["$resource"].aResRelation[0])", "has no member \"iRelation\""},
    };
    for (const auto& c : cases) {
        CParaSet tree("root");
        Complaint why;
        EXPECT_FALSE(ParseTree(c.json, tree, why)) << c.json;
        EXPECT_EQ(why.path, c.path) << c.json;
        EXPECT_THAT(why.text, HasSubstr(c.text)) << c.json;
    }
}

TEST(TreeJson, DepthIsBounded) {
    const auto nested = [](int levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    for (const bool fits : {true, false}) {
        CParaSet tree("root");
        Complaint why;
        const int levels = kelpctl::kTreeJsonDepth + (fits ? -1 : 1);
        EXPECT_EQ(ParseTree(nested(levels), tree, why), fits) << why.Line();
        if (fits) {
            CParaSet again("root");
            EXPECT_TRUE(ParseTree(Printed(tree), again, why)) << why.Line();
        }
    }
}

// Whatever a tree holds, its JSON reads back as the same tree, and prints the same again.
TEST(TreeJson, GeneratedTreesComeBack) {
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        CParaSet tree("root");
        RandomTree(seed).Fill(tree, 5);
        const std::string json = Printed(tree);
        CParaSet read("root");
        Complaint why;
        ASSERT_TRUE(ParseTree(json, read, why)) << seed << ": " << why.Line() << '\n' << json;
        const auto loss = FirstLoss(tree, read, kelpctl::Nulls::kStay);
        ASSERT_FALSE(loss) << seed << ": " << loss->Line() << '\n' << json;
        ASSERT_EQ(Shape(tree), Shape(read)) << seed;
        ASSERT_EQ(Printed(read), json) << seed;
    }
}

}  // namespace
