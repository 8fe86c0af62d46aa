// Reading cells with >>: every target, every kind of cell, and the end of the row.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "unit/table/cursor_probe.h"

namespace {

using namespace std::string_literals;

// A table of one row, the cursor on its first cell.
Probe Row(const std::vector<TEValue>& cells) {
    Probe table;
    for (std::size_t col = 0; col < cells.size(); ++col) {
        table.AddCol("c");
    }
    table.AddRow(1);
    *table.GetRow(0) = cells;
    table();
    return table;
}

template <typename T>
T Read(const TEValue& cell, T before = T()) {
    Probe table = Row({cell});
    T target = before;
    EXPECT_EQ(&(table >> target), &table);
    EXPECT_EQ(table.Where(), "row 0 column 0 cell 1") << "a read does not move the column";
    return target;
}

const TEValue kCells[] = {
    TEValue(),
    TEValue('a'),
    TEValue(static_cast<unsigned char>(200)),
    TEValue(static_cast<short>(-300)),
    TEValue(static_cast<unsigned short>(65000)),
    TEValue(-70000),
    TEValue(4000000000U),
    TEValue(std::numeric_limits<long>::min()),
    TEValue(std::numeric_limits<unsigned long>::max()),
    TEValue(0.1F),
    TEValue(-2.75e10),
    TEValue("1234567890123"),
    TEValue("text of more octets than a cell holds in itself"),
    TEValue("with\0zero"s),
    TEValue(refl::CBinary("\0\x01\xFF", 3)),
};

// Each built-in target takes what the value's conversion operator gives.
template <typename T>
class ReadNumber : public testing::Test {};
using Numbers_ = testing::Types<char, unsigned char, short, unsigned short, int, unsigned int, long,
                                unsigned long, float, double>;
TYPED_TEST_SUITE(ReadNumber, Numbers_);

TYPED_TEST(ReadNumber, IsTheConversion) {
    for (const TEValue& cell : kCells) {
        EXPECT_EQ(Read<TypeParam>(cell, TypeParam(1)), static_cast<TypeParam>(cell))
            << cell.GetType();
    }
}

TEST(CursorRead, Numbers) {
    EXPECT_EQ(Read<char>(TEValue('x')), 'x');
    EXPECT_EQ(Read<unsigned char>(TEValue(511)), 255);
    EXPECT_EQ(Read<short>(TEValue(-1L)), -1);
    EXPECT_EQ(Read<unsigned short>(TEValue(-1)), 65535);
    EXPECT_EQ(Read<int>(TEValue("-42 units")), -42);
    EXPECT_EQ(Read<unsigned int>(TEValue("42")), 42U);
    EXPECT_EQ(Read<long>(TEValue(std::numeric_limits<long>::min())),
              std::numeric_limits<long>::min());
    EXPECT_EQ(Read<unsigned long>(TEValue(std::numeric_limits<unsigned long>::max())),
              std::numeric_limits<unsigned long>::max());
    EXPECT_EQ(Read<float>(TEValue("0.5")), 0.5F);
    EXPECT_EQ(Read<double>(TEValue(2.25)), 2.25);
    EXPECT_EQ(Read<int>(TEValue(), 7), 0) << "an empty cell is read, too";
}

TEST(CursorRead, Values) {
    for (const TEValue& cell : kCells) {
        SCOPED_TRACE(cell.GetType());
        const auto value = Read<TEValue>(cell, TEValue("before"));
        EXPECT_EQ(value.GetType(), cell.GetType());
        EXPECT_EQ(value.As_std_string(), cell.As_std_string());
        const auto plain = Read<refl::CValue>(cell, refl::CValue(TEValue("before")));
        EXPECT_EQ(plain.GetType(), cell.GetType());
        EXPECT_EQ(plain.As_std_string(), cell.As_std_string());
        EXPECT_EQ(Read<refl::CBinary>(cell, refl::CBinary("before", 6)), cell.As_CBinary());
        EXPECT_EQ(Read<refl::CNumeric>(cell, refl::CNumeric(7)), cell.As_CNumeric());
    }
}

TEST(CursorRead, AnEmptyCellGivesAnEmptyValue) {
    EXPECT_TRUE(Read<TEValue>(TEValue(), TEValue(1)).IsNull());
    EXPECT_TRUE(Read<refl::CValue>(TEValue(), refl::CValue(TEValue(1))).IsNull());
    EXPECT_TRUE(Read<refl::CBinary>(TEValue(), refl::CBinary("x", 1)).empty());
    EXPECT_EQ(Read<std::string>(TEValue(), "before"), "");
    EXPECT_EQ(Read<CStdString>(TEValue(), "before"), "");
}

TEST(CursorRead, Texts) {
    for (const TEValue& cell : kCells) {
        SCOPED_TRACE(cell.GetType());
        EXPECT_EQ(Read<std::string>(cell, "before"), cell.As_std_string());
        EXPECT_EQ(Read<CStdString>(cell, "before"), cell.As_TEString());
    }
    EXPECT_EQ(Read<std::string>(TEValue(0.1F)), "0.1");
    EXPECT_EQ(Read<std::string>(TEValue("a\0b"s)), "a\0b"s);
}

TEST(CursorRead, AChainTakesConsecutiveCells) {
    Probe table = Row({7, "eth0", 2.5, "tail"});
    int number = 0;
    std::string text;
    double real = 0;
    table >> number >> text >> real;
    EXPECT_EQ(number, 7);
    EXPECT_EQ(text, "eth0");
    EXPECT_EQ(real, 2.5);
    table[3] >> text;
    EXPECT_EQ(text, "tail");
    table["c0"] >> text >> real;
    EXPECT_EQ(text, "eth0");
}

// The third of three reads finds no cell: its target stays, the column is -1, and so it goes
// on in this row.
TEST(CursorRead, BehindTheLastCell) {
    Probe table = Numbers(2, 2);
    table();
    int first = -1, second = -1, third = -1;
    table >> first >> second >> third;
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(third, -1);
    EXPECT_EQ(table.Where(), "row 0 column -1 cell -1");
    table >> third;
    EXPECT_EQ(third, -1);
    table[1] >> third;
    EXPECT_EQ(third, 1) << "selecting a column goes on";
    table >> third;
    table();
    table >> third;
    EXPECT_EQ(third, 10) << "and so does the next row";
}

// A target of every type stays as it is.
TYPED_TEST(ReadNumber, WithoutACellStays) {
    Probe table = Numbers(1, 1);
    TypeParam target(3);
    table >> target;
    EXPECT_EQ(target, TypeParam(3)) << "there is no row";
    table();
    table[0] >> target >> target;
    EXPECT_EQ(target, TypeParam(0)) << "there was one cell";
}

TEST(CursorRead, WithoutACellOtherTargetsStay) {
    Probe table = Row({1});
    table.GetRow(0)->clear();
    TEValue value("v");
    refl::CValue plain = TEValue("v");
    refl::CBinary binary("v", 1);
    refl::CNumeric numeric(5);
    CStdString platform_text = "v";
    std::string text = "v";
    table >> value >> plain >> binary >> numeric >> platform_text >> text;
    EXPECT_EQ(value.As_std_string(), "v");
    EXPECT_EQ(plain.As_std_string(), "v");
    EXPECT_EQ(binary, refl::CBinary("v", 1));
    EXPECT_EQ(numeric, refl::CNumeric(5));
    EXPECT_EQ(platform_text, "v");
    EXPECT_EQ(text, "v");
}

// A caller may have left fewer cells, or more than columns.
TEST(CursorRead, ShortAndLongRows) {
    Probe table = Numbers(2, 3);
    table.GetRow(0)->resize(1);
    table.GetRow(1)->emplace_back(13);
    table();
    int a = -1, b = -1;
    table >> a >> b;
    EXPECT_EQ(a, 0);
    EXPECT_EQ(b, -1);
    table[2] >> b;
    EXPECT_EQ(b, -1);
    EXPECT_EQ(table.Where(), "row 0 column -1 cell -1");
    table();
    table[99] >> a >> b;
    EXPECT_EQ(a, 12) << "the last column";
    EXPECT_EQ(b, 13) << "reads go on to the row's end";
}

TEST(CursorRead, IntoTheTableItself) {
    Probe table = Numbers(1, 2);
    table();
    table >> (*table.GetRow(0))[1];
    EXPECT_EQ(table.GetCellValue(1, 0).As_int(), 0);
    table[0] >> (*table.GetRow(0))[0];
    EXPECT_EQ(table.GetCellValue(0, 0).As_int(), 0);
}

}  // namespace
