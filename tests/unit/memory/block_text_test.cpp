// Octets in pooled blocks: what goes in comes out, whatever its size and wherever it
// comes from, and a zero octet stands behind it.
#include "kelp/block_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using kelp::BlockText;

void ExpectOctets(const BlockText& text, const std::string& octets) {
    EXPECT_EQ(text.view(), octets);
    EXPECT_EQ(text.size(), octets.size());
    EXPECT_EQ(text.empty(), octets.empty());
    EXPECT_EQ(text.c_str()[octets.size()], '\0');
}

TEST(BlockText, HoldsOctetsOfEverySizeAroundItsBlocks) {
    for (const std::size_t size : {0, 1, 6, 7, 8, 9, 15, 16, 503, 504, 511, 512, 513, 5000}) {
        SCOPED_TRACE(size);
        std::string octets(size, 'x');
        if (size > 2) {
            octets[1] = '\0';
        }
        ExpectOctets(BlockText(octets), octets);
        BlockText assigned("former");
        assigned.assign(octets);
        ExpectOctets(assigned, octets);
        assigned.assign("later");
        ExpectOctets(assigned, "later");
    }
}

TEST(BlockText, CopiesAreItsOwn) {
    BlockText text("one");
    BlockText copy(text);
    text.assign("another");
    ExpectOctets(copy, "one");
    copy = text;
    copy.data()[0] = 'A';
    ExpectOctets(text, "another");
    ExpectOctets(copy, "Another");
}

TEST(BlockText, MovingTakesTheOctets) {
    BlockText text("a text");
    BlockText taken(std::move(text));
    ExpectOctets(taken, "a text");
    BlockText target("former");
    target = std::move(taken);
    ExpectOctets(target, "a text");
}

TEST(BlockText, TakesAPartOfItself) {
    BlockText text("prefix and a part that needs no larger block");
    text.assign(text.view().substr(7));
    ExpectOctets(text, "and a part that needs no larger block");
    BlockText& same = text;
    text = same;
    ExpectOctets(text, "and a part that needs no larger block");
}

TEST(BlockText, ClearedItHoldsNothingAndWorksOn) {
    BlockText text("something");
    text.clear();
    ExpectOctets(text, "");
    text.assign("again");
    ExpectOctets(text, "again");
    BlockText empty;
    empty.clear();
    ExpectOctets(empty, "");
}

TEST(BlockText, ALiteralIsReferredTo) {
    static constexpr char kLiteral[] = "root";
    const BlockText text = BlockText::Literal(kLiteral);
    EXPECT_EQ(text.c_str(), kLiteral);
    BlockText copy("former");
    copy = text;
    EXPECT_EQ(copy.c_str(), kLiteral);
    copy.assign("own");
    ExpectOctets(copy, "own");
    copy = BlockText::Literal(kLiteral);
    copy.clear();
    ExpectOctets(copy, "");
    ExpectOctets(text, "root");
}

// Overwrite() makes room for octets that the caller writes.
TEST(BlockText, IsOverwrittenFromEverySizeToEverySize) {
    const std::size_t sizes[] = {0, 1, 7, 8, 9, 15, 16, 503, 504, 511, 512, 513, 5000};
    for (const std::size_t from : sizes) {
        for (const std::size_t to : sizes) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
            BlockText text(std::string(from, 'x'));
            char* const octets = text.Overwrite(to);
            EXPECT_EQ(octets, text.data());
            std::memset(octets, 'y', to);
            ExpectOctets(text, std::string(to, 'y'));
            text.assign("later");
            ExpectOctets(text, "later");
        }
    }
}

TEST(BlockText, OverwritingLeavesCopiesAndLiteralsAlone) {
    static constexpr char kLiteral[] = "root";
    BlockText text = BlockText::Literal(kLiteral);
    std::memcpy(text.Overwrite(4), "abcd", 4);
    ExpectOctets(text, "abcd");
    EXPECT_STREQ(kLiteral, "root");
    BlockText none = BlockText::Literal(kLiteral);
    none.Overwrite(0);
    ExpectOctets(none, "");
    const BlockText copy(text);
    std::memcpy(text.Overwrite(2), "xy", 2);
    ExpectOctets(text, "xy");
    ExpectOctets(copy, "abcd");
}

// A text that is too long is refused before there is memory for it; the old one is gone.
TEST(BlockText, OverwritingWithTooMuchLeavesNothing) {
    for (const std::size_t size : {std::size_t{std::numeric_limits<std::uint32_t>::max()} - 15,
                                   std::size_t{1} << 32, std::numeric_limits<std::size_t>::max()}) {
        BlockText text("former");
        EXPECT_THROW(text.Overwrite(size), std::length_error);
        ExpectOctets(text, "");
        std::memcpy(text.Overwrite(3), "new", 3);
        ExpectOctets(text, "new");
        EXPECT_THROW(text.assign({"x", size}), std::length_error);
        ExpectOctets(text, "new");
    }
}

}  // namespace
