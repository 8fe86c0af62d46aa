// AsnEncode and AsnDecode: whole messages, limits, and what failures leave.
#include <gtest/gtest.h>

#include "support/asn1_coding.h"
#include "support/sweeps.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

// A limit of exactly the encoding's size is enough; one octet less is not.
TEST(AsnEncode, LimitHoldsToTheOctet) {
    for (const std::size_t size : support::SizesAroundPowersOfTwo(17)) {
        SCOPED_TRACE(size);
        const AsnOcts value(std::string(size, 'x'));
        const std::size_t encoded = Encoded(value).size();
        AsnBuffer out;
        EXPECT_TRUE(AsnEncode(value, out, encoded));
        EXPECT_EQ(out.size(), encoded);
        EXPECT_FALSE(AsnEncode(value, out, encoded - 1));
        EXPECT_EQ(out.size(), 0U) << "nothing half-written";
        EXPECT_FALSE(AsnEncode(value, out, 0));
        EXPECT_TRUE(AsnEncode(value, out, encoded)) << "the buffer is as good as before";
        EXPECT_EQ(out.size(), encoded);
    }
}

TEST(AsnEncode, LimitOfAMessage) {
    AsnOcts value;
    AsnBuffer out;
    value.str().assign(100'000 - 5, 'x');  // 04 83 and three octets of length
    EXPECT_TRUE(AsnEncode(value, out, 100'000));
    EXPECT_EQ(out.size(), 100'000U);
    value.str() += 'x';
    EXPECT_FALSE(AsnEncode(value, out, 100'000));
}

TEST(AsnEncode, DefaultLimitIs64MiB) {
    AsnOcts value;
    AsnBuffer out;
    value.str().assign((std::size_t{64} << 20) - 6, 'x');
    EXPECT_TRUE(AsnEncode(value, out));
    value.str() += 'x';
    EXPECT_FALSE(AsnEncode(value, out));
}

TEST(AsnEncode, ReplacesWhatTheBufferHeld) {
    AsnBuffer out;
    EXPECT_TRUE(AsnEncode(AsnInt(1000), out));
    EXPECT_TRUE(AsnEncode(AsnInt(1), out));
    EXPECT_EQ(Hex({reinterpret_cast<const char*>(out.data()), out.size()}), "02 01 01");
}

TEST(AsnDecode, ClearsFirstAndAfterAFailure) {
    Shape shape;
    shape.text.Emplace("former");
    const std::string good = Octets("30 08 02 01 05 a3 03 02 01 09");
    EXPECT_EQ(Decode(good, shape), "");
    EXPECT_FALSE(shape.text);
    EXPECT_EQ(Encoded(shape), good);
    std::string why = "former";
    EXPECT_TRUE(AsnDecode(good.data(), good.size(), shape, &why));
    EXPECT_EQ(why, "former") << "untouched by a success";
    EXPECT_FALSE(AsnDecode(good.data(), good.size() - 1, shape, &why));
    EXPECT_EQ(why, "Length Beyond Input at offset 2 (shapes)");
    EXPECT_EQ(Encoded(shape), Encoded(Shape()));
    EXPECT_FALSE(AsnDecode(good.data(), good.size() - 1, shape)) << "no text asked for";
}

TEST(AsnDecode, TakesOneElementAndNothingBehindIt) {
    const std::string two = Octets("02 01 05 02 01 06");
    EXPECT_EQ(WhyNot<AsnInt>(two), "Octets Behind Element at offset 3 (asn1)");
    EXPECT_EQ(WhyNot<AsnInt>(two.substr(0, 4)), "Octets Behind Element at offset 3 (asn1)");
    EXPECT_EQ(WhyNot<AsnInt>(two.substr(0, 3)), "");
    std::string why;
    AsnInt value;
    EXPECT_FALSE(AsnDecode(nullptr, 0, value, &why));
    EXPECT_EQ(why, "Unexpected End at offset 0 (asn1)");
}

// A reader walks over elements that follow each other.
TEST(AsnReader, ReadsOneElementAfterTheOther) {
    const std::string two = Octets("02 01 05 04 01 61");
    AsnReader in(two.data(), two.size());
    AsnInt number;
    AsnOcts text;
    number.BDec(in);
    EXPECT_EQ(in.Offset(), 3U);
    EXPECT_FALSE(in.AtEnd());
    text.BDec(in);
    EXPECT_TRUE(in.AtEnd());
    EXPECT_EQ(static_cast<std::int64_t>(number), 5);
    EXPECT_EQ(text.str(), "a");
}

TEST(CSM_Exception, NamesTextUnitAndOffset) {
    const CSM_Exception failure("Unexpected Tag", "paraset", 12);
    EXPECT_STREQ(failure.what(), "Unexpected Tag");
    EXPECT_STREQ(failure.Unit(), "paraset");
    EXPECT_EQ(failure.Offset(), 12U);
    EXPECT_EQ(failure.Describe(), "Unexpected Tag at offset 12 (paraset)");
}

}  // namespace
}  // namespace asn1_test
