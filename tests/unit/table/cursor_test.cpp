// The cursor: rows, columns, and what becomes of it when the table changes.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "unit/table/cursor_probe.h"

namespace {

using Step = std::function<void(Probe&)>;

TEST(Cursor, StartsBeforeTheFirstRow) {
    Probe table;
    EXPECT_EQ(table.Where(), "row -1 column -1 cell -1");
    EXPECT_EQ(table(), nullptr);
    EXPECT_EQ(table.Where(), "row -1 column -1 cell -1");
}

TEST(Cursor, WalksAndStartsAgain) {
    Probe table = Numbers(2, 3);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(table(), table.GetRow(0));
        EXPECT_EQ(table.Where(), "row 0 column 0 cell 0");
        EXPECT_EQ(table(), table.GetRow(1));
        EXPECT_EQ(table.Where(), "row 1 column 0 cell 0");
        EXPECT_EQ(table(), nullptr);
        EXPECT_EQ(table.Where(), "row -1 column -1 cell -1");
    }
}

TEST(Cursor, SelectsColumns) {
    const struct {
        const char* name;
        Step step;
        const char* where;
        int read;
    } cases[] = {
        {"first", [](Probe& t) { t[0]; }, "row 1 column 0 cell 0", 10},
        {"last", [](Probe& t) { t[2]; }, "row 1 column 2 cell 2", 12},
        {"beyond", [](Probe& t) { t[99]; }, "row 1 column 2 cell 2", 12},
        {"far beyond", [](Probe& t) { t[ULONG_MAX]; }, "row 1 column 2 cell 2", 12},
        {"beyond an int", [](Probe& t) { t[0x100000000UL]; }, "row 1 column 2 cell 2", 12},
        {"by name", [](Probe& t) { t["c1"]; }, "row 1 column 1 cell 1", 11},
        {"by the last name", [](Probe& t) { t["c2"]; }, "row 1 column 2 cell 2", 12},
        {"by an unknown name", [](Probe& t) { t["none"]; }, "row 1 column 0 cell 0", 10},
        {"by no name", [](Probe& t) { t[CStdString()]; }, "row 1 column 0 cell 0", 10},
        {"by a std::string", [](Probe& t) { t[std::string("c2")]; }, "row 1 column 2 cell 2", 12},
        {"back", [](Probe& t) { t[2][0]; }, "row 1 column 0 cell 0", 10},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        Probe table = Numbers(2, 3);
        table();
        table();
        each.step(table);
        EXPECT_EQ(table.Where(), each.where);
        int read = -1;
        table >> read;
        EXPECT_EQ(read, each.read);
    }
}

TEST(Cursor, WithoutARowSelectsNoCell) {
    const struct {
        const char* name;
        Step step;
        const char* where;
    } cases[] = {
        {"by number", [](Probe& t) { t[1]; }, "row -1 column 1 cell -1"},
        {"by name", [](Probe& t) { t["c1"]; }, "row -1 column 1 cell -1"},
        {"by an unknown name", [](Probe& t) { t["x"]; }, "row -1 column 0 cell -1"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        Probe table = Numbers(1, 3);
        each.step(table);
        EXPECT_EQ(table.Where(), each.where);
        int read = -1;
        table >> read;
        EXPECT_EQ(read, -1);
        EXPECT_EQ(table.Where(), "row -1 column -1 cell -1");
        EXPECT_EQ(table(), table.GetRow(0)) << "the walk is not disturbed";
    }
    Probe none;
    none[5]["x"];
    EXPECT_EQ(none.Where(), "row -1 column 0 cell -1");
}

// The cursor keeps its numbers, whatever is done to the rows beneath it.
TEST(Cursor, StaysWhenRowsChange) {
    const struct {
        const char* name;
        Step change;
        int read;  // what the cursor, on row 1 and column 2, reads then; -1 nothing
        int next;  // the number of the row after it; -1 the end
    } cases[] = {
        {"nothing", [](Probe&) {}, 12, 2},
        {"rows added", [](Probe& t) { t.AddRow(1000); }, 12, 2},
        {"the row before deleted", [](Probe& t) { t.DeleteRow(0, 1); }, 22, 2},
        {"its row is the last now", [](Probe& t) { t.DeleteRow(2, 9); }, 12, -1},
        {"its row deleted", [](Probe& t) { t.DeleteRow(1, 9); }, -1, -1},
        {"more deleted", [](Probe& t) { t.Initilize(0, 0), t.Initilize(1, 0); }, -1, -1},
        {"cells gone", [](Probe& t) { t.GetRow(1)->resize(2); }, -1, 2},
        {"rows emptied as they lie", [](Probe& t) { t.GetRow(1)->clear(); }, -1, 2},
        {"sorted",
         [](Probe& t) {
             t.SetCellValue(0, 3, TEValue(-1));
             std::vector<int> keys{0};
             t.Sort(keys, 0);
         },
         2, 2},
        {"replaced by another table's",
         [](Probe& t) {
             const Probe other = Numbers(3, 3, 500);
             static_cast<FrameUtil::CBMSTableObject&>(t) = other;
         },
         512, 2},
        {"a cell set", [](Probe& t) { t.SetCellValue(2, 1, TEValue(77)); }, 77, 2},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        for (const bool read_first : {true, false}) {
            Probe table = Numbers(4, 3);
            table();
            table();
            table[2];
            each.change(table);
            if (read_first) {
                int read = -1;
                table >> read;
                EXPECT_EQ(read, each.read);
            }
            EXPECT_EQ(table(), each.next < 0 ? nullptr : table.GetRow(each.next));
        }
    }
}

TEST(Cursor, OnATableThatLostItsRowsStays) {
    Probe table = Numbers(2, 2);
    table();
    table();
    table.DeleteRow(0, 2);
    EXPECT_EQ(table(), nullptr);
    EXPECT_EQ(table.Where(), "row 1 column 0 cell 0") << "as it was";
    int read = -1;
    table >> read;
    EXPECT_EQ(read, -1);
    table.AddRow(3);
    EXPECT_EQ(table(), table.GetRow(2));
}

TEST(Cursor, RemoveAllResetsIt) {
    Probe table = Numbers(2, 2);
    std::vector<int> keys{0};
    table.Sort(keys, 5);
    table();
    table[1];
    FrameUtil::CBMSTableObject& base = table;
    base.RemoveAll();
    EXPECT_EQ(table.Where(), "row -1 column -1 cell -1");
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_EQ(table.GetColName(0), nullptr);
    EXPECT_EQ(table.FindCol("c0"), -1);
    EXPECT_EQ(table.GetSortType(), -1);
}

// The place of the cursor is copied; the cells that it reads are the copy's own.
TEST(Cursor, CopiesContinueInTheirOwnRows) {
    const struct {
        const char* name;
        Step place;
        int read;  // the next cell; -1 none
        int next;  // the number of the next row; -1 the end
    } cases[] = {
        {"before the first row", [](Probe&) {}, -1, 0},
        {"row 1, column 2", [](Probe& t) { t(), t(), t[2]; }, 12, 2},
        {"after a read",
         [](Probe& t) {
             int n = 0;
             t(), t(), t >> n;
         },
         11, 2},
        {"behind the row's last cell",
         [](Probe& t) {
             int n = 0;
             t(), t[2] >> n;
         },
         -1, 1},
        {"after a read too many",
         [](Probe& t) {
             int n = 0;
             t(), t[2] >> n >> n;
         },
         -1, 1},
        {"on the last row", [](Probe& t) { t(), t(), t(); }, 20, -1},
        {"at the end", [](Probe& t) { t(), t(), t(), t(); }, -1, 0},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        Probe source = Numbers(3, 3);
        each.place(source);
        const std::string where = source.Where();
        Probe copy(source);
        Probe assigned = Numbers(1, 1);
        assigned();
        assigned = source;
        EXPECT_EQ(source.Where(), where);
        for (const auto& row : *source.GetTable()) {
            EXPECT_EQ(row.size(), 3U);
        }
        source.RemoveAll();
        for (Probe* table : {&copy, &assigned}) {
            EXPECT_EQ(table->Where(), where);
            int read = -1;
            *table >> read;
            EXPECT_EQ(read, each.read);
            EXPECT_EQ((*table)(), each.next < 0 ? nullptr : table->GetRow(each.next));
        }
    }
}

TEST(Cursor, AssignedToItselfStays) {
    Probe table = Numbers(2, 2);
    table();
    table[1];
    Probe& same = table;
    table = same;
    EXPECT_EQ(table.Where(), "row 0 column 1 cell 1");
    EXPECT_EQ(table.GetColType(1), refl::Enum::DT_EMPTY);
    int read = -1;
    table >> read;
    EXPECT_EQ(read, 1);
}

}  // namespace
