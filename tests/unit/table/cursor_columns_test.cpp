// The columns of a table with a cursor: unique names, declared types.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CFrmTableObject;
namespace Enum = refl::Enum;

TEST(CursorColumns, NamesAreMadeUnique) {
    const struct {
        std::vector<const char*> names;
        const char* cols;
    } cases[] = {
        {{"ID", "NAME", "ID"}, "ID NAME ID0"},
        {{"A", "A", "A"}, "A A0 A01"},
        {{"A", "A", "A", "A"}, "A A0 A01 A012"},
        {{"X", "A", "A", "A"}, "X A A1 A12"},
        {{"A", "a"}, "A a"},
        {{"A1", "A", "A"}, "A1 A A1"},  // what was gone through is not looked at again
        {{"A", "A0", "A"}, "A A0 A01"},
        {{"", ""}, " 0"},
    };
    for (const auto& each : cases) {
        CFrmTableObject table;
        for (const char* name : each.names) {
            EXPECT_EQ(table.AddCol(name), 0);
        }
        EXPECT_EQ(ColsText(table), each.cols);
    }
}

TEST(CursorColumns, OfEqualNamesTheFirstIsFound) {
    CFrmTableObject table;
    for (const char* name : {"A1", "A", "A"}) {
        table.AddCol(name);
    }
    EXPECT_EQ(table.FindCol("A1"), 0);
}

TEST(CursorColumns, AddColRefuses) {
    CFrmTableObject table;
    EXPECT_EQ(table.AddCol(nullptr), -1);
    EXPECT_EQ(table.AddCol("A"), 0);
    table.AddRow(1);
    EXPECT_EQ(table.AddCol("B"), -1);
    EXPECT_EQ(table.AddCol("A"), -1);
    EXPECT_EQ(ColsText(table), "A");
    EXPECT_EQ(table.SetColType(1, Enum::DT_INT), -1) << "and no type has been added";
}

TEST(CursorColumns, AddColByTheBaseClass) {
    CFrmTableObject table;
    FrameUtil::CBMSTableObject& base = table;
    EXPECT_EQ(base.AddCol("A"), 0);
    EXPECT_EQ(base.AddCol("A"), 0);
    EXPECT_EQ(ColsText(table), "A A0");
    EXPECT_EQ(table.SetColType(1, Enum::DT_INT), 0);
}

TEST(CursorColumns, Types) {
    CFrmTableObject table;
    EXPECT_EQ(table.SetColType(0, Enum::DT_INT), -1);
    table.AddCol("a");
    table.AddCol("b");
    EXPECT_EQ(table.GetColType(0), Enum::DT_EMPTY);
    const struct {
        int col;
        int result;
        int type;
    } cases[] = {
        {0, 0, 41}, {1, 0, 41}, {2, -1, 0}, {-1, -1, 0}, {INT_MAX, -1, 0}, {INT_MIN, -1, 0},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(table.SetColType(each.col, Enum::DT_TEXT), each.result) << each.col;
        EXPECT_EQ(table.GetColType(each.col), each.type) << each.col;
    }
}

// Types outlive the columns: a table filled again answers with the earlier ones.
TEST(CursorColumns, RemoveAllLeavesTheTypes) {
    CFrmTableObject table;
    table.AddCol("a");
    table.AddCol("b");
    table.SetColType(0, Enum::DT_INT);
    table.SetColType(1, Enum::DT_TEXT);
    table.RemoveAll();
    EXPECT_EQ(table.GetColType(0), Enum::DT_INT);
    EXPECT_EQ(table.GetColType(1), Enum::DT_TEXT);
    table.AddCol("c");
    EXPECT_EQ(table.GetColType(0), Enum::DT_INT) << "the new column's entry is the third";
    EXPECT_EQ(table.GetColType(2), Enum::DT_EMPTY);
    EXPECT_EQ(table.SetColType(2, Enum::DT_DOUBLE), 0);
    EXPECT_EQ(table.SetColType(3, Enum::DT_DOUBLE), -1);
}

TEST(CursorColumns, TypesAreCopied) {
    CFrmTableObject table;
    table.AddCol("a");
    table.SetColType(0, Enum::DT_INT);
    CFrmTableObject copy(table);
    CFrmTableObject assigned;
    assigned.AddCol("x");
    assigned.AddCol("y");
    assigned = table;
    table.SetColType(0, Enum::DT_TEXT);
    for (const CFrmTableObject* each : {&copy, &assigned}) {
        EXPECT_EQ(each->GetColType(0), Enum::DT_INT);
        EXPECT_EQ(ColsText(*each), "a");
    }
    EXPECT_EQ(assigned.SetColType(1, Enum::DT_INT), -1);
}

}  // namespace
