// Finding rows of one table in another, and comparing two rows.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "unit/table/table_text.h"

namespace {

using FrameUtil::CBMSTableObject;
using Columns = std::vector<int>;

class TableMatch : public testing::Test {
  protected:
    TableMatch() {
        AddRows(ours, {{1, "eth0", 10}, {2, "eth1", 20}, {3, "eth1", 20}, {4, "eth2", 20}});
        AddRows(other, {{"eth1", 20}, {"eth2", 99}, {"eth1", "20"}});
    }

    CBMSTableObject ours{std::vector<std::string>{"id", "name", "speed"}};
    CBMSTableObject other{std::vector<std::string>{"port", "rate"}};
    CBMSTableObject none{std::vector<std::string>{"id"}};
    Columns nothing;
};

TEST_F(TableMatch, FindRowLocation) {
    const struct {
        const char* name;
        int row, start;
        Columns theirs, mine;
        int result;
    } cases[] = {
        {"the first match", 0, 0, {0, 1}, {1, 2}, 1},
        {"from a match on", 0, 1, {0, 1}, {1, 2}, 1},
        {"from behind it on", 0, 2, {0, 1}, {1, 2}, 2},
        {"none any more", 0, 3, {0, 1}, {1, 2}, -1},
        {"none at all", 1, 0, {0, 1}, {1, 2}, -1},
        {"one column", 1, 0, {0}, {1}, 3},
        {"a text on the left reads numbers as texts", 2, 0, {1}, {2}, 1},
        {"a negative start is the first row", 0, -7, {0}, {1}, 1},
        {"the least start", 0, INT_MIN, {0}, {1}, 1},
        {"a start at the end", 0, 4, {}, {}, -1},
        {"a start beyond", 0, INT_MAX, {}, {}, -1},
        {"without columns every row", 0, 2, {}, {0}, 2},
        {"the row is missing", 3, 0, {0}, {1}, 1},
        {"the row is negative", -1, 0, {0}, {1}, 1},
        {"the greatest row", INT_MAX, 0, {0}, {1}, 1},
        {"more of ours are not looked at", 0, 0, {0}, {1, 77, -1}, 1},
        {"fewer of ours: empty against a text", 0, 0, {0, 1}, {1}, -1},
        {"no such column of theirs: empty", 0, 0, {5}, {1}, -1},
        {"nor of either: both empty", 0, 0, {-1}, {INT_MAX}, 0},
        {"nor in our list", 0, 0, {INT_MIN}, {}, 0},
    };
    for (auto each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(ours.FindRowLocation(&other, each.row, each.start, each.theirs, each.mine),
                  each.result);
    }
}

// 1 is the answer for a row that is not there, although it looks like an index; -5 that for
// an empty table. The other table is looked at first.
TEST_F(TableMatch, FindRowLocationCodes) {
    EXPECT_EQ(ours.FindRowLocation(nullptr, 0, 0, nothing, nothing), 1);
    EXPECT_EQ(ours.FindRowLocation(&none, 0, 0, nothing, nothing), 1);
    EXPECT_EQ(none.FindRowLocation(&none, 0, 0, nothing, nothing), 1);
    EXPECT_EQ(none.FindRowLocation(&other, 3, 0, nothing, nothing), 1);
    EXPECT_EQ(none.FindRowLocation(&other, 0, 0, nothing, nothing), -5);
    EXPECT_EQ(none.FindRowLocation(&other, 0, INT_MAX, nothing, nothing), -5);
    EXPECT_EQ(none.FindRowLocation(nullptr, 0, 0, nothing, nothing), 1);
    EXPECT_EQ(ours.FindRowLocation(&ours, 2, 0, nothing, nothing), 0);
}

TEST_F(TableMatch, FindRowLocationByIterator) {
    std::vector<TEValue> row{"eth1", 20};
    Columns cols{0, 1}, ours_cols{1, 2};
    auto& rows = *ours.GetTable();
    EXPECT_EQ(ours.FindRowLocation(&row, rows.begin(), cols, ours_cols), rows.begin() + 1);
    EXPECT_EQ(ours.FindRowLocation(&row, rows.begin() + 2, cols, ours_cols), rows.begin() + 2);
    EXPECT_EQ(ours.FindRowLocation(&row, rows.begin() + 3, cols, ours_cols), rows.end());
    EXPECT_EQ(ours.FindRowLocation(&row, rows.end(), nothing, nothing), rows.end());
    EXPECT_EQ(ours.FindRowLocation(&row, rows.begin() + 3, nothing, nothing), rows.begin() + 3);
    EXPECT_EQ(ours.FindRowLocation(&rows[3], rows.begin(), ours_cols, ours_cols), rows.begin() + 3)
        << "a row of the table itself";
    Columns one{1};
    EXPECT_EQ(ours.FindRowLocation(&row, rows.begin(), cols, one), rows.end())
        << "20 against the empty value that a missing column holds";
}

TEST_F(TableMatch, FindRowLocationByAWrongIterator) {
    std::vector<TEValue> row{"eth1", 20};
    auto& rows = *ours.GetTable();
    EXPECT_EQ(ours.FindRowLocation(nullptr, rows.begin(), nothing, nothing), rows.end());
    EXPECT_EQ(ours.FindRowLocation(&row, other.GetTable()->begin(), nothing, nothing), rows.end());
    EXPECT_EQ(ours.FindRowLocation(&row, {}, nothing, nothing), rows.end());
    EXPECT_EQ(none.FindRowLocation(&row, {}, nothing, nothing), none.GetTable()->end());
}

TEST_F(TableMatch, DetectIfEqual) {
    const struct {
        const char* name;
        int other_row, this_row;
        Columns theirs, mine;
        int result;
    } cases[] = {
        {"equal", 0, 1, {0, 1}, {1, 2}, 1},
        {"not in the first", 0, 0, {0, 1}, {1, 2}, 0},
        {"not in the second", 1, 3, {0, 1}, {1, 2}, 0},
        {"text against number", 2, 1, {1}, {2}, 1},
        {"without columns", 0, 0, {}, {1}, 1},
        {"their row is missing", 3, 0, {0}, {1}, 1},
        {"their row is negative", -1, 0, {0}, {1}, 1},
        {"both are missing", 3, 4, {0}, {1}, 1},
        {"our row is missing", 0, 4, {0}, {1}, 0},
        {"our row is negative", 0, INT_MIN, {0}, {1}, 0},
        {"our row is missing, without columns", 0, 4, {}, {}, 0},
        {"our list is shorter", 0, 1, {0, 1}, {1}, 0},
        {"our list is longer", 0, 1, {0}, {1, 9}, 1},
        {"no such columns", 0, 1, {7}, {-7}, 1},
    };
    for (auto each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(ours.DetectIfEqual(&other, each.other_row, each.this_row, each.theirs, each.mine),
                  each.result);
    }
    EXPECT_EQ(ours.DetectIfEqual(nullptr, 0, 0, nothing, nothing), 1);
    EXPECT_EQ(ours.DetectIfEqual(nullptr, 0, 99, nothing, nothing), 1);
}

class TableModified : public testing::Test {
  protected:
    TableModified() {
        AddRows(before, {{1, 2, 3, 4}});
        AddRows(after, {{1, 2, 3, 4}, {9, 2, 9, 4}, {1, 2, 3, 9}, {9, 9, 9, 9}});
    }

    CBMSTableObject before{std::vector<std::string>{"a", "b", "c", "d"}};
    CBMSTableObject after{std::vector<std::string>{"p", "q", "r", "s"}};
};

// The names are the other table's.
TEST_F(TableModified, Cases) {
    const struct {
        const char* name;
        int row;
        Columns theirs, mine;
        bool collect;
        int result;
        const char* names;
    } cases[] = {
        {"none", 0, {0, 1, 2, 3}, {0, 1, 2, 3}, true, 0, ""},
        {"none, not collected", 0, {0, 1, 2, 3}, {0, 1, 2, 3}, false, 0, ""},
        {"two of four", 1, {0, 1, 2, 3}, {0, 1, 2, 3}, true, 1, "a;c"},
        {"two of four, not collected", 1, {0, 1, 2, 3}, {0, 1, 2, 3}, false, 1, ""},
        {"the last", 2, {0, 1, 2, 3}, {0, 1, 2, 3}, true, 1, "d"},
        {"the last, not collected", 2, {0, 1, 2, 3}, {0, 1, 2, 3}, false, 1, ""},
        {"in the order of the list", 3, {3, 0, 3}, {0, 1, 2}, true, 1, "d;a;d"},
        {"without columns", 3, {}, {0}, true, 0, ""},
        {"other columns of the same content", 0, {0}, {1}, true, 1, "a"},
        {"our list is shorter", 0, {0, 1}, {0}, true, 1, "b"},
        {"our list is longer", 0, {0}, {0, 9}, true, 0, ""},
        {"a column without a name", 0, {8, 1}, {0, 0}, true, 1, ";b"},
        {"only one without a name", 0, {8}, {0}, true, 1, ""},
        {"no such columns", 0, {-1}, {INT_MAX}, true, 0, ""},
    };
    for (auto each : cases) {
        SCOPED_TRACE(each.name);
        std::string names = "old";
        EXPECT_EQ(after.DetectIfModified(&before, 0, each.row, each.theirs, each.mine, each.collect,
                                         names),
                  each.result);
        EXPECT_EQ(names, each.names);
    }
}

TEST_F(TableModified, WithoutBothRowsLeavesTheText) {
    Columns cols{0};
    for (const bool collect : {false, true}) {
        std::string names = "old";
        EXPECT_EQ(after.DetectIfModified(nullptr, 0, 0, cols, cols, collect, names), 0);
        EXPECT_EQ(after.DetectIfModified(&before, 1, 0, cols, cols, collect, names), 0);
        EXPECT_EQ(after.DetectIfModified(&before, -1, 0, cols, cols, collect, names), 0);
        EXPECT_EQ(after.DetectIfModified(&before, 0, 4, cols, cols, collect, names), 0);
        EXPECT_EQ(after.DetectIfModified(&before, 0, INT_MIN, cols, cols, collect, names), 0);
        EXPECT_EQ(names, "old");
    }
}

TEST_F(TableModified, NamesMayBeEmpty) {
    before.SetColName(0, "");
    Columns cols{0};
    std::string names = "old";
    EXPECT_EQ(after.DetectIfModified(&before, 0, 1, cols, cols, true, names), 1);
    EXPECT_EQ(names, "") << "one empty name, without its separator";
}

}  // namespace
