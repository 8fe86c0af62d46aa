#include "kelpctl/paraset/compare.h"

#include <gtest/gtest.h>

#include "kelpctl/paraset/tree_json.h"

namespace {

using FrameUtil::CParaSet;
using kelpctl::Nulls;

// What reading changed is named with its place; what it may add or drop is not.
TEST(FirstLoss, NamesTheFirstDifference) {
    const struct {
        const char* meant;
        const char* read;
        Nulls nulls;
        const char* loss;
    } cases[] = {
        {"1", "1", Nulls::kStay, ""},
        {"1", "1.0", Nulls::kStay, ""},
        {"1", "2", Nulls::kStay, "$: would read back with another value"},
        {"1", "1.5", Nulls::kStay, "$: would read back with another value"},
        {"1.0", "1", Nulls::kStay, "$: would read back as an integer, not as a double"},
        {"0.0", "-0.0", Nulls::kStay, "$: would read back with another value"},
        {R"({"$double": "NaN"})", R"({"$double": "NaN"})", Nulls::kStay, ""},
        {R"("a")", R"("b")", Nulls::kStay, "$: would read back with another value"},
        {"[1, 2]", "[1]", Nulls::kStay, "$[1]: would be lost"},
        {"[1]", "[1, 2]", Nulls::kStay, "$: would read back with more elements"},
        {R"([{"$absent": true}])", "[null]", Nulls::kStay, "$[0]: would read back with a value"},
        {"[null]", R"([{"$absent": true}])", Nulls::kStay, "$[0]: would be lost"},
        {R"([1, {"$absent": true}])", "[1]", Nulls::kStay, "$[1]: would be lost"},
        {R"({"a": [{"b": 1}]})", R"({"a": [{"b": 2}]})", Nulls::kStay,
         "$.a[0].b: would read back with another value"},
        {R"({"a": 1})", "{}", Nulls::kStay, "$.a: would be lost"},
        {"{}", R"({"a": 1})", Nulls::kStay, "$.a: would be read where nothing was meant"},
        {"{}", R"({"a": []})", Nulls::kStay, ""},
        {"{}", R"({"a": {}})", Nulls::kStay, ""},
        {"{}", R"({"##UserID": 1})", Nulls::kStay, ""},
        {R"({"a": {}})", R"({"a": {"##UserID": 1}})", Nulls::kStay,
         "$.a.##UserID: would be read where nothing was meant"},
        {R"({"a": null})", "{}", Nulls::kStay, "$.a: would be lost"},
        {R"({"a": null})", "{}", Nulls::kVanish, ""},
        {R"({"a": {"$absent": true}})", "{}", Nulls::kVanish, ""},
        {R"({"a": {"$absent": true}})", "{}", Nulls::kStay, "$.a: would be lost"},
        {R"({"a": {"$absent": true}})", R"({"a": {"$absent": true}})", Nulls::kStay, ""},
        {R"({"a": {"$absent": true}})", R"({"a": []})", Nulls::kVanish, ""},
        {R"({"a": {"$absent": true}})", R"({"a": 1})", Nulls::kVanish,
         "$.a: would be read where nothing was meant"},
        {R"({"a": {"$absent": true}})", R"({"a": 1})", Nulls::kStay,
         "$.a: would read back with a value"},
        {R"({"$name": "n", "$value": 1})", "1", Nulls::kStay,
         R"($: would read back with the name "root")"},
        {R"({"$desc": "n", "$value": 1})", "1", Nulls::kStay,
         "$: would read back without its description"},
        {R"({"$resource": {"resDN": "a"}})", R"({"$resource": {"resDN": "a"}})", Nulls::kStay, ""},
        {R"({"$resource": {"resDN": "a"}})", R"({"$resource": {"resDN": "b"}})", Nulls::kStay,
         "$: would read back with another value"},
        {R"({"$resource": {"resDN": "a"}})", R"({"$resource": null})", Nulls::kStay,
         "$: would read back with another value"},
    };
    for (const auto& c : cases) {
        CParaSet meant("root");
        CParaSet read("root");
        kelpctl::Complaint why;
        ASSERT_TRUE(kelpctl::ParseTree(c.meant, meant, why)) << c.meant;
        ASSERT_TRUE(kelpctl::ParseTree(c.read, read, why)) << c.read;
        const auto loss = FirstLoss(meant, read, c.nulls);
        EXPECT_EQ(loss ? loss->Line() : "", c.loss) << c.meant << " and " << c.read;
    }
}

}  // namespace
