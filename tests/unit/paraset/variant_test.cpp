// Assigning the platform's variant: how its codes are read, and which node takes what.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/captured_log.h"
#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;

// A value of any code, known to the platform or not, with nothing behind it.
struct ValueOfCode : refl::CValue {
    explicit ValueOfCode(int code) { m_type = static_cast<std::uint8_t>(code); }
};

TEST(AssignVariant, ReadsEachCodeInItsOwnWay) {
    const auto kNull = CParaSet::PARA_NULL;
    const auto kDouble = CParaSet::PARA_DOUBLE;
    const auto kInt = CParaSet::PARA_INT;
    const auto kString = CParaSet::PARA_STRING;
    const Fields reset{kNull, -1, 0.0, ""};
    const auto integer = [&](int value) { return Fields{kInt, value, 2.5, "old"}; };
    const auto real = [&](double value) { return Fields{kDouble, 3, value, "old"}; };
    const auto text = [&](std::string value) { return Fields{kString, 3, 2.5, std::move(value)}; };
    const struct {
        const char* name;
        TEValue value;
        int code;
        Fields after;
    } rows[] = {
        {"empty", TEValue(), 0, reset},
        {"char", TEValue('x'), 12, text("x")},
        {"zero char", TEValue('\0'), 12, text(std::string(1, '\0'))},
        {"unsigned char", TEValue(static_cast<unsigned char>(200)), 22, text("\xc8")},
        {"short", TEValue(static_cast<short>(-7)), 13, integer(-7)},
        {"smallest short", TEValue(static_cast<short>(SHRT_MIN)), 13, integer(SHRT_MIN)},
        {"unsigned short", TEValue(static_cast<unsigned short>(65535)), 23, integer(65535)},
        {"int", TEValue(INT_MIN), 14, integer(INT_MIN)},
        {"unsigned int", TEValue(UINT_MAX), 24, integer(-1)},
        {"unsigned 64 bits", TEValue((1UL << 32) + 5), 25, integer(5)},
        {"largest unsigned 64 bits", TEValue(ULONG_MAX), 25, integer(-1)},
        {"long", TEValue(LONG_MIN), 15, text("-9223372036854775808")},
        {"long long", TEValue(42LL), 16, text("42")},
        {"float", TEValue(1.5F), 17, real(1.5)},
        {"double", TEValue(0.1), 18, real(0.1)},
        {"text", TEValue("text"), 41, text("text")},
        {"text with a zero", TEValue(std::string("a\0b", 3)), 41, text(std::string("a\0b", 3))},
        {"long text", TEValue(std::string(100, 'x')), 41, text(std::string(100, 'x'))},
        {"empty text keeps the string", TEValue(""), 41, text("old")},
        {"block", TEValue(refl::CBinary("a\0b\0", 4)), 47, text(std::string("a\0b\0", 4))},
        {"empty block keeps the string", TEValue(refl::CBinary()), 47, text("old")},
        {"code 1", TEValue(ValueOfCode(1)), 1, reset},
        {"code 11", TEValue(ValueOfCode(11)), 11, reset},
        {"code 19", TEValue(ValueOfCode(19)), 19, reset},
        {"code 21", TEValue(ValueOfCode(21)), 21, reset},
        {"code 26", TEValue(ValueOfCode(26)), 26, reset},
        {"code 40", TEValue(ValueOfCode(40)), 40, reset},
        {"code 46", TEValue(ValueOfCode(46)), 46, reset},
        {"code 48", TEValue(ValueOfCode(48)), 48, reset},
        {"code 255", TEValue(ValueOfCode(255)), 255, reset},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(row.value.GetType(), row.code);
        CParaSet node("n");
        MakeNode(node, kNull);
        EXPECT_EQ(&(node = row.value), &node);
        EXPECT_EQ(FieldsOf(node), row.after);

        CParaSet general("n");
        MakeNode(general, kNull);
        const refl::CValue& value = row.value;
        EXPECT_EQ(&(general = value), &general);
        EXPECT_EQ(FieldsOf(general), row.after);
    }
}

// Each kind on each type of node; the fields were 3, 2.5 and "old". A text is in the
// string field before the type is looked at, so a refusal leaves it there.
TEST(AssignVariant, GoesWhereItsKindFits) {
    enum Kind { kNullKind, kInteger, kReal, kText };
    const TEValue values[] = {TEValue(), TEValue(7), TEValue(7.5), TEValue("new")};
    const struct {
        CParaSet::ValueType before;
        bool taken[4];
        CParaSet::ValueType after[4];
    } rows[] = {
        {CParaSet::PARA_NULL,
         {true, true, true, true},
         {CParaSet::PARA_NULL, CParaSet::PARA_INT, CParaSet::PARA_DOUBLE, CParaSet::PARA_STRING}},
        {CParaSet::PARA_INT, {true, true, false, false}, {}},
        {CParaSet::PARA_DOUBLE, {true, false, true, false}, {}},
        {CParaSet::PARA_STRING, {true, false, false, true}, {}},
        {CParaSet::PARA_ARRAY, {}, {}},
        {CParaSet::PARA_STRUCT, {}, {}},
        {CParaSet::PARA_RESERVED, {}, {}},
        {CParaSet::PARA_RESID, {}, {}},
        {kUnknownType, {}, {}},
    };
    ASSERT_EQ(std::size(rows), std::size(kEveryType));
    for (const auto& row : rows) {
        for (const Kind kind : {kNullKind, kInteger, kReal, kText}) {
            SCOPED_TRACE("kind " + std::to_string(kind) + " into " + NameOf(row.before));
            Fields expected{row.before, 3, 2.5, kind == kText ? "new" : "old"};
            if (row.taken[kind]) {
                if (row.before == CParaSet::PARA_NULL) {
                    expected.type = row.after[kind];
                }
                if (kind == kNullKind) {
                    expected = Fields{expected.type, -1, 0.0, ""};
                } else if (kind == kInteger) {
                    expected.integer = 7;
                } else if (kind == kReal) {
                    expected.real = 7.5;
                }
            }
            CParaSet node("n");
            MakeNode(node, row.before);
            const std::size_t children = node.GetMapValue().size() + node.GetVctValue().size();
            CapturedLog log;
            EXPECT_EQ(CodeOf([&] { node = values[kind]; }), row.taken[kind] ? 0 : -3);
            EXPECT_EQ(FieldsOf(node), expected);
            EXPECT_EQ(node.GetMapValue().size() + node.GetVctValue().size(), children);
            EXPECT_THAT(log.Texts(), testing::IsEmpty());
        }
    }
}

TEST(AssignVariant, OfNothingResetsAndKeepsTheType) {
    CParaSet node("n", 5);
    node = TEValue();
    EXPECT_EQ(node.type(), CParaSet::PARA_INT);
    EXPECT_EQ(node.asInt(), -1);
}

TEST(AssignVariant, OfAnEmptyBlockMakesAString) {
    CParaSet fresh("n");
    fresh = TEValue(refl::CBinary());
    EXPECT_EQ(Shape(fresh), "\"\"");
}

TEST(AssignVariant, TakesWhatAnotherNodeGives) {
    CParaSet from("from");
    CParaSet to("to");
    from["i"] = INT_MIN;
    from["d"] = 2.5;
    from["s"] = std::string("a\0b", 3);
    for (const char* name : {"i", "d", "s"}) {
        to[name] = from[name].value();
    }
    EXPECT_EQ(Shape(to), Shape(from));
}

}  // namespace
