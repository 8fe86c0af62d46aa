// Lists: their elements' life, order and places; what they look like encoded.
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "support/asn1_coding.h"
#include "support/failing_new.h"

namespace asn1_test {
namespace {

using namespace support;

std::vector<std::int64_t> ValuesOf(const ASNULList& list) {
    return {list.begin(), list.end()};
}

ASNULList Counting(std::int64_t count) {
    ASNULList list;
    for (std::int64_t i = 0; i < count; ++i) {
        list.Append() = i;
    }
    return list;
}

TEST(AsnList, StartsEmpty) {
    ASNULList list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.Count(), 0U);
    EXPECT_EQ(list.At(0), nullptr);
    EXPECT_TRUE(list.begin() == list.end());
    EXPECT_EQ(Hex(Encoded(list)), "30 00");
}

TEST(AsnList, AppendGivesTheNewElement) {
    ASNULList list;
    list.Append() = 7;
    AsnInt& second = list.Append(AsnInt(8));
    EXPECT_EQ(static_cast<std::int64_t>(second), 8);
    second = 9;
    EXPECT_EQ(ValuesOf(list), (std::vector<std::int64_t>{7, 9}));
    EXPECT_EQ(static_cast<std::int64_t>(list[1]), 9);
    EXPECT_EQ(Hex(Encoded(list)), "30 06 02 01 07 02 01 09");
}

// Iteration, positions and the encoding agree at every size across the stretches.
TEST(AsnList, KeepsItsOrderAcrossStretches) {
    for (const std::int64_t count : {1, 2, 7, 8, 9, 23, 24, 25, 55, 56, 57, 1000, 5000}) {
        SCOPED_TRACE(count);
        const ASNULList list = Counting(count);
        ASSERT_EQ(list.Count(), static_cast<std::size_t>(count));
        std::int64_t expected = 0;
        for (const AsnInt& element : list) {
            ASSERT_EQ(static_cast<std::int64_t>(element), expected++);
        }
        EXPECT_EQ(expected, count);
        for (std::int64_t i = 0; i < count; i += 3) {
            ASSERT_EQ(static_cast<std::int64_t>(*list.At(static_cast<std::size_t>(i))), i);
        }
        EXPECT_EQ(list.At(static_cast<std::size_t>(count)), nullptr);
        EXPECT_EQ(list.At(SIZE_MAX), nullptr);
        ASNULList read;
        EXPECT_EQ(Decode(Encoded(list), read), "");
        EXPECT_EQ(ValuesOf(read), ValuesOf(list));
    }
}

TEST(AsnList, ReferencesStayGood) {
    ASNULList list;
    std::vector<AsnInt*> places;
    for (std::int64_t i = 0; i < 3000; ++i) {
        places.push_back(&list.Append(AsnInt(i)));
    }
    list.Reserve(100);
    for (std::int64_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(static_cast<std::int64_t>(*places[static_cast<std::size_t>(i)]), i);
        ASSERT_EQ(list.At(static_cast<std::size_t>(i)), places[static_cast<std::size_t>(i)]);
    }
}

TEST(AsnList, IteratorsAreForwardIterators) {
    ASNULList list = Counting(20);
    static_assert(std::forward_iterator<ASNULList::iterator>);
    static_assert(std::forward_iterator<ASNULList::const_iterator>);
    ASNULList::iterator at = list.begin();
    EXPECT_EQ(static_cast<std::int64_t>(*at++), 0);
    EXPECT_EQ(static_cast<std::int64_t>(*at), 1);
    *at = 77;
    EXPECT_EQ(static_cast<std::int64_t>(list[1]), 77);
    at->Clear();
    EXPECT_EQ(static_cast<std::int64_t>(list[1]), 0);
    EXPECT_EQ(std::distance(list.begin(), list.end()), 20);
}

// Reserving is never more than a hint: before, between and instead of elements.
TEST(AsnList, ReserveChangesNothingButPlaces) {
    for (const std::size_t reserve : {0U, 1U, 5U, 8U, 100U, 5000U}) {
        SCOPED_TRACE(reserve);
        ASNULList list;
        list.Reserve(reserve);
        list.Reserve(reserve);
        EXPECT_TRUE(list.empty());
        EXPECT_TRUE(list.begin() == list.end());
        EXPECT_EQ(list.At(0), nullptr);
        list.Append() = 1;
        AsnInt* const first = list.At(0);
        list.Reserve(reserve);
        list.Append() = 2;
        list.Reserve(reserve * 2);
        list.Reserve(1);
        list.Append() = 3;
        EXPECT_EQ(ValuesOf(list), (std::vector<std::int64_t>{1, 2, 3}));
        EXPECT_EQ(list.At(0), first);
        EXPECT_EQ(Hex(Encoded(list)), "30 09 02 01 01 02 01 02 02 01 03");
        list.Clear();
        list.Reserve(reserve);
        EXPECT_TRUE(list.empty());
    }
    const FailNthAllocation huge_ones_fail(0);
    ASNULList list;
    EXPECT_THROW(list.Reserve(SIZE_MAX), std::bad_alloc);
    EXPECT_THROW(list.Reserve(SIZE_MAX / sizeof(AsnInt) + 1), std::bad_alloc);
    EXPECT_TRUE(list.empty());
    list.Append() = 1;
    EXPECT_EQ(list.Count(), 1U);
}

TEST(AsnList, CopiesAreDeep) {
    AsnSeqOf<AsnOcts> list;
    for (int i = 0; i < 100; ++i) {
        list.Append() = std::to_string(i) + " with a text that is not short";
    }
    AsnSeqOf<AsnOcts> copy(list);
    EXPECT_EQ(Encoded(copy), Encoded(list));
    list[50] = "changed";
    EXPECT_EQ(copy[50].str(), "50 with a text that is not short");
    copy = list;
    EXPECT_EQ(copy[50].str(), "changed");
    const AsnSeqOf<AsnOcts>& itself = copy;
    copy = itself;
    EXPECT_EQ(copy.Count(), 100U);
    const std::unique_ptr<AsnType> clone = copy.Clone();
    copy.Clear();
    EXPECT_TRUE(copy.empty());
    EXPECT_EQ(Encoded(*clone), Encoded(list));
    copy.CopyFrom(*clone);
    EXPECT_EQ(Encoded(copy), Encoded(list));
}

TEST(AsnList, MovesItsElementsWithTheirPlaces) {
    ASNULList list = Counting(30);
    const AsnInt* const third = list.At(3);
    ASNULList moved(std::move(list));
    EXPECT_EQ(moved.At(3), third);
    EXPECT_EQ(moved.Count(), 30U);
    EXPECT_TRUE(list.empty());  // NOLINT(bugprone-use-after-move): empty and usable
    list.Append() = 5;
    EXPECT_EQ(list.Count(), 1U);
    list = std::move(moved);
    EXPECT_EQ(list.At(3), third);
    EXPECT_EQ(list.Count(), 30U);
}

TEST(AsnList, ClearedListsAreAsGoodAsNew) {
    ASNULList list = Counting(100);
    for (int round = 0; round < 3; ++round) {
        list.Clear();
        EXPECT_TRUE(list.empty());
        EXPECT_TRUE(list.begin() == list.end());
        EXPECT_EQ(list.At(0), nullptr);
        list.Append() = round;
        EXPECT_EQ(ValuesOf(list), std::vector<std::int64_t>{round});
    }
}

// Reading adds to what is there; AsnDecode clears first.
TEST(AsnList, ReadingAppends) {
    const std::string octets = Octets("30 03 02 01 05");
    ASNULList list = Counting(2);
    AsnReader in(octets.data(), octets.size());
    list.BDec(in);
    EXPECT_EQ(ValuesOf(list), (std::vector<std::int64_t>{0, 1, 5}));
    EXPECT_EQ(Decode(octets, list), "");
    EXPECT_EQ(ValuesOf(list), std::vector<std::int64_t>{5});
}

// What was read before a failure stays, for whoever does not use AsnDecode.
TEST(AsnList, KeepsTheElementsBeforeAFailure) {
    const std::string octets = Octets("30 09 02 01 05 02 01 06 04 01 07");
    ASNULList list;
    AsnReader in(octets.data(), octets.size());
    try {
        list.BDec(in);
        ADD_FAILURE() << "an octet string among integers";
    } catch (const CSM_Exception& failure) {
        EXPECT_STREQ(failure.what(), "Unexpected Tag");
        EXPECT_STREQ(failure.Unit(), "asn1");
        EXPECT_EQ(failure.Offset(), 8U);
    }
    EXPECT_EQ(ValuesOf(list), (std::vector<std::int64_t>{5, 6}));
    EXPECT_EQ(Decode(octets, list), "Unexpected Tag at offset 8 (asn1)");
    EXPECT_TRUE(list.empty());
}

TEST(AsnList, PrintsItsElementsIndented) {
    AsnSeqOf<ASNULList> lists;
    lists.Append() = Counting(2);
    lists.Append();
    EXPECT_EQ(Printed(lists),
              "[2] {\n"
              "  [2] {\n"
              "    0\n"
              "    1\n"
              "  }\n"
              "  [0] {\n"
              "  }\n"
              "}\n");
}

}  // namespace
}  // namespace asn1_test
