// Sorting has the outcome of the exchanges: rows carry their number, so each comparison is of
// the whole permutation.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>

#include "frameutil/table.h"
#include "unit/table/exchange_reference.h"

namespace {

using FrameUtil::CBMSTableObject;
using Random = std::mt19937_64;

// The numbers that rows carry in their last column.
std::vector<int> NumbersOf(const reference::Rows& rows) {
    std::vector<int> numbers;
    for (const auto& row : rows) {
        numbers.push_back(row.back());
    }
    return numbers;
}

void ExpectSameOutcome(reference::Rows rows, std::vector<int> keys) {
    for (std::size_t at = 0; at < rows.size(); ++at) {
        rows[at].emplace_back(static_cast<int>(at));
    }
    CBMSTableObject table;
    *table.GetTable() = rows;
    table.Sort(keys, 0);
    reference::Sort(rows, keys);
    ASSERT_EQ(NumbersOf(*table.GetTable()), NumbersOf(rows));
}

// Every table of up to `most` rows and `keys` key columns of the numbers below `values`.
void Exhaust(std::size_t most, std::size_t keys, int values,
             const std::function<TEValue(int)>& cell) {
    std::vector<int> key_cols;
    for (std::size_t k = 0; k < keys; ++k) {
        key_cols.push_back(static_cast<int>(k));
    }
    for (std::size_t rows = 0; rows <= most; ++rows) {
        std::vector<int> digits(rows * keys);
        for (bool more = true; more;) {
            reference::Rows table(rows);
            for (std::size_t at = 0; at < digits.size(); ++at) {
                table[at / keys].push_back(cell(digits[at]));
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(table, key_cols));
            more = false;
            for (int& digit : digits) {
                digit = (digit + 1) % values;
                if (digit != 0) {
                    more = true;
                    break;
                }
            }
        }
    }
}

TEST(SortExhaustive, OneKey) {
    Exhaust(6, 1, 4, [](int number) { return TEValue(number); });
}

TEST(SortExhaustive, TwoKeys) {
    Exhaust(4, 2, 3, [](int number) { return TEValue(number); });
    Exhaust(6, 2, 2, [](int number) { return TEValue(number); });
}

TEST(SortExhaustive, ThreeKeys) {
    Exhaust(4, 3, 2, [](int number) { return TEValue(number); });
}

// 9 < 10 < 11 as numbers; "10" < "11" < "9" as texts; each kind orders by its own.
TEST(SortExhaustive, CellsOfSeveralKinds) {
    const TEValue cells[] = {TEValue(9), TEValue("10"), TEValue(11UL), TEValue(10.5)};
    Exhaust(5, 1, 4, [&](int number) { return cells[number]; });
    Exhaust(3, 2, 4, [&](int number) { return cells[number]; });
}

using Maker = std::function<TEValue(Random&)>;

Maker Below(long limit) {
    return [=](Random& random) {
        return TEValue(static_cast<long>(random() % static_cast<unsigned long>(limit)) - limit / 2);
    };
}

TEValue AnyNumber(Random& random) {
    return TEValue(static_cast<long>(random()));
}
TEValue AnyUnsigned(Random& random) {
    return TEValue(static_cast<unsigned long>(random()));
}

// Texts with common beginnings, short and long, some with a zero octet.
TEValue AnyText(Random& random) {
    std::string text(random() % 3 * 6, 'p');
    for (auto more = random() % 12; more-- > 0;) {
        text += static_cast<char>(random() % 16 == 0 ? 0 : 0x60 + random() % 4 * 0x2A);
    }
    return TEValue(text);
}

TEValue AnyDouble(Random& random) {
    return TEValue(static_cast<double>(random() % 1000) / 8);
}

TEValue AnyKind(Random& random) {
    const int number = static_cast<int>(random() % 40) - 20;
    switch (random() % 10) {
        case 0:
            return TEValue();
        case 1:
            return TEValue(std::to_string(number));
        case 2:
            return TEValue(number + 0.25);
        case 3:
            return TEValue(static_cast<char>(number));
        case 4:
            return TEValue(static_cast<unsigned long>(number));
        case 5:
            return TEValue(static_cast<unsigned int>(number));
        case 6:
            return AnyText(random);
        default:
            return TEValue(number);
    }
}

// Numbers of several widths: one kind of comparing.
TEValue AnyWidth(Random& random) {
    const auto number = random() % 50;
    switch (random() % 4) {
        case 0:
            return TEValue(static_cast<short>(number));
        case 1:
            return TEValue(static_cast<unsigned short>(number));
        case 2:
            return TEValue(static_cast<unsigned int>(number));
        default:
            return TEValue(static_cast<long long>(number));
    }
}

TEST(SortRandom, Tables) {
    const struct {
        const char* name;
        std::vector<Maker> columns;
    } cases[] = {
        {"one key, many equal", {Below(5)}},
        {"one key, any number", {AnyNumber}},
        {"one key, any unsigned", {AnyUnsigned}},
        {"one key, texts", {AnyText}},
        {"one key, doubles", {AnyDouble}},
        {"one key, several widths", {AnyWidth}},
        {"one key, several kinds", {AnyKind}},
        {"two keys, few values", {Below(3), Below(4)}},
        {"two keys, many values", {Below(1000), AnyNumber}},
        {"two keys, numbers and texts", {AnyUnsigned, AnyText}},
        {"two keys, one constant", {Below(1), Below(100)}},
        {"two keys, both constant", {Below(1), Below(1)}},
        {"two keys, one of several kinds", {Below(6), AnyKind}},
        {"two keys, both of several kinds", {AnyKind, AnyKind}},
        {"three keys", {Below(4), Below(5), Below(6)}},
        {"three keys of any kind", {AnyKind, AnyKind, AnyKind}},
        {"four keys", {Below(9), AnyText, AnyDouble, AnyNumber}},
    };
    Random random(20261121);
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        std::vector<int> keys;
        for (std::size_t k = 0; k < each.columns.size(); ++k) {
            keys.push_back(static_cast<int>(k));
        }
        // Around the widths in which ranks are compared, and where sorting changes its way.
        for (const std::size_t count : {2, 3, 17, 63, 64, 65, 128, 129, 255, 256, 300}) {
            reference::Rows rows(count);
            for (auto& row : rows) {
                for (const Maker& make : each.columns) {
                    row.push_back(make(random));
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(rows, keys)) << count;
            std::sort(rows.begin(), rows.end(),
                      [](const auto& a, const auto& b) { return a[0].As_long() < b[0].As_long(); });
            ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(rows, keys)) << count << ", sorted";
            std::reverse(rows.begin(), rows.end());
            ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(rows, keys)) << count << ", reversed";
        }
    }
}

TEST(SortRandom, ALargeTable) {
    Random random(1);
    for (const long values : {20L, 1000L, 1000000L}) {
        reference::Rows rows(2500);
        for (auto& row : rows) {
            row = {Below(values)(random), Below(values)(random)};
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(rows, {0}));
        ASSERT_NO_FATAL_FAILURE(ExpectSameOutcome(rows, {1, 0}));
    }
}

// Ranks of so many different rows need their wide form. The rows fall on two sorted
// halves, of which the outcome is known without as many exchanges: a row with an even number
// is less than its neighbour in both keys, all others differ in direction.
TEST(SortRandom, MoreRowsThanNarrowRanksHold) {
    constexpr int kRows = 33000;
    CBMSTableObject table(std::vector<std::string>{"a", "b"});
    table.Initilize(kRows, 0);
    for (int row = 0; row < kRows; ++row) {
        const int pair = row / 2;
        const int greater = row % 2 == 0 ? 1 : 0;  // comes first, and has to move
        table.SetCellValue(0, row, TEValue(2 * pair + greater));
        table.SetCellValue(1, row, TEValue(2 * (kRows - pair) + greater));
    }
    std::vector<int> keys{0, 1};
    table.Sort(keys, 0);
    for (int row = 0; row < kRows; ++row) {
        ASSERT_EQ(table.GetCellValue(0, row).As_int(), row);
    }
}

TEST(SortRandom, RowsOfAnyLength) {
    Random random(5);
    for (int round = 0; round < 200; ++round) {
        reference::Rows rows(random() % 30);
        for (auto& row : rows) {
            row.resize(random() % 4);
            for (auto& cell : row) {
                cell = Below(4)(random);
            }
        }
        // Without numbers: these rows cannot carry one. Texts of whole rows are compared.
        CBMSTableObject table;
        *table.GetTable() = rows;
        std::vector<int> keys{2, -1, 0, 9};
        table.Sort(keys, 0);
        reference::Sort(rows, keys);
        for (std::size_t at = 0; at < rows.size(); ++at) {
            const auto& row = (*table.GetTable())[at];
            ASSERT_EQ(row.size(), rows[at].size());
            for (std::size_t col = 0; col < row.size(); ++col) {
                ASSERT_EQ(row[col].As_long(), rows[at][col].As_long());
            }
        }
    }
}

}  // namespace
