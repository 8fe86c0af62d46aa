// Rows: added, deleted, resized, reached as they lie.
#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;

// Two columns; the first holds the row's number.
CBMSTableObject Numbered(int rows) {
    CBMSTableObject table(std::vector<std::string>{"n", "m"});
    table.AddRow(rows);
    for (int row = 0; row < rows; ++row) {
        table.SetCellValue(0, row, TEValue(row));
    }
    return table;
}

TEST(TableRows, AddRow) {
    const struct {
        int count;
        int result;
        const char* rows;
    } cases[] = {
        {0, 0, ""},
        {-1, 0, ""},
        {INT_MIN, 0, ""},
        {1, 0, "- -"},
        {2, 0, "- - | - - | - -"},
        {0, 0, "- - | - - | - -"},
    };
    CBMSTableObject table(std::vector<std::string>{"a", "b"});
    for (const auto& step : cases) {
        EXPECT_EQ(table.AddRow(step.count), step.result) << step.count;
        EXPECT_EQ(RowsText(table), step.rows);
    }
}

TEST(TableRows, AddRowWithoutColumns) {
    CBMSTableObject table;
    for (const int count : {1, 0, -1, INT_MAX}) {
        EXPECT_EQ(table.AddRow(count), -1) << count;
        EXPECT_EQ(table.GetRowCount(), 0);
    }
}

TEST(TableRows, MoreThanAnIntCountsAreRefused) {
    CBMSTableObject table = Numbered(1);
    EXPECT_THROW(table.AddRow(INT_MAX), std::length_error);
    EXPECT_EQ(RowsText(table), "0 -");
}

TEST(TableRows, DeleteRow) {
    const struct {
        int start, count, result;
        const char* left;
    } cases[] = {
        {2, 100, 0, "0 - | 1 -"},
        {2, 3, 0, "0 - | 1 -"},
        {2, 2, 0, "0 - | 1 - | 4 -"},
        {0, 1, 0, "1 - | 2 - | 3 - | 4 -"},
        {4, 1, 0, "0 - | 1 - | 2 - | 3 -"},
        {0, 5, 0, ""},
        {4, INT_MAX, 0, "0 - | 1 - | 2 - | 3 -"},
        {1, INT_MAX, 0, "0 -"},
        {0, 0, 0, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {0, -1, 0, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {4, INT_MIN, 0, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {5, 1, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {5, 0, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {-1, 1, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {-1, INT_MAX, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {INT_MAX, INT_MAX, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
        {INT_MIN, INT_MIN, -1, "0 - | 1 - | 2 - | 3 - | 4 -"},
    };
    for (const auto& step : cases) {
        SCOPED_TRACE(std::to_string(step.start) + ", " + std::to_string(step.count));
        CBMSTableObject table = Numbered(5);
        EXPECT_EQ(table.DeleteRow(step.start, step.count), step.result);
        EXPECT_EQ(RowsText(table), step.left);
    }
    CBMSTableObject none = Numbered(0);
    EXPECT_EQ(none.DeleteRow(0, 1), -1);
}

TEST(TableRows, RemoveAllKeepsColumnsAndName) {
    CBMSTableObject table = Numbered(3);
    table.SetTableName("t");
    std::vector<int> keys{0};
    table.Sort(keys, 4);
    table.RemoveAll();
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_EQ(table.GetSortType(), -1);
    EXPECT_EQ(ColsText(table), "n m");
    EXPECT_EQ(table.GetTableName(), "t");
    EXPECT_EQ(table.AddCol("o"), 0) << "there are no rows now";
}

TEST(TableRows, GetRow) {
    CBMSTableObject table = Numbered(2);
    const CBMSTableObject& unchanged = table;
    for (const int row : {0, 1}) {
        EXPECT_EQ(table.GetRow(row), &(*table.GetTable())[static_cast<std::size_t>(row)]);
        EXPECT_EQ(unchanged.GetRowEx(row), table.GetRow(row));
    }
    for (const int row : {-1, 2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(table.GetRow(row), nullptr) << row;
        EXPECT_EQ(table.GetRowEx(row), nullptr) << row;
    }
}

TEST(TableRows, GetTableIsTheRows) {
    CBMSTableObject table = Numbered(2);
    table.GetTable()->push_back({TEValue("x")});
    EXPECT_EQ(table.GetRowCount(), 3);
    EXPECT_EQ(RowsText(table), "0 - | 1 - | x");
    EXPECT_TRUE(CBMSTableObject().GetTable()->empty());
}

TEST(TableRows, Initilize) {
    const struct {
        const char* name;
        std::vector<std::vector<TEValue>> before;
        int rows, result;
        const char* after;
    } cases[] = {
        {"three of an empty table", {}, 3, 0, "- - | - - | - -"},
        {"none", {{1, 2}}, 0, 0, ""},
        {"more", {{1, 2}}, 2, 0, "1 2 | - -"},
        {"fewer", {{1, 2}, {3, 4}, {5, 6}}, 1, 0, "1 2"},
        {"as many", {{1, 2}, {3, 4}}, 2, 0, "1 2 | 3 4"},
        {"short and long rows", {{}, {1}, {2, 3, 4}}, 4, 0, "- - | 1 - | 2 3 | - -"},
        {"a negative number", {{1}, {2, 3}}, -1, -1, "1 | 2 3"},
        {"the least number", {{1}, {2, 3}}, INT_MIN, -1, "1 | 2 3"},
    };
    for (const auto& step : cases) {
        SCOPED_TRACE(step.name);
        for (const int unused : {7, 0, -1}) {
            CBMSTableObject table(std::vector<std::string>{"a", "b"});
            *table.GetTable() = step.before;
            EXPECT_EQ(table.Initilize(step.rows, unused), step.result);
            EXPECT_EQ(RowsText(table), step.after);
        }
    }
}

TEST(TableRows, InitilizeWithoutColumnsGivesRowsWithoutCells) {
    CBMSTableObject table;
    EXPECT_EQ(table.Initilize(2, 0), 0);
    EXPECT_EQ(table.GetRowCount(), 2);
    EXPECT_TRUE(table.GetRow(1)->empty());
}

TEST(TableRows, InitilizeKeepsTheSortType) {
    CBMSTableObject table = Numbered(2);
    std::vector<int> keys{0};
    table.Sort(keys, 9);
    table.Initilize(1, 0);
    EXPECT_EQ(table.GetSortType(), 9);
}

}  // namespace
