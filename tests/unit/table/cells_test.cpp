// Cells: set and got by column and row; copies of tables.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <type_traits>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;

CBMSTableObject ThreeColumns() {
    CBMSTableObject table(std::vector<std::string>{"a", "b", "c"});
    AddRows(table, {{1, 2, 3}, {4, 5, 6}});
    return table;
}

TEST(TableCells, ColumnComesFirst) {
    CBMSTableObject table = ThreeColumns();
    EXPECT_EQ(table.SetCellValue(2, 0, TEValue("x")), 0);
    EXPECT_EQ(RowsText(table), "1 2 x | 4 5 6");
    EXPECT_EQ(table.GetCellValue(0, 1).As_int(), 4);
    EXPECT_EQ(table.GetCellValue("b", 1).As_int(), 5);
    EXPECT_EQ(table.SetCellValue("b", 1, TEValue()), 0);
    EXPECT_EQ(RowsText(table), "1 2 x | 4 - 6");
}

// Every invalid address gives the one empty value of the process, and sets nothing.
TEST(TableCells, InvalidAddresses) {
    CBMSTableObject table = ThreeColumns();
    CBMSTableObject other;
    const TEValue& empty = other.GetCellValue(0, 0);
    EXPECT_TRUE(empty.IsNull());
    const struct {
        int col, row;
    } cases[] = {
        {5, 0},   {3, 0},  {-1, 0},      {INT_MAX, 0},       {INT_MIN, 0},
        {0, 2},   {0, -1}, {0, INT_MAX}, {INT_MAX, INT_MAX}, {0, INT_MIN},
        {-1, -1},
    };
    for (const auto& at : cases) {
        SCOPED_TRACE(std::to_string(at.col) + ", " + std::to_string(at.row));
        EXPECT_EQ(&table.GetCellValue(at.col, at.row), &empty);
        EXPECT_EQ(table.SetCellValue(at.col, at.row, TEValue("x")), -1);
    }
    for (const char* name : {"d", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(&table.GetCellValue(name, 0), &empty);
        EXPECT_EQ(table.SetCellValue(name, 0, TEValue("x")), -1);
    }
    EXPECT_EQ(&table.GetCellValue("a", 2), &empty);
    EXPECT_EQ(table.SetCellValue("a", -1, TEValue("x")), -1);
    EXPECT_EQ(RowsText(table), "1 2 3 | 4 5 6");
    EXPECT_TRUE(empty.IsNull());
}

// A caller left the rows with other lengths than the columns.
TEST(TableCells, OfShortAndLongRows) {
    CBMSTableObject table = ThreeColumns();
    table.GetRow(0)->resize(1);
    table.GetRow(1)->resize(5, TEValue("more"));
    EXPECT_TRUE(table.GetCellValue(1, 0).IsNull());
    EXPECT_EQ(table.SetCellValue(1, 0, TEValue("x")), -1);
    EXPECT_EQ(table.SetCellValue(0, 0, TEValue("x")), 0);
    EXPECT_TRUE(table.GetCellValue(3, 1).IsNull()) << "there is no such column";
    EXPECT_EQ(table.SetCellValue(3, 1, TEValue("x")), -1);
    EXPECT_EQ(RowsText(table), "x | 4 5 6 more more");
}

TEST(TableCells, OfTheSameTable) {
    CBMSTableObject table = ThreeColumns();
    const std::string text(100, 't');
    table.SetCellValue(0, 0, TEValue(text));
    table.SetCellValue(0, 0, table.GetCellValue(0, 0));
    table.SetCellValue(1, 0, table.GetCellValue(0, 0));
    EXPECT_EQ(table.GetCellValue(1, 0).As_std_string(), text);
    EXPECT_EQ(table.GetCellValue(0, 0).As_std_string(), text);
}

TEST(TableCopy, HasEverythingForItself) {
    CBMSTableObject table = ThreeColumns();
    table.SetTableName("t");
    std::vector<int> keys{0};
    table.Sort(keys, 3);
    CBMSTableObject copy(table);
    CBMSTableObject assigned(std::vector<std::string>{"z"});
    assigned.AddRow(1);
    assigned = table;
    table.RemoveAll();
    table.AddCol("d");
    table.SetTableName("other");
    for (const CBMSTableObject* each : {&copy, &assigned}) {
        EXPECT_EQ(each->GetTableName(), "t");
        EXPECT_EQ(each->GetSortType(), 3);
        EXPECT_EQ(ColsText(*each), "a b c");
        EXPECT_EQ(each->FindCol("c"), 2);
        EXPECT_EQ(each->FindCol("d"), -1);
        EXPECT_EQ(each->FindCol("z"), -1);
        EXPECT_EQ(RowsText(*each), "1 2 3 | 4 5 6");
    }
}

TEST(TableCopy, ToItselfIsNothing) {
    CBMSTableObject table = ThreeColumns();
    const std::vector<TEValue>* const row = table.GetRow(0);
    CBMSTableObject& same = table;
    table = same;
    EXPECT_EQ(RowsText(table), "1 2 3 | 4 5 6");
    EXPECT_EQ(table.GetRow(0), row) << "not even moved";
}

// Callers that were built against these classes find operations by their slots: the
// destructor's two, then RemoveAll, then AddCol. The platform's C++ interface keeps one more
// than a slot's offset in a pointer to a virtual member.
template <class Member>
std::size_t SlotOf(Member member) {
    std::size_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return (offset - 1) / sizeof(void*);
}

TEST(TableLayout, VirtualSlots) {
    EXPECT_EQ(SlotOf(&CBMSTableObject::RemoveAll), 2U);
    EXPECT_EQ(SlotOf(&CBMSTableObject::AddCol), 3U);
    EXPECT_EQ(SlotOf(&FrameUtil::CFrmTableObject::RemoveAll), 2U);
    EXPECT_EQ(SlotOf(&FrameUtil::CFrmTableObject::AddCol), 3U);
    EXPECT_TRUE(std::has_virtual_destructor_v<CBMSTableObject>);
}

}  // namespace
