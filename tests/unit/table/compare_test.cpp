// How two cells are compared: as the type of the left one says.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "table/cell.h"
#include "unit/table/exchange_reference.h"

namespace {

using namespace std::string_literals;
using FrameUtil::table::LeftCell;

constexpr long kMax = std::numeric_limits<long>::max();
constexpr long kMin = std::numeric_limits<long>::min();
constexpr unsigned long kUnsignedMax = std::numeric_limits<unsigned long>::max();

TEST(CompareCells, Cases) {
    const struct {
        const char* name;
        TEValue left, right;
        int result;
    } cases[] = {
        {"short", TEValue(static_cast<short>(9)), TEValue(10), -1},
        {"int", TEValue(9), TEValue(10), -1},
        {"long", TEValue(kMin), TEValue(kMax), -1},
        {"long long", TEValue(10LL), TEValue(9), 1},
        {"unsigned short", TEValue(static_cast<unsigned short>(9)), TEValue(-1), 1},
        {"unsigned int", TEValue(9U), TEValue(10), -1},
        {"int against a text", TEValue(9), TEValue("10x"), -1},
        {"int against a text that is no number", TEValue(0), TEValue("x"), 0},
        {"int against a double", TEValue(2), TEValue(2.9), 0},
        {"int against empty", TEValue(0), TEValue(), 0},
        {"long against what exceeds it", TEValue(0L), TEValue(kUnsignedMax), 1},
        {"unsigned long", TEValue(kUnsignedMax), TEValue(0L), 1},
        {"unsigned long against -1", TEValue(kUnsignedMax), TEValue(-1), 0},
        {"text", TEValue("10"), TEValue("9"), -1},
        {"text against a number", TEValue("10"), TEValue(9), -1},
        {"text against a long number", TEValue("1"), TEValue(kUnsignedMax), -1},
        {"a text's beginning", TEValue("ab"), TEValue("abc"), -1},
        {"octets are unsigned", TEValue("\xFF"), TEValue("a"), 1},
        {"up to a zero octet", TEValue("a\0b"s), TEValue("a\0c"s), 0},
        {"a zero octet ends", TEValue("a\0b"s), TEValue("ab"), -1},
        {"double", TEValue(10.0), TEValue(9.0), -1},
        {"float", TEValue(0.5F), TEValue("0.5"), 0},
        {"char", TEValue('b'), TEValue("a"), 1},
        {"a zero char", TEValue('\0'), TEValue(), 0},
        {"unsigned char", TEValue(static_cast<unsigned char>('a')), TEValue("a"), 0},
        {"binary", TEValue(refl::CBinary("ab", 2)), TEValue("ab"), 0},
        {"empty", TEValue(), TEValue(""), 0},
        {"empty against a number", TEValue(), TEValue(-5), -1},
        {"long texts", TEValue(std::string(100, 'x')), TEValue(std::string(101, 'x')), -1},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(LeftCell(each.left).Compare(each.right), each.result);
        EXPECT_EQ(reference::CompareCells(each.left, each.right), each.result);
    }
}

// Every kind on either side, with the definition beside it.
TEST(CompareCells, EveryPair) {
    std::vector<TEValue> cells{TEValue(), TEValue(""), TEValue("\0"s), TEValue(' ')};
    for (const int number : {-129, -1, 0, 1, 2, 9, 10, 65, 255}) {
        cells.insert(
            cells.end(),
            {TEValue(static_cast<char>(number)), TEValue(static_cast<signed char>(number)),
             TEValue(static_cast<unsigned char>(number)), TEValue(static_cast<short>(number)),
             TEValue(static_cast<unsigned short>(number)), TEValue(number),
             TEValue(static_cast<unsigned int>(number)), TEValue(long{number}),
             TEValue(static_cast<unsigned long>(number)), TEValue(static_cast<long long>(number)),
             TEValue(static_cast<float>(number)), TEValue(number + 0.5),
             TEValue(std::to_string(number)), TEValue(refl::CBinary(&number, sizeof number))});
    }
    for (const TEValue& left : cells) {
        const LeftCell prepared(left);
        for (const TEValue& right : cells) {
            ASSERT_EQ(prepared.Compare(right), reference::CompareCells(left, right))
                << left.GetType() << " \"" << left.As_std_string() << "\" and " << right.GetType()
                << " \"" << right.As_std_string() << '"';
        }
    }
}

}  // namespace
