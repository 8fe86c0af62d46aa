// getBytes and setBytes: octets in and out of a string node.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>

#include "secure/fault.h"
#include "support/captured_log.h"
#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(GetBytes, CopiesWhatThereIsFromTheOffsetOn) {
    const struct {
        const char* name;
        unsigned long length;
        unsigned long offset;
        const char* result;  // of "abcde" into ten dots
    } rows[] = {
        {"all", 5, 0, "abcde....."},
        {"too many", 10, 0, "abcde....."},
        {"the front", 2, 0, "ab........"},
        {"the middle", 2, 1, "bc........"},
        {"the end", 3, 2, "cde......."},
        {"more than the end", 10, 2, "cde......."},
        {"one octet", 1, 4, "e........."},
        {"none", 0, 0, ".........."},
        {"none in the middle", 0, 3, ".........."},
        {"offset at the end", 10, 5, ".........."},
        {"offset behind the end", 1, 6, ".........."},
        {"offset far behind", 1, ULONG_MAX, ".........."},
        {"length that wraps around", ULONG_MAX, 2, "cde......."},
        {"offset and length that wrap around", ULONG_MAX, ULONG_MAX, ".........."},
    };
    const CParaSet node("n", "abcde");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CapturedLog log;
        std::string buffer(10, '.');
        node.getBytes(buffer.data(), row.length, row.offset);
        EXPECT_EQ(buffer, row.result);
        EXPECT_THAT(log.Texts(), IsEmpty());
    }
}

TEST(GetBytes, KeepsZeroOctets) {
    CParaSet node("n");
    node = std::string("a\0b\0", 4);
    std::string buffer(4, '.');
    node.getBytes(buffer.data(), 4, 0);
    EXPECT_EQ(buffer, std::string("a\0b\0", 4));
    std::string out = "before";
    EXPECT_EQ(node.getBytes(out), 4);
    EXPECT_EQ(out, std::string("a\0b\0", 4));
}

TEST(GetBytes, OfAnEmptyStringNeedsNoBuffer) {
    CParaSet node("n", "");
    node.getBytes(nullptr, 0, 0);
    node.getBytes(nullptr, 10, 0);
    std::string out = "before";
    EXPECT_EQ(node.getBytes(out), 0);
    EXPECT_EQ(out, "");
}

TEST(GetBytes, OfOtherTypesYieldsNothing) {
    for (const auto type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        const bool text = type == CParaSet::PARA_STRING;
        const bool number = type == CParaSet::PARA_INT || type == CParaSet::PARA_DOUBLE;
        std::string buffer = ".....";
        node.getBytes(buffer.data(), 5, 0);
        EXPECT_EQ(buffer, text ? "old.." : ".....");
        std::string out = "as it was";
        EXPECT_EQ(node.getBytes(out), text ? 3 : number ? 9 : 0);
        EXPECT_EQ(out, text ? "old" : "as it was");
    }
}

// The line number says which of the two copies failed.
TEST(GetBytes, TracesACopyThatFails) {
    const struct {
        const char* name;
        unsigned long length;
        unsigned long offset;
        const char* trace;
    } rows[] = {
        {"short copy", 4, 2, "[Frame]memcpy_s failed at line 1284 errno: 22"},
        {"short copy of all", 6, 0, "[Frame]memcpy_s failed at line 1284 errno: 22"},
        {"full copy", 3, 2, "[Frame]memcpy_s failed at line 1280 errno: 22"},
        {"full copy of a part", 1, 0, "[Frame]memcpy_s failed at line 1280 errno: 22"},
    };
    const CParaSet node("n", "abcde");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CapturedLog log;
        char buffer[16] = {};
        const kelp::secure::FailNth fault(kelp::secure::Routine::kMemcpy, 1, EINVAL);
        node.getBytes(buffer, row.length, row.offset);
        EXPECT_TRUE(fault.Fired());
        EXPECT_THAT(log.Texts(), ElementsAre(row.trace));
    }
}

TEST(SetBytes, OverwritesInPlaceAndKeepsTheLength) {
    const struct {
        const char* name;
        const char* before;
        const char* data;
        unsigned long length;
        const char* after;
        CParaSet::ValueType type;
    } rows[] = {
        {"new node", nullptr, "data", 4, "", CParaSet::PARA_STRING},
        {"empty string", "", "data", 4, "", CParaSet::PARA_STRING},
        {"shorter", "abcdef", "data", 4, "dataef", CParaSet::PARA_STRING},
        {"as long", "abcd", "data", 4, "data", CParaSet::PARA_STRING},
        {"longer", "ab", "data", 4, "da", CParaSet::PARA_STRING},
        {"one octet", "ab", "data", 1, "db", CParaSet::PARA_STRING},
        {"null pointer", "abc", nullptr, 4, "abc", CParaSet::PARA_STRING},
        {"no octets", "abc", "data", 0, "abc", CParaSet::PARA_STRING},
        {"null pointer, new node", nullptr, nullptr, 4, "", CParaSet::PARA_NULL},
        {"no octets, new node", nullptr, "data", 0, "", CParaSet::PARA_NULL},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet node("n");
        if (row.before != nullptr) {
            node = row.before;
        }
        node.setBytes(row.data, row.length);
        EXPECT_EQ(FieldsOf(node), (Fields{row.type, 0, 0.0, row.after}));
    }
}

TEST(SetBytes, MayReadTheNodesOwnString) {
    CParaSet node("n", "abcdef");
    node.setBytes(node.asString() + 2, 4);
    EXPECT_STREQ(node.asString(), "cdefef");
    EXPECT_EQ(node.setBytes(std::string(node.asString() + 4)), 2);
    EXPECT_STREQ(node.asString(), "ef");
}

TEST(SetBytes, OfAStringTakesItsLength) {
    CParaSet node("n");
    for (const std::string& value :
         {std::string("abc"), std::string("a\0b\0c", 5), std::string(), std::string(100, 'x')}) {
        EXPECT_EQ(node.setBytes(value), static_cast<int>(value.size()));
        EXPECT_EQ(FieldsOf(node), (Fields{CParaSet::PARA_STRING, 0, 0.0, value}));
    }
}

TEST(SetBytes, GoIntoNullAndStringOnly) {
    for (const auto type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        const bool fits = type == CParaSet::PARA_NULL || type == CParaSet::PARA_STRING;
        EXPECT_EQ(CodeOf([&] { node.setBytes("n", 1); }), fits ? 0 : -3);
        EXPECT_EQ(FieldsOf(node),
                  (Fields{fits ? CParaSet::PARA_STRING : type, 3, 2.5, fits ? "nld" : "old"}));
        EXPECT_EQ(CodeOf([&] { node.setBytes(nullptr, 0); }), fits ? 0 : -3)
            << "the type is looked at first";
        EXPECT_EQ(CodeOf([&] { EXPECT_EQ(node.setBytes(std::string("new!")), 4); }), fits ? 0 : -3);
        EXPECT_EQ(FieldsOf(node).text, fits ? "new!" : "old");
    }
}

}  // namespace
