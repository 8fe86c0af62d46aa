// The columns of a table and the name of the table itself.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;

TEST(TableColumns, ANewTableIsEmpty) {
    const CBMSTableObject table;
    EXPECT_EQ(table.GetTableName(), "");
    EXPECT_EQ(table.GetColName(0), nullptr);
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_EQ(table.GetSortType(), -1);
}

TEST(TableColumns, ComeWithTheTable) {
    const CBMSTableObject table(std::vector<std::string>{"b", "a", "b"});
    EXPECT_EQ(ColsText(table), "b a b");
    EXPECT_EQ(table.FindCol("b"), 0);
    EXPECT_EQ(table.FindCol("a"), 1);
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_EQ(table.GetSortType(), -1);
}

// Names are compared exactly, case included.
TEST(TableColumns, AddCol) {
    CBMSTableObject table;
    const struct {
        const char* name;
        int result;
        const char* cols;
    } cases[] = {
        {"id", 0, "id"},     {"id", -1, "id"},     {"ID", 0, "id ID"},        {"i", 0, "id ID i"},
        {"", 0, "id ID i "}, {"", -1, "id ID i "}, {nullptr, -1, "id ID i "},
    };
    for (const auto& step : cases) {
        EXPECT_EQ(table.AddCol(step.name), step.result) << step.cols;
        EXPECT_EQ(ColsText(table), step.cols);
    }
}

TEST(TableColumns, AddColOnATableWithRows) {
    CBMSTableObject table(std::vector<std::string>{"a"});
    table.AddRow(1);
    EXPECT_EQ(table.AddCol("b"), -2);
    EXPECT_EQ(table.AddCol("a"), -1) << "a name that is taken is seen first";
    EXPECT_EQ(table.AddCol(nullptr), -1);
    EXPECT_EQ(ColsText(table), "a");
    EXPECT_EQ(table.GetRow(0)->size(), 1U);
}

TEST(TableColumns, DeleteCol) {
    const struct {
        const char* cols_before;
        const char* name;
        const char* cols;
        int result;
        bool rows;
    } cases[] = {
        {"abc", "b", "a c", 0, false},    {"abc", "a", "b c", 0, false},
        {"abc", "c", "a b", 0, false},    {"aba", "a", "b a", 0, false},
        {"abc", "d", "a b c", -2, false}, {"abc", nullptr, "a b c", -2, false},
        {"", "a", "", -2, false},         {"abc", "a", "a b c", -1, true},
        {"abc", "d", "a b c", -1, true},  {"abc", nullptr, "a b c", -1, true},
    };
    for (const auto& step : cases) {
        SCOPED_TRACE(std::string(step.cols_before) + (step.rows ? " with rows, " : ", ") +
                     (step.name == nullptr ? "null" : step.name));
        std::vector<std::string> names;
        for (const char letter : std::string(step.cols_before)) {
            names.emplace_back(1, letter);
        }
        CBMSTableObject table(names);
        table.AddRow(step.rows ? 1 : 0);
        EXPECT_EQ(table.DeleteCol(step.name), step.result);
        EXPECT_EQ(ColsText(table), step.cols);
    }
}

TEST(TableColumns, LaterOnesMoveDownWhenOneGoes) {
    CBMSTableObject table(std::vector<std::string>{"a", "b", "a", "c"});
    table.DeleteCol("a");
    EXPECT_EQ(table.FindCol("b"), 0);
    EXPECT_EQ(table.FindCol("a"), 1);
    EXPECT_EQ(table.FindCol("c"), 2);
    table.DeleteCol("a");
    EXPECT_EQ(table.FindCol("a"), -1);
    EXPECT_EQ(table.AddCol("a"), 0);
    EXPECT_EQ(table.FindCol("a"), 2);
}

TEST(TableColumns, FindColOfNothing) {
    CBMSTableObject table;
    EXPECT_EQ(table.FindCol("a"), -1);
    EXPECT_EQ(table.FindCol(nullptr), -1);
    table.AddCol("a");
    EXPECT_EQ(table.FindCol(nullptr), -1);
    EXPECT_EQ(table.FindCol(""), -1);
}

TEST(TableColumns, SetColName) {
    CBMSTableObject table(std::vector<std::string>{"a", "b", "c"});
    const struct {
        int col, result;
        const char* name;
        const char* cols;
    } cases[] = {
        {1, 0, "B", "a B c"},        {3, -1, "d", "a B c"},       {-1, -1, "d", "a B c"},
        {INT_MAX, -1, "d", "a B c"}, {INT_MIN, -1, "d", "a B c"}, {1, -1, nullptr, "a B c"},
        {2, 0, "a", "a B a"},        {0, 0, "x", "x B a"},        {1, 0, "", "x  a"},
    };
    for (const auto& step : cases) {
        EXPECT_EQ(table.SetColName(step.col, step.name), step.result) << step.cols;
        EXPECT_EQ(ColsText(table), step.cols);
    }
    EXPECT_EQ(table.FindCol("a"), 2) << "the second one, since the first has been renamed";
    EXPECT_EQ(table.FindCol("b"), -1);
    EXPECT_EQ(table.FindCol(""), 1);
}

TEST(TableColumns, SetColNameToItsOwn) {
    CBMSTableObject table(std::vector<std::string>{"a name that is longer than most"});
    EXPECT_EQ(table.SetColName(0, table.GetColName(0)), 0);
    EXPECT_EQ(ColsText(table), "a name that is longer than most");
    EXPECT_EQ(table.FindCol("a name that is longer than most"), 0);
}

TEST(TableColumns, OfEqualNamesTheFirstIsFound) {
    CBMSTableObject table(std::vector<std::string>{"x", "a", "a"});
    EXPECT_EQ(table.FindCol("a"), 1);
    table.SetColName(0, "a");
    EXPECT_EQ(table.FindCol("a"), 0);
    table.SetColName(0, "y");
    table.SetColName(1, "z");
    EXPECT_EQ(table.FindCol("a"), 2);
}

TEST(TableColumns, GetColName) {
    const CBMSTableObject table(std::vector<std::string>{"a", ""});
    EXPECT_STREQ(table.GetColName(0), "a");
    EXPECT_STREQ(table.GetColName(1), "");
    for (const int col : {-1, 2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(table.GetColName(col), nullptr) << col;
    }
}

// Every length, names that differ in one octet wherever it is, and many columns.
TEST(TableColumns, AreFoundWhateverTheirNames) {
    CBMSTableObject table;
    std::vector<std::string> names;
    for (std::size_t size = 1; size <= 40; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::string name(size, 'n');
            name[at] = '\xFF';
            names.push_back(name);
        }
    }
    for (const std::string& name : names) {
        EXPECT_EQ(table.FindCol(name.c_str()), -1) << name;
        ASSERT_EQ(table.AddCol(name.c_str()), 0) << name;
    }
    for (std::size_t col = 0; col < names.size(); ++col) {
        ASSERT_EQ(table.FindCol(names[col].c_str()), static_cast<int>(col));
    }
    for (std::size_t size = 1; size <= 40; ++size) {
        EXPECT_EQ(table.FindCol(std::string(size, 'n').c_str()), -1) << size;
    }
}

TEST(TableColumns, ANameWithAZeroOctetIsFoundByNoText) {
    const CBMSTableObject table(std::vector<std::string>{std::string("a\0b", 3), "a"});
    EXPECT_EQ(table.FindCol("a"), 1);
}

TEST(TableName, IsSetAndGot) {
    CBMSTableObject table;
    table.SetTableName("tbl_ne");
    EXPECT_EQ(table.GetTableName(), "tbl_ne");
    table.SetTableName(table.GetTableName().c_str());
    EXPECT_EQ(table.GetTableName(), "tbl_ne");
    table.SetTableName(nullptr);
    EXPECT_EQ(table.GetTableName(), "");
}

}  // namespace
