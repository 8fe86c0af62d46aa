// Handles without implementation, and memory that runs out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "failing_malloc.h"
#include "frameutil/platform.h"
#include "frameutil/strutil.h"
#include "support/failing_new.h"

namespace FrameUtil {
namespace {

void ExpectNeutral(StrUIDFactory& factory) {
    factory.Append("a", "1").Append("b", 2L).AppendFDN("c=3");
    factory.Clear();
    EXPECT_EQ(factory.GetStr(), "");
}

void ExpectNeutral(StrUIDParser& parser) {
    UIDFault fault;
    EXPECT_FALSE(parser.Parse("a=1", &fault));
    EXPECT_FALSE(parser.Next());
    parser.SetCurToFirst();
    EXPECT_EQ(parser.Type(), "");
    EXPECT_EQ(parser.StrValue(), "");
    EXPECT_EQ(parser.IntValue(), 0);
    EXPECT_EQ(parser.UIntValue(), 0UL);
    EXPECT_EQ(parser.GetMOC(), "");
    long number = 7;
    unsigned long positive = 7;
    std::string text = "before";
    StrSpliter items("x", '|');
    EXPECT_FALSE(parser.GetValue(number, "a", 0));
    EXPECT_FALSE(parser.GetValue(positive, "a", 0));
    EXPECT_FALSE(parser.GetValue(text, "a", 0));
    EXPECT_FALSE(parser.GetValue(items, "a", 0));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(positive, 7UL);
    EXPECT_EQ(text, "before");
    EXPECT_TRUE(items.HasNext());
}

void ExpectNeutral(StrLinker& list) {
    list << "a" << 1L << 2UL;
    EXPECT_STREQ(list(), "");
}

void ExpectNeutral(StrSpliter& items) {
    EXPECT_FALSE(items.Parse("a|b"));
    EXPECT_FALSE(items.HasNext());
    EXPECT_FALSE(items.HasError());
    EXPECT_EQ(items.GetValueMask(), 0U);
    char buffer[] = "xxx";
    long number = 7;
    unsigned long positive = 7;
    std::string text = "before";
    items >> buffer >> number >> positive >> text;
    EXPECT_STREQ(buffer, "xxx");
    EXPECT_EQ(number, 0);
    EXPECT_EQ(positive, 0UL);
    EXPECT_EQ(text, "");
    // Looking a value up into it finds none.
    StrUIDParser parser;
    EXPECT_TRUE(parser.Parse("a=1"));
    EXPECT_FALSE(parser.GetValue(items, "a", 0));
}

template <class Handle>
class Handles : public ::testing::Test {};
using AllHandles = ::testing::Types<StrUIDFactory, StrUIDParser, StrLinker, StrSpliter>;
TYPED_TEST_SUITE(Handles, AllHandles);

// One that was moved from has no implementation; what it is assigned to has it.
TYPED_TEST(Handles, WithoutImplementationDoNothing) {
    TypeParam whole;
    TypeParam target(std::move(whole));
    ExpectNeutral(whole);
    whole = std::move(target);
    ExpectNeutral(target);
}

TYPED_TEST(Handles, AreMadeWithoutMemory) {
    const long before = LiveAllocations();
    {
        std::optional<TypeParam> handle;
        {
            const FailNthAllocation failing(1);
            handle.emplace();
            EXPECT_TRUE(failing.Fired());
        }
        ExpectNeutral(*handle);
    }
    EXPECT_EQ(LiveAllocations(), before);
}

TEST(HandlesMoved, KeepWhatTheyHold) {
    StrUIDFactory factory;
    factory.Append("a", 1);
    EXPECT_EQ(StrUIDFactory(std::move(factory)).GetStr(), "a=1");
    StrUIDParser parser;
    parser.Parse("a=1");
    EXPECT_EQ(StrUIDParser(std::move(parser)).GetMOC(), "a");
    StrLinker list;
    list << "x";
    EXPECT_STREQ(StrLinker(std::move(list))(), "x");
    StrSpliter items("x", '|');
    EXPECT_TRUE(StrSpliter(std::move(items)).HasNext());
}

// A text that cannot grow throws, and is what it was: a short one because the pool's chunk
// does not come, at half the size neither, a long one because malloc fails.
TEST(HandlesMemory, AFailedAppendChangesNothing) {
    const auto throws = [](auto append) {
        try {
            append();
        } catch (const std::bad_alloc&) {
            return true;
        }
        return false;
    };
    const std::string longer(300, 'v');
    StrUIDFactory factory;
    StrLinker list;
    bool thrown = false;
    {
        const FailNthAllocation failing(1, 2);
        thrown = throws([&] { factory.Append("a", "1"); });
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(factory.GetStr(), "");
    factory.Append("a", "1");

    g_malloc_fails = true;
    const bool factory_thrown = throws([&] { factory.Append("b", longer.c_str()); });
    const bool list_thrown = throws([&] { list << "x"; });
    g_malloc_fails = false;
    EXPECT_TRUE(factory_thrown);
    EXPECT_TRUE(list_thrown);
    EXPECT_EQ(factory.GetStr(), "a=1");
    EXPECT_STREQ(list(), "");
    factory.Append("b", 2);
    list << "x"
         << "y";
    EXPECT_EQ(factory.GetStr(), "a=1,b=2");
    EXPECT_STREQ(list(), "x|y");
}

// Objects give all their blocks back.
TEST(HandlesMemory, NothingIsLeftInThePools) {
    long before = 0, after = 0;
    for (unsigned long size = 4; size <= 128; size += 4) {
        before += GetBlockPoolState(size).in_use;
    }
    for (std::size_t length = 0; length < 300; ++length) {
        StrUIDFactory factory;
        StrLinker list;
        for (int i = 0; i < 3; ++i) {
            factory.Append("k", std::string(length, 'v').c_str());
            list << std::string(length, 'v').c_str();
        }
        if (length % 2 == 0) {
            factory.Clear();
        }
    }
    for (unsigned long size = 4; size <= 128; size += 4) {
        after += GetBlockPoolState(size).in_use;
    }
    EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace FrameUtil
