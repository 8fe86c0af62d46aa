#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "kelp/value.h"

namespace {

using refl::CBinary;
using refl::CNumeric;
using refl::CValue;
namespace Enum = refl::Enum;

// The type code is the first byte of the object, for readers that look there.
TEST(Value, TypeCodes) {
    const struct {
        const char* name;
        TEValue value;
        int code;
    } cases[] = {
        {"empty", TEValue(), 0},
        {"char", TEValue('a'), 12},
        {"signed char", TEValue(static_cast<signed char>(1)), 12},
        {"short", TEValue(static_cast<short>(1)), 13},
        {"int", TEValue(1), 14},
        {"bool", TEValue(true), 14},
        {"long", TEValue(1L), 15},
        {"long long", TEValue(1LL), 16},
        {"float", TEValue(1.0F), 17},
        {"double", TEValue(1.0), 18},
        {"unsigned char", TEValue(static_cast<unsigned char>(1)), 22},
        {"unsigned short", TEValue(static_cast<unsigned short>(1)), 23},
        {"unsigned int", TEValue(1U), 24},
        {"unsigned long", TEValue(1UL), 25},
        {"unsigned long long", TEValue(1ULL), 25},
        {"characters", TEValue("a"), 41},
        {"string", TEValue(std::string("a")), 41},
        {"platform string", TEValue(CStdString("a")), 41},
        {"view", TEValue(std::string_view("a")), 41},
        {"null characters", TEValue(static_cast<const char*>(nullptr)), 0},
        {"binary", TEValue(CBinary("a", 1)), 47},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value.GetType(), c.code) << c.name;
        EXPECT_EQ(*reinterpret_cast<const unsigned char*>(&c.value), c.code) << c.name;
        EXPECT_EQ(c.value.IsNull(), c.code == 0) << c.name;
    }
}

TEST(Value, IsSmallAndMovesWithoutThrowing) {
    EXPECT_EQ(sizeof(TEValue), 24U);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<TEValue>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<TEValue>);
    EXPECT_TRUE(std::is_nothrow_default_constructible_v<TEValue>);
}

// Texts on both sides of what lives in the value itself: copies are independent, moves
// leave nothing behind, and all of it survives self-assignment.
TEST(Value, TextsOfEveryLengthCopyAndMove) {
    for (std::size_t length = 0; length <= 64; ++length) {
        std::string text(length, 'x');
        for (std::size_t i = 0; i < length; ++i) {
            text[i] = static_cast<char>(i % 7 == 0 ? 0 : 'a' + i % 26);
        }
        TEValue value(text);
        EXPECT_EQ(value.As_std_string(), text) << length;
        EXPECT_EQ(value.Bytes(), text) << length;

        TEValue copy(value);
        TEValue assigned("something that has to give way, longer than a short text");
        assigned = value;
        TEValue read;
        read.ReadFrom(value);
        read.ReadFrom(read);
        TEValue& same = assigned;
        assigned = same;
        value.Clear();
        EXPECT_TRUE(value.IsNull());
        EXPECT_EQ(copy.As_std_string(), text) << length;
        EXPECT_EQ(assigned.As_std_string(), text) << length;
        EXPECT_EQ(read.As_std_string(), text) << length;

        TEValue moved(std::move(copy));
        EXPECT_EQ(moved.As_std_string(), text) << length;
        EXPECT_TRUE(copy.IsNull()) << length;  // NOLINT(bugprone-use-after-move)
        assigned = std::move(moved);
        EXPECT_EQ(assigned.As_std_string(), text) << length;
        EXPECT_TRUE(moved.IsNull()) << length;  // NOLINT(bugprone-use-after-move)
        assigned = std::move(same);
        EXPECT_EQ(assigned.As_std_string(), text) << length;
    }
}

TEST(Value, AssignmentReplacesAnyKindByAnyOther) {
    const std::string lengthy(100, 'l');
    const std::vector<TEValue> kinds = {TEValue(),
                                        TEValue('c'),
                                        TEValue(7),
                                        TEValue(7.5),
                                        TEValue("text"),
                                        TEValue(lengthy),
                                        TEValue(CBinary(lengthy.data(), lengthy.size()))};
    for (const TEValue& from : kinds) {
        for (const TEValue& to : kinds) {
            TEValue value(to);
            value = from;
            EXPECT_EQ(value.GetType(), from.GetType());
            EXPECT_EQ(value.As_std_string(), from.As_std_string());
        }
    }
}

TEST(Value, BetweenTheTwoClasses) {
    const TEValue number(7);
    CValue plain;
    plain.ReadFrom(number);
    EXPECT_EQ(plain.As_int(), 7);
    const CValue& base = number;
    EXPECT_EQ(TEValue(base).As_int(), 7);
    EXPECT_EQ(TEValue(CValue(number)).As_int(), 7);
    TEValue target("text");
    target.ReadFrom(plain);
    EXPECT_EQ(target.GetType(), Enum::DT_INT);
    const refl::CStdBasicTypeConstRefrence& reader = number;
    EXPECT_EQ(reader.As_short(), 7);
}

// The conversion operators are those of the readers, and implicit: a value stands where
// a number is wanted.
TEST(Value, ConversionOperators) {
    const TEValue value(66);
    const char c = value;
    const signed char sc = value;
    const unsigned char uc = value;
    const short s = value;
    const unsigned short us = value;
    const int i = value;
    const unsigned int u = value;
    const long l = value;
    const unsigned long ul = value;
    const long long ll = value;
    const unsigned long long ull = value;
    const float f = value;
    const double d = value;
    const std::string text = value;
    EXPECT_EQ(c, 'B');
    EXPECT_EQ(sc, 66);
    EXPECT_EQ(uc, 66);
    EXPECT_EQ(s, 66);
    EXPECT_EQ(us, 66);
    EXPECT_EQ(i, 66);
    EXPECT_EQ(u, 66U);
    EXPECT_EQ(l, 66);
    EXPECT_EQ(ul, 66U);
    EXPECT_EQ(ll, 66);
    EXPECT_EQ(ull, 66U);
    EXPECT_EQ(f, 66.0F);
    EXPECT_EQ(d, 66.0);
    EXPECT_EQ(text, "66");
    EXPECT_EQ(std::string(value), "66");
    EXPECT_EQ(static_cast<long>(TEValue("9007199254740993")), 9007199254740993);
    EXPECT_FALSE((std::is_assignable_v<std::string&, TEValue>)) << "could mean a character";
}

// Assigns as a parameter node does: a value next to everything it could turn into.
class Target {
  public:
    Target& operator=(int) { return Chosen("int"); }
    Target& operator=(unsigned int) { return Chosen("unsigned int"); }
    Target& operator=(long) { return Chosen("long"); }
    Target& operator=(unsigned long) { return Chosen("unsigned long"); }
    Target& operator=(double) { return Chosen("double"); }
    Target& operator=(const char*) { return Chosen("characters"); }
    Target& operator=(std::string) { return Chosen("string"); }
    Target& operator=(const Target*) { return Chosen("pointer"); }
    Target& operator=(const TEValue&) { return Chosen("TEValue"); }
    Target& operator=(const CValue&) { return Chosen("CValue"); }

    const char* chosen = "";

  private:
    Target& Chosen(const char* name) {
        chosen = name;
        return *this;
    }
};

TEST(Value, StandsInAnOverloadSet) {
    Target target;
    TEValue value(7);
    const TEValue constant(7);
    CValue plain(value);
    const CValue constant_plain(value);
    EXPECT_STREQ((target = value).chosen, "TEValue");
    EXPECT_STREQ((target = constant).chosen, "TEValue");
    EXPECT_STREQ((target = TEValue(7)).chosen, "TEValue");
    EXPECT_STREQ((target = plain).chosen, "CValue");
    EXPECT_STREQ((target = constant_plain).chosen, "CValue");
    EXPECT_STREQ((target = CValue(value)).chosen, "CValue");
    EXPECT_STREQ((target = 7).chosen, "int");
    EXPECT_STREQ((target = 7U).chosen, "unsigned int");
    EXPECT_STREQ((target = 7L).chosen, "long");
    EXPECT_STREQ((target = 7UL).chosen, "unsigned long");
    EXPECT_STREQ((target = 7.0).chosen, "double");
    EXPECT_STREQ((target = "7").chosen, "characters");
    EXPECT_STREQ((target = std::string("7")).chosen, "string");
    EXPECT_STREQ((target = CStdString("7")).chosen, "string");
}

TEST(Binary, OwnsItsBytes) {
    char bytes[] = {'a', '\0', 'b'};
    CBinary binary(bytes, sizeof bytes);
    bytes[0] = 'x';
    EXPECT_EQ(std::string(binary.data(), binary.length()), std::string("a\0b", 3));
    EXPECT_EQ(binary.size(), 3U);
    EXPECT_EQ(CBinary().data(), nullptr);
    EXPECT_EQ(CBinary("", 0).data(), nullptr);
    EXPECT_EQ(CBinary(nullptr, 5).data(), nullptr);
    EXPECT_TRUE(CBinary(nullptr, 5).empty());
    EXPECT_EQ(binary, CBinary("a\0b", 3));
    EXPECT_FALSE(binary == CBinary("a\0c", 3));
    // A block read out of a value outlives it.
    CBinary kept;
    {
        const TEValue value(CBinary("0123456789012345678901234567890", 31));
        kept = value.As_CBinary();
    }
    EXPECT_EQ(std::string(kept.data(), kept.length()), "0123456789012345678901234567890");
}

TEST(PlatformString, IsAStandardString) {
    CStdString text = TEValue(5).As_TEString();
    EXPECT_EQ(text, "5");
    std::string plain = TEValue(5).As_TEString();
    EXPECT_EQ(plain, "5");
    text = plain + "6";
    EXPECT_EQ(text, std::string("56"));
    text = "57";
    EXPECT_EQ(text.size(), 2U);
}

}  // namespace
