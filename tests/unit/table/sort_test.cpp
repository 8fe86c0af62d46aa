// Sorting: the codes, the order of simple cases, and what happens around it.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;

std::string Sorted(const std::vector<std::vector<TEValue>>& rows, std::vector<int> keys) {
    CBMSTableObject table(std::vector<std::string>{"a", "b", "c"});
    *table.GetTable() = rows;
    EXPECT_EQ(table.Sort(keys, 1), 0);
    return RowsText(table);
}

TEST(TableSort, Cases) {
    const struct {
        const char* name;
        std::vector<std::vector<TEValue>> rows;
        std::vector<int> keys;
        const char* sorted;
    } cases[] = {
        {"no rows", {}, {0}, ""},
        {"one row", {{5}}, {0}, "5"},
        {"integers", {{10}, {9}, {100}}, {0}, "9 | 10 | 100"},
        {"the same as texts", {{"10"}, {"9"}, {"100"}}, {0}, "10 | 100 | 9"},
        {"doubles order as texts", {{10.5}, {9.5}}, {0}, "10.5 | 9.5"},
        {"negative integers",
         {{1}, {-1}, {LONG_MIN}, {LONG_MAX}},
         {0},
         "-9223372036854775808 | -1 | 1 | 9223372036854775807"},
        {"unsigned long", {{ULONG_MAX}, {1UL}, {0UL}}, {0}, "0 | 1 | 18446744073709551615"},
        {"equal rows turn round",
         {{1, "x"}, {1, "y"}, {0, "z"}, {1, "w"}},
         {0},
         "0 z | 1 w | 1 y | 1 x"},
        {"the second column", {{1, 2}, {2, 1}}, {1}, "2 1 | 1 2"},
        {"greater first, smaller second stays ahead", {{2, 1}, {1, 2}}, {0, 1}, "2 1 | 1 2"},
        {"smaller first, greater second stays ahead", {{1, 2}, {2, 1}}, {0, 1}, "1 2 | 2 1"},
        {"smaller in both comes first", {{2, 2}, {1, 1}}, {0, 1}, "1 1 | 2 2"},
        {"equal in one, smaller in the other", {{1, 2}, {1, 1}}, {0, 1}, "1 1 | 1 2"},
        {"not lexicographic", {{2, 1}, {1, 3}, {1, 2}}, {0, 1}, "2 1 | 1 2 | 1 3"},
        {"a key twice is the key", {{2, 1}, {1, 2}}, {0, 0}, "1 2 | 2 1"},
        {"a column that is not there", {{1, "x"}, {2, "y"}}, {7}, "2 y | 1 x"},
        {"a negative column", {{1, "x"}, {2, "y"}}, {-1}, "2 y | 1 x"},
        {"and beside a key", {{2, "y"}, {1, "x"}}, {INT_MAX, 0, INT_MIN}, "1 x | 2 y"},
        {"rows of several lengths", {{"b", 1}, {"a"}, {}, {"c", -1}}, {1}, " | a | c -1 | b 1"},
        {"a left integer compares numbers, a left text texts", {{9}, {"10"}}, {0}, "9 | 10"},
        {"so order depends on which is left", {{"10"}, {9}}, {0}, "10 | 9"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(Sorted(each.rows, each.keys), each.sorted);
    }
}

TEST(TableSort, WithoutKeysChangesNothing) {
    CBMSTableObject table(std::vector<std::string>{"a"});
    AddRows(table, {{2}, {1}});
    std::vector<int> keys;
    EXPECT_EQ(table.Sort(keys, 3), -1);
    EXPECT_EQ(table.GetSortType(), -1);
    EXPECT_EQ(RowsText(table), "2 | 1");
}

TEST(TableSort, TypeIsStoredAndNothingElse) {
    for (const int type : {0, 1, -5, INT_MAX, INT_MIN}) {
        CBMSTableObject table(std::vector<std::string>{"a"});
        AddRows(table, {{2}, {1}});
        std::vector<int> keys{0};
        EXPECT_EQ(table.Sort(keys, type), 0);
        EXPECT_EQ(table.GetSortType(), type);
        EXPECT_EQ(RowsText(table), "1 | 2");
        EXPECT_EQ(keys, std::vector<int>{0});
    }
    CBMSTableObject none;
    std::vector<int> keys{0};
    EXPECT_EQ(none.Sort(keys, 8), 0) << "there is nothing to sort, which succeeds";
    EXPECT_EQ(none.GetSortType(), 8);
}

TEST(TableSort, TwiceRestoresEqualRows) {
    CBMSTableObject table(std::vector<std::string>{"a", "b"});
    AddRows(table, {{1, "x"}, {1, "y"}, {1, "z"}});
    std::vector<int> keys{0};
    table.Sort(keys, 0);
    EXPECT_EQ(RowsText(table), "1 z | 1 y | 1 x");
    table.Sort(keys, 0);
    EXPECT_EQ(RowsText(table), "1 x | 1 y | 1 z");
}

TEST(TableSort, MovesCellsAndKeepsPlaces) {
    CBMSTableObject table(std::vector<std::string>{"a"});
    AddRows(table, {{3}, {1}, {2}});
    const std::vector<TEValue>* const first = table.GetRow(0);
    const TEValue* const least = &table.GetCellValue(0, 1);
    std::vector<int> keys{0};
    table.Sort(keys, 0);
    EXPECT_EQ(table.GetRow(0), first);
    EXPECT_EQ(&table.GetCellValue(0, 0), least);
}

}  // namespace
