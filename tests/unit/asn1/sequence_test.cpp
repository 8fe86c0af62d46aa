// Records: which fields may be where, and what a record does with them.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "support/asn1_coding.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

// The fields of Shape, each with a value that shows in the octets.
const std::string kFlag = Octets("a0 03 01 01 ff");
const std::string kNumber = Octets("02 01 05");
const std::string kText = Octets("a1 03 04 01 74");
const std::string kNames = Octets("a2 08 30 06 04 01 61 04 01 62");
const std::string kPlain = Octets("04 01 70");
const std::string kList = Octets("30 03 04 01 6c");
const std::string kFar = Octets("bf 1f 05 09 03 80 00 01");
const std::string kTagged = Octets("a3 03 02 01 09");

Shape Full() {
    Shape shape;
    shape.flag.Emplace(true);
    shape.number = 5;
    shape.text.Emplace("t");
    shape.names.Ensure().Append() = "a";
    shape.names->Append() = "b";
    shape.plain.Emplace("p");
    shape.list.Ensure().Append() = "l";
    shape.far.Emplace(1.0);
    shape.tagged = 9;
    return shape;
}

TEST(AsnSequence, WritesPresentFieldsInOrder) {
    EXPECT_EQ(Hex(Encoded(Full())), Hex(Element(0x30, kFlag + kNumber + kText + kNames + kPlain +
                                                          kList + kFar + kTagged)));
    EXPECT_EQ(Hex(Encoded(Shape())), "30 08 02 01 00 a3 03 02 01 00");
}

// Every combination of the optional fields is read and written the same.
TEST(AsnSequence, ReadsEveryCombinationOfOptionalFields) {
    for (unsigned present = 0; present < 64; ++present) {
        SCOPED_TRACE(present);
        const auto if_present = [&](unsigned bit, const std::string& field) {
            return (present >> bit & 1) != 0 ? field : std::string();
        };
        const std::string octets = Element(
            0x30, if_present(0, kFlag) + kNumber + if_present(1, kText) + if_present(2, kNames) +
                      if_present(3, kPlain) + if_present(4, kList) + if_present(5, kFar) + kTagged);
        Shape shape;
        ASSERT_EQ(Decode(octets, shape), "");
        EXPECT_EQ(static_cast<bool>(shape.flag), (present & 1) != 0);
        EXPECT_EQ(static_cast<bool>(shape.text), (present & 2) != 0);
        EXPECT_EQ(static_cast<bool>(shape.names), (present & 4) != 0);
        EXPECT_EQ(static_cast<bool>(shape.plain), (present & 8) != 0);
        EXPECT_EQ(static_cast<bool>(shape.list), (present & 16) != 0);
        EXPECT_EQ(static_cast<bool>(shape.far), (present & 32) != 0);
        EXPECT_EQ(Encoded(shape), octets);
    }
}

TEST(AsnSequence, ReadsIndefiniteLengthsAtEveryLevel) {
    const std::string octets = IndefiniteElement(
        0x30, IndefiniteElement(0xa0, Octets("01 01 01")) + kNumber +
                  IndefiniteElement(0xa1, IndefiniteElement(0x24, Octets("04 01 74"))) +
                  IndefiniteElement(0xa2, IndefiniteElement(0x30, Octets("04 01 61 04 01 62"))) +
                  IndefiniteElement(0x24, Octets("04 00 04 01 70")) +
                  IndefiniteElement(0x30, Octets("04 01 6c")) +
                  Octets("bf 1f 80 09 03 80 00 01 00 00") +
                  IndefiniteElement(0xa3, Octets("02 01 09")));
    Shape shape;
    ASSERT_EQ(Decode(octets, shape), "");
    EXPECT_EQ(Hex(Encoded(shape)), Hex(Encoded(Full())));
}

TEST(AsnSequence, RefusesFieldsThatAreMissingTwiceOrOutOfPlace) {
    const std::string n = kNumber;
    const std::string t = kTagged;
    const struct {
        const char* name;
        std::string content;
        const char* why;
    } rows[] = {
        {"nothing", "", "Unexpected End at offset 2 (shapes)"},
        {"the first mandatory field missing", t, "Unexpected Tag at offset 2 (shapes)"},
        {"the last mandatory field missing", n, "Unexpected End at offset 5 (shapes)"},
        {"only an optional field", kFlag, "Unexpected End at offset 7 (shapes)"},
        {"an optional field twice", kFlag + kFlag + n + t, "Unexpected Tag at offset 7 (shapes)"},
        {"a mandatory field twice", n + n + t, "Unexpected Tag at offset 5 (shapes)"},
        {"a later optional field twice", n + kText + kText + t,
         "Unexpected Tag at offset 10 (shapes)"},
        {"out of order", n + kFlag + t, "Unexpected Tag at offset 5 (shapes)"},
        {"optional fields out of order", n + kNames + kText + t,
         "Unexpected Tag at offset 15 (shapes)"},
        {"unknown in front", Octets("05 00") + n + t, "Unexpected Tag at offset 2 (shapes)"},
        {"unknown behind", n + t + Octets("05 00"), "Unexpected Tag at offset 10 (shapes)"},
        {"an unknown context tag behind", n + t + Octets("a4 02 05 00"),
         "Unexpected Tag at offset 10 (shapes)"},
        {"application tag for a context tag", n + Octets("63 03 02 01 09"),
         "Unexpected Tag at offset 5 (shapes)"},
        {"primitive context tag", n + Octets("83 01 09"), "Unexpected Tag at offset 5 (shapes)"},
        {"empty context tag", n + Octets("a3 00"), "Unexpected Tag at offset 7 (shapes)"},
        {"empty indefinite context tag", n + Octets("a3 80 00 00"),
         "Unexpected Tag at offset 7 (shapes)"},
        {"another type in a context tag", n + Octets("a3 03 04 01 09"),
         "Unexpected Tag at offset 7 (shapes)"},
        {"two values in a context tag", n + Octets("a3 06 02 01 09 02 01 09"),
         "Unexpected Tag at offset 10 (shapes)"},
        {"a value longer than its context tag", n + Octets("a3 03 02 02 09 09"),
         "Length Beyond Input at offset 9 (asn1)"},
        {"a value shorter than its context tag", n + Octets("a3 04 02 01 09 00"),
         "Unexpected Tag at offset 10 (shapes)"},
        {"a bad value in a context tag", n + Octets("a3 02 02 00"),
         "Bad Integer at offset 9 (asn1)"},
        {"another element in a list", n + Octets("30 03 02 01 05") + t,
         "Unexpected Tag at offset 7 (shapes)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(WhyNot<Shape>(Element(0x30, row.content)), row.why);
    }
}

TEST(AsnSequence, RefusesWhatIsNoRecord) {
    EXPECT_EQ(WhyNot<Shape>(Octets("31 00")), "Unexpected Tag at offset 0 (shapes)");
    EXPECT_EQ(WhyNot<Shape>(Octets("10 00")), "Unexpected Tag at offset 0 (shapes)");
    EXPECT_EQ(WhyNot<Shape>(Octets("bf 30 00")), "Unexpected Tag at offset 0 (shapes)");
    EXPECT_EQ(WhyNot<Shape>(Octets("30 80 00")), "Unexpected Tag at offset 2 (shapes)");
    EXPECT_EQ(WhyNot<Shape>(""), "Unexpected End at offset 0 (asn1)");
}

// Contents alone, for a caller that has read or will write the header itself.
TEST(AsnSequence, ReadsAndWritesContentsAlone) {
    AsnBuffer out;
    Full().BEncContent(out);
    const std::string content(reinterpret_cast<const char*>(out.data()), out.size());
    EXPECT_EQ(Element(0x30, content), Encoded(Full()));
    Shape shape;
    AsnReader in(content.data(), content.size());
    shape.BDecContent(in);
    EXPECT_EQ(Encoded(shape), Encoded(Full()));
}

TEST(AsnSequence, KeepsTheFieldsBeforeAFailure) {
    const std::string octets = Element(0x30, kFlag + kNumber + kText + Octets("05 00"));
    Shape shape;
    AsnReader in(octets.data(), octets.size());
    EXPECT_THROW(shape.BDec(in), CSM_Exception);
    EXPECT_TRUE(*shape.flag);
    EXPECT_EQ(static_cast<std::int64_t>(shape.number), 5);
    EXPECT_EQ(shape.text->str(), "t");
    EXPECT_FALSE(shape.names);
}

// A record that is read into twice is overwritten field by field; lists are added to.
TEST(AsnSequence, ReadingIntoAFilledRecordAddsToIt) {
    const std::string octets = Element(0x30, kNumber + kList + kTagged);
    Shape shape = Full();
    shape.number = 1;
    AsnReader in(octets.data(), octets.size());
    shape.BDec(in);
    EXPECT_EQ(static_cast<std::int64_t>(shape.number), 5);
    EXPECT_EQ(shape.list->Count(), 2U);
    EXPECT_EQ(shape.text->str(), "t");
    EXPECT_EQ(Decode(octets, shape), "");
    EXPECT_EQ(Encoded(shape), octets) << "AsnDecode starts afresh";
}

TEST(AsnSequence, CopiesAreDeep) {
    const Shape full = Full();
    Shape copy(full);
    EXPECT_EQ(Encoded(copy), Encoded(full));
    copy.names->Append() = "c";
    *copy.text = "other";
    EXPECT_EQ(Encoded(full), Encoded(Full()));
    copy = full;
    EXPECT_EQ(Encoded(copy), Encoded(full));
    Shape assigned;
    assigned.Assign(full);
    EXPECT_EQ(Encoded(assigned), Encoded(full));
    assigned.Assign(Shape());
    EXPECT_EQ(Encoded(assigned), Encoded(Shape())) << "absent fields become absent";
    assigned.CopyFrom(*full.Clone());
    assigned.Assign(assigned);
    EXPECT_EQ(Encoded(assigned), Encoded(full));
    assigned.Clear();
    EXPECT_EQ(Encoded(assigned), Encoded(Shape()));
}

TEST(AsnSequence, PrintsNamesAndValues) {
    EXPECT_EQ(Printed(Full()),
              "Shape {\n"
              "  flag true\n"
              "  number 5\n"
              "  text \"t\"\n"
              "  names [2] {\n"
              "    \"a\"\n"
              "    \"b\"\n"
              "  }\n"
              "  plain \"p\"\n"
              "  list [1] {\n"
              "    \"l\"\n"
              "  }\n"
              "  far 1\n"
              "  tagged 9\n"
              "}\n");
    Chain chain;
    chain.next.Ensure().next.Ensure();
    EXPECT_EQ(Printed(chain, 1),
              "Chain {\n    next Chain {\n      next Chain {\n      }\n    }\n  }\n");
}

TEST(AsnOptional, OwnsItsValue) {
    AsnOptional<AsnInt> field;
    EXPECT_FALSE(field);
    EXPECT_TRUE(field == nullptr);
    EXPECT_EQ(field.get(), nullptr);
    AsnInt& made = field.Emplace(5);
    EXPECT_EQ(&made, field.get());
    EXPECT_EQ(&field.Ensure(), &made);
    field = &made;  // its own value: nothing happens
    EXPECT_EQ(static_cast<std::int64_t>(*field), 5);
    field = new AsnInt(6);
    EXPECT_EQ(static_cast<std::int64_t>(*field), 6);
    AsnOptional<AsnInt> copy(field);
    *copy = 7;
    EXPECT_EQ(static_cast<std::int64_t>(*field), 6);
    AsnOptional<AsnInt> moved(std::move(copy));
    EXPECT_FALSE(copy);  // NOLINT(bugprone-use-after-move)
    field = moved;
    EXPECT_EQ(static_cast<std::int64_t>(*field), 7);
    field = std::move(moved);
    EXPECT_FALSE(moved);  // NOLINT(bugprone-use-after-move)
    const AsnOptional<AsnInt>& itself = field;
    field = itself;
    EXPECT_EQ(static_cast<std::int64_t>(*field), 7);
    const std::unique_ptr<AsnInt> released(field.release());
    EXPECT_EQ(static_cast<std::int64_t>(*released), 7);
    EXPECT_FALSE(field);
    field.Ensure();
    field = nullptr;
    EXPECT_FALSE(field);
    field.Ensure();
    field.reset();
    EXPECT_FALSE(field);
}

const std::string kTwoLinks = Octets("30 08 a0 06 30 04 a0 02 30 00");

// A field that takes what its own value holds survives the loss of that value.
TEST(AsnOptional, TakesAPartOfItself) {
    Chain chain;
    chain.next.Ensure().next.Ensure().next.Ensure();
    chain.next = chain.next->next;
    EXPECT_EQ(Encoded(chain), kTwoLinks);
}

TEST(AsnOptional, MovesAPartOfItself) {
    Chain chain;
    chain.next.Ensure().next.Ensure().next.Ensure();
    chain.next = std::move(chain.next->next);
    EXPECT_EQ(Encoded(chain), kTwoLinks);
}

TEST(ClassInfor, DescribesTheFieldsInOrder) {
    const Shape shape;
    const refl::CClassInfor& infor = shape.GetClassInfor();
    EXPECT_STREQ(infor.Name(), "Shape");
    EXPECT_STREQ(infor.Unit(), "shapes");
    ASSERT_EQ(infor.Attributes().size(), 8U);
    EXPECT_STREQ(infor.Attributes()[6].name, "far");
    EXPECT_EQ(infor.Attributes()[6].tag, 31);
    EXPECT_TRUE(infor.Attributes()[6].optional);
    EXPECT_EQ(infor.Attributes()[1].tag, refl::CClassInfor::kNoTag);
    EXPECT_FALSE(infor.Attributes()[1].optional);
    EXPECT_EQ(&infor, &Shape().GetClassInfor()) << "described once";
}

TEST(ClassInfor, MakesTypesByName) {
    EXPECT_EQ(refl::CClassInfor::CreateType("shapes.Names"), nullptr);
    refl::CClassInfor::RegisterType("shapes.Names",
                                    [] { return static_cast<AsnType*>(new Names); });
    EXPECT_NE(dynamic_cast<Names*>(refl::CClassInfor::CreateType("shapes.Names").get()), nullptr);
    refl::CClassInfor::RegisterType("shapes.Names",
                                    [] { return static_cast<AsnType*>(new Shape); });
    EXPECT_NE(dynamic_cast<Shape*>(refl::CClassInfor::CreateType("shapes.Names").get()), nullptr)
        << "the later registration replaces";
    EXPECT_EQ(refl::CClassInfor::CreateType(""), nullptr);
}

}  // namespace
}  // namespace asn1_test
