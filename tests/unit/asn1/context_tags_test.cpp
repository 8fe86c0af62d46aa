// Context tags, EXPLICIT and IMPLICIT.
#include <gtest/gtest.h>

#include "support/asn1_coding.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

class ImplicitTags : public testing::Test {
  protected:
    ImplicitTags() { AsnSequence::SetContextTags(AsnSequence::ContextTags::kImplicit); }
    ~ImplicitTags() override { AsnSequence::SetContextTags(AsnSequence::ContextTags::kExplicit); }
};

TEST(ContextTags, AreExplicitUnlessTheProcessSaysOtherwise) {
    EXPECT_EQ(AsnSequence::GetContextTags(), AsnSequence::ContextTags::kExplicit);
}

Shape Full() {
    Shape shape;
    shape.flag.Emplace(true);
    shape.number = 5;
    shape.text.Emplace("t");
    shape.names.Ensure().Append() = "a";
    shape.far.Emplace(1.0);
    shape.tagged = 9;
    return shape;
}

// The tag replaces the type's own and keeps its form: 8x for simple types, Ax for lists.
TEST_F(ImplicitTags, ReplaceTheTypesOwn) {
    const std::string octets =
        Octets("30 17 80 01 ff 02 01 05 81 01 74 a2 03 04 01 61 9f 1f 03 80 00 01 83 01 09");
    EXPECT_EQ(Hex(Encoded(Full())), Hex(octets));
    Shape shape;
    EXPECT_EQ(Decode(octets, shape), "");
    EXPECT_EQ(Encoded(shape), octets);
}

// An octet string may still come in segments, a list with an indefinite length.
TEST_F(ImplicitTags, ReadConstructedForms) {
    const std::string octets = Octets(
        "30 80 80 01 ff 02 01 05 a1 80 04 00 04 01 74 00 00 a2 80 04 01 61 00 00"
        "9f 1f 03 80 00 01 83 01 09 00 00");
    Shape shape;
    ASSERT_EQ(Decode(octets, shape), "");
    EXPECT_EQ(Encoded(shape), Encoded(Full()));
}

TEST_F(ImplicitTags, RefuseTheWrongForm) {
    const struct {
        const char* name;
        const char* octets;
        const char* why;
    } rows[] = {
        {"a constructed boolean", "30 0b a0 03 01 01 ff 02 01 05 83 01 09",
         "Unexpected Tag at offset 2 (shapes)"},
        {"a constructed integer, which is the explicit form", "30 08 02 01 05 a3 03 02 01 09",
         "Unexpected Tag at offset 5 (shapes)"},
        {"a constructed real", "30 0e 02 01 05 bf 1f 05 09 03 80 00 01 83 01 09",
         "Unexpected Tag at offset 5 (shapes)"},
        {"a primitive list", "30 0b 02 01 05 82 03 04 01 61 83 01 09",
         "Unexpected Tag at offset 5 (shapes)"},
        {"an indefinite primitive", "30 80 02 01 05 83 80 09 00 00 00 00",
         "Indefinite Primitive at offset 7 (asn1)"},
        {"other segments", "30 0b 02 01 05 a1 03 02 01 74 83 01 09",
         "Unexpected Tag at offset 7 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(WhyNot<Shape>(Octets(row.octets)), row.why);
    }
}

TEST(ContextTags, ExplicitOnesRefuseTheImplicitForm) {
    EXPECT_EQ(WhyNot<Shape>(Octets("30 06 02 01 05 83 01 09")),
              "Unexpected Tag at offset 5 (shapes)");
    EXPECT_EQ(WhyNot<Shape>(Octets("30 0b 02 01 05 a2 03 04 01 61 83 01 09")),
              "Unexpected Tag at offset 7 (shapes)");
}

}  // namespace
}  // namespace asn1_test
