// Memory that runs out at any allocation: nothing leaks, nothing is half-owned, and the
// object works afterwards. Leaks show in the build with AddressSanitizer, where pooled
// blocks come from operator new as well.
#include <gtest/gtest.h>

#include <memory>

#include "support/asn1_coding.h"
#include "support/failing_new.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

const std::string kLongText(1000, 'x');  // neither in its object nor in a pooled block

Names ManyNames() {
    Names names;
    for (int i = 0; i < 40; ++i) {
        names.Append() = kLongText + std::to_string(i);
    }
    return names;
}

Shape FullShape() {
    Shape shape;
    shape.text.Emplace(kLongText);
    shape.names.Emplace(ManyNames());
    shape.plain.Emplace(kLongText);
    return shape;
}

TEST(FailingMemory, CopyOfAList) {
    const Names names = ManyNames();
    int n = 1;
    for (; FailNth(n, [&] { const Names copy(names); }); ++n) {
    }
    EXPECT_GT(n, 40) << "one text an element";
}

TEST(FailingMemory, AssignmentOfAListChangesAllOrNothing) {
    const Names names = ManyNames();
    Names target;
    target.Append() = "former";
    int n = 1;
    for (; FailNth(n, [&] { target = names; }); ++n) {
        ASSERT_EQ(target.Count(), 1U);
        ASSERT_EQ(target[0].str(), "former");
    }
    EXPECT_GT(n, 40);
    EXPECT_EQ(Encoded(target), Encoded(names));
}

TEST(FailingMemory, AppendOfAValue) {
    Names names;
    for (int n = 1; FailNth(n, [&] { names.Append(AsnOcts(kLongText)); }); ++n) {
        ASSERT_TRUE(names.empty());
    }
    EXPECT_EQ(names.Count(), 1U);
}

TEST(FailingMemory, CopiesOfARecord) {
    const Shape shape = FullShape();
    const std::string octets = Encoded(shape);
    Shape target;
    int n = 1;
    for (; FailNth(n, [&] { target.Assign(shape); }); ++n) {
        ASSERT_NE(Encoded(target), "");
    }
    EXPECT_GT(n, 40);
    EXPECT_EQ(Encoded(target), octets);
    for (n = 1; FailNth(n, [&] { const Shape copy(shape); }); ++n) {
    }
    for (n = 1; FailNth(n, [&] { const std::unique_ptr<AsnType> clone = shape.Clone(); }); ++n) {
    }
    EXPECT_EQ(Encoded(shape), octets);
}

TEST(FailingMemory, Decoding) {
    const std::string octets = Encoded(FullShape());
    Shape shape;
    int n = 1;
    for (; FailNth(n, [&] { EXPECT_TRUE(AsnDecode(octets.data(), octets.size(), shape)); }); ++n) {
        ASSERT_NE(Encoded(shape), octets);
    }
    EXPECT_GT(n, 40);
    EXPECT_EQ(Encoded(shape), octets);
    // The same with segments, which are joined.
    const std::string segments = Element(0x24, Repeat(Element(0x04, kLongText), 50));
    AsnOcts text("former");
    for (n = 1; FailNth(n, [&] { EXPECT_TRUE(AsnDecode(segments.data(), segments.size(), text)); });
         ++n) {
    }
    EXPECT_GT(n, 3);
    EXPECT_EQ(text.size(), 50000U);
}

TEST(FailingMemory, Encoding) {
    const Shape shape = FullShape();
    const std::string octets = Encoded(shape);
    AsnBuffer out;
    int n = 1;
    for (; FailNth(n, [&] { EXPECT_TRUE(AsnEncode(shape, out)); }); ++n) {
    }
    EXPECT_GT(n, 3) << "the buffer grew in steps";
    EXPECT_EQ(out.size(), octets.size());
}

}  // namespace
}  // namespace asn1_test
