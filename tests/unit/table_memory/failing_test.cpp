// Every allocation of every operation fails once: the table is as it was, and nothing leaks.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "frameutil/table.h"
#include "support/failing_new.h"
#include "unit/table/table_text.h"

namespace {

using FrameUtil::CFrmTableObject;

const char* const kLong = "a text that no object holds in itself, in none of its forms";

// Four rows with texts of their own memory, of several lengths, and the cursor in the second.
void Fill(CFrmTableObject& table) {
    table.SetTableName(kLong);
    table.AddCol("number");
    table.AddCol(kLong);
    AddRows(table, {{3, kLong}, {1, "short"}, {2}, {1.5, kLong}});
    table();
    table();
    table[1];
}

// All there is to see of a table, the cursor's place included.
std::string Everything(CFrmTableObject& table) {
    CFrmTableObject copy(table);
    std::string cell = "none";
    copy >> cell;
    return table.GetTableName() + ": " + ColsText(table) + ": " + RowsText(table) + ": " +
           std::to_string(table.GetSortType()) + ": " + cell + ": " +
           std::to_string(table.FindCol(kLong)) + std::to_string(table.GetColType(1)) +
           std::to_string(table.GetColType(2)) + (copy() == nullptr ? " end" : " more");
}

TEST(TableMemory, EveryOperation) {
    static std::vector<int> both{0, 1}, one{1}, zero{0};
    static std::string names;
    static CFrmTableObject other;
    Fill(other);
    static const std::string kLater = std::string(kLong) + " later";
    const struct {
        const char* name;
        std::function<void(CFrmTableObject&)> work;
    } cases[] = {
        {"AddRow", [](auto& t) { t.AddRow(3); }},
        {"AddRow, one", [](auto& t) { t.AddRow(1); }},
        {"Initilize, more", [](auto& t) { t.Initilize(9, 0); }},
        {"Initilize, fewer", [](auto& t) { t.Initilize(3, 0); }},
        {"SetCellValue", [](auto& t) { t.SetCellValue(0, 0, TEValue(kLong)); }},
        {"SetColName", [](auto& t) { t.SetColName(0, kLater.c_str()); }},
        {"SetTableName", [](auto& t) { t.SetTableName(kLater.c_str()); }},
        {"assignment", [](auto& t) { t = other; }},
        {"assignment of the rows",
         [](CFrmTableObject& t) { static_cast<FrameUtil::CBMSTableObject&>(t) = other; }},
        {"Sort by numbers and texts", [](auto& t) { t.Sort(zero, 1); }},
        {"Sort by texts", [](auto& t) { t.Sort(one, 1); }},
        {"Sort by both", [](auto& t) { t.Sort(both, 1); }},
        {"FindRowLocation", [](auto& t) { t.FindRowLocation(&other, 3, 0, both, both); }},
        {"DetectIfModified",
         [](auto& t) {
             names = "as it was";
             try {
                 t.DetectIfModified(&other, 1, 3, both, both, true, names);
             } catch (const std::bad_alloc&) {
                 EXPECT_EQ(names, "as it was");
                 throw;
             }
         }},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        CFrmTableObject table;
        Fill(table);
        const std::string before = Everything(table);
        long n = 1;
        for (;; ++n) {
            CFrmTableObject changed(table);
            const long live = LiveAllocations();
            if (!support::FailNth(n, [&] { each.work(changed); })) {
                break;
            }
            EXPECT_EQ(Everything(changed), before) << "allocation " << n;
            EXPECT_LE(LiveAllocations() - live, 3) << "room that was made is kept, nothing else";
        }
        EXPECT_GT(n, 1) << "nothing was tried";
    }
}

TEST(TableMemory, AddColOfEitherTable) {
    for (const bool unique : {false, true}) {
        FrameUtil::CBMSTableObject plain;
        CFrmTableObject with_cursor;
        FrameUtil::CBMSTableObject& table = unique ? with_cursor : plain;
        for (int col = 0; col < 40; ++col) {
            const std::string name = kLong + std::to_string(col);
            const std::string before = ColsText(table);
            for (long n = 1; support::FailNth(n, [&] { table.AddCol(name.c_str()); }); ++n) {
                EXPECT_EQ(ColsText(table), before);
                EXPECT_EQ(table.FindCol(name.c_str()), -1);
                EXPECT_EQ(with_cursor.SetColType(col, refl::Enum::DT_INT), -1);
            }
            EXPECT_EQ(table.FindCol(name.c_str()), col);
        }
    }
}

TEST(TableMemory, Copies) {
    CFrmTableObject table;
    Fill(table);
    const long live = LiveAllocations();
    for (long n = 1; support::FailNth(n, [&] { CFrmTableObject copy(table); }); ++n) {
        EXPECT_EQ(LiveAllocations(), live);
    }
    EXPECT_EQ(LiveAllocations(), live);
}

// A target keeps its value and the cursor its place.
TEST(TableMemory, Reads) {
    CFrmTableObject table;
    Fill(table);
    table.SetCellValue(1, 1, TEValue(kLong));
    const auto expect_kept = [&](auto target, auto text_of) {
        const std::string before = text_of(target);
        long n = 1;
        for (; support::FailNth(n, [&] { table[1] >> target; }); ++n) {
            EXPECT_EQ(text_of(target), before);
        }
        EXPECT_GT(n, 1);
        EXPECT_EQ(text_of(target), kLong);
        auto other_target = target;
        {
            const FailNthAllocation failing(1);
            EXPECT_THROW(table[1] >> other_target, std::bad_alloc);
        }
        decltype(target) last{};
        table >> last;
        EXPECT_EQ(text_of(last), kLong) << "the cell is still the next one";
    };
    const auto of_value = [](const auto& value) { return value.As_std_string(); };
    const auto of_text = [](const auto& text) { return std::string(text); };
    expect_kept(TEValue("t"), of_value);
    expect_kept(refl::CValue(TEValue("t")), of_value);
    expect_kept(std::string("t"), of_text);
    expect_kept(CStdString("t"), of_text);
    expect_kept(refl::CBinary("t", 1), [](const refl::CBinary& binary) {
        return std::string(binary.data() == nullptr ? "" : binary.data(), binary.length());
    });
}

// More rows than there is memory for, refused at once.
TEST(TableMemory, RowsBeyondMemory) {
    FrameUtil::CBMSTableObject table(std::vector<std::string>{"a"});
    const FailNthAllocation failing(0);
    EXPECT_THROW(table.AddRow(INT_MAX), std::bad_alloc);
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_THROW(table.Initilize(INT_MAX, 0), std::bad_alloc);
    EXPECT_EQ(table.GetRowCount(), 0);
}

// Comparing texts takes no memory, however long they are.
TEST(TableMemory, ComparingTextsTakesNone) {
    FrameUtil::CBMSTableObject table(std::vector<std::string>{"a"});
    AddRows(table, {{kLong}, {"x"}, {kLong}});
    std::vector<int> cols{0};
    const FailNthAllocation failing(1);
    EXPECT_EQ(table.DetectIfEqual(&table, 0, 2, cols, cols), 1);
    EXPECT_EQ(table.DetectIfEqual(&table, 0, 1, cols, cols), 0);
    EXPECT_FALSE(failing.Fired());
}

}  // namespace
