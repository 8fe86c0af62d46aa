// Table records into nodes that hold something already.
#include <gtest/gtest.h>

#include <string>

#include "paraset/tables.h"
#include "unit/paraset/record_text.h"

namespace {

using FrameUtil::AsnTable;
using FrameUtil::CParaSet;
using FrameUtil::Table2ParaSet;

TEST(TableDecoder, GivesColumnsTheirDescriptions) {
    AsnTable table;
    AddColumn(table, "a", 2);
    AddColumn(table, "b", 2);
    AddColumn(table, "absent", 2);
    int i = 0;
    for (auto& item : *table.schema) {
        item.desc.Emplace("description " + std::to_string(i++));
    }
    AppendRow(table, {1, 2, {}});
    CParaSet one("n");
    EXPECT_EQ(Table2ParaSet(&table, one), 0);
    EXPECT_EQ(Shape(one), "{##RowCount: 1, a: 1, absent: null, b: 2}");
    AppendRow(table, {3, 4, {}});
    CParaSet two("n");
    EXPECT_EQ(Table2ParaSet(&table, two), 0);
    EXPECT_EQ(Shape(two), "{##RowCount: 2, a: [1, 3], absent: null, b: [2, 4]}");
    for (CParaSet* node : {&one, &two}) {
        EXPECT_EQ((*node)["a"].GetDesc(), "description 0");
        EXPECT_EQ((*node)["b"].GetDesc(), "description 1");
        EXPECT_EQ((*node)["absent"].GetDesc(), "description 2");
    }
    EXPECT_EQ(two["a"][0].GetDesc(), "");
    table.schema->begin()->desc.reset();
    EXPECT_EQ(Table2ParaSet(&table, two), 0);
    EXPECT_EQ(two["a"].GetDesc(), "description 0") << "an absent description changes nothing";
}

// What a node already holds is merged with what arrives, by the rules of assignment.
TEST(TableDecoder, MergesIntoWhatIsThere) {
    const struct {
        const char* name;
        void (*before)(CParaSet&);
        int type;
        Cell first, second;
        int code;
        const char* one;  // with the first row alone
        int code_of_two;
        const char* two;
    } rows[] = {
        {"integer over integer", [](CParaSet& n) { n = 1; }, 2, 7, 8, 0, "7", 0, "8"},
        {"integer over double", [](CParaSet& n) { n = 1.5; }, 2, 7, 8, 0, "7d", 0, "8d"},
        {"integer over string", [](CParaSet& n) { n = "s"; }, 2, 7, 8, 0, "7", 0, "8"},
        {"integer over array", [](CParaSet& n) { n[2] = 1; }, 2, 7, 8, 0, "7", 0, "[7, 8, 1]"},
        {"integer over structure", [](CParaSet& n) { n["x"] = 1, n["y"] = 2; }, 2, 7, 8, 0, "7", 0,
         "{x: 7, y: 8}"},
        {"integer over a small structure", [](CParaSet& n) { n["x"] = 1; }, 2, 7, 8, 0, "7", -2,
         "{x: 7}"},
        {"double over integer", [](CParaSet& n) { n = 1; }, 9, 7.5, 8.5, -3, "1", -3, "1"},
        {"double over double", [](CParaSet& n) { n = 1.5; }, 9, 7.5, 8.5, 0, "7.5d", 0, "8.5d"},
        {"double over array", [](CParaSet& n) { n[0] = 1; }, 9, 7.5, 8.5, -3, "[1]", -3, "[1]"},
        {"string over integer", [](CParaSet& n) { n = 1; }, 4, "x", "y", 0, "\"x\"", 0, "\"y\""},
        {"string over array", [](CParaSet& n) { n[2]["k"] = 1; }, 4, "x", "y", 0, "\"x\"", 0,
         "[\"x\", \"y\", {k: 1}]"},
        {"nothing over integer", [](CParaSet& n) { n = 1; }, 2, {}, {}, 0, "1", 0, "1"},
        {"nothing over array", [](CParaSet& n) { n[0] = 1; }, 2, {}, {}, 0, "[1]", 0, "[1]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AsnTable table;
        AddColumn(table, "a", row.type);
        AppendRow(table, {row.first});
        CParaSet one("n");
        CParaSet two("n");
        one["other"] = two["other"] = 5;
        row.before(one["a"]);
        row.before(two["a"]);
        EXPECT_EQ(CodeOf([&] { Table2ParaSet(&table, one); }), row.code);
        EXPECT_EQ(Shape(one["a"]), row.one);
        AppendRow(table, {row.second});
        EXPECT_EQ(CodeOf([&] { Table2ParaSet(&table, two); }), row.code_of_two);
        EXPECT_EQ(Shape(two["a"]), row.two);
        EXPECT_EQ(one["other"].asInt(), 5);
        EXPECT_EQ(one.GetRowCount(), 1);
        EXPECT_EQ(two.GetRowCount(), 2);
    }
}

TEST(TableDecoder, DoesNotDecodeIntoAnArray) {
    AsnTable table;
    AddColumn(table, "a", 2);
    AppendRow(table, {1});
    CParaSet list("list");
    list[0] = 1;
    EXPECT_EQ(CodeOf([&] { Table2ParaSet(&table, list); }), -3);
    EXPECT_EQ(Shape(list), "[1]");
}

}  // namespace
