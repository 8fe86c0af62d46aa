// Writing scalars into nodes: what each overload does to each type of node.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/captured_log.h"
#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;
using testing::ElementsAre;
using testing::IsEmpty;

std::string IntegerTrace(int type) {
    return "[Frame][CParaSet::operator=(const int iValue)], Some one recall this function at a "
           "wrong place, Please check, m_iValType = " +
           std::to_string(type);
}

std::string StringTrace(int type) {
    return "[Frame][CParaSet::operator =(const std::string strValue)], m_iValType = " +
           std::to_string(type);
}

// What an assignment to a node of each type leaves: the fields were 3, 2.5 and "old".
struct Row {
    CParaSet::ValueType before;
    int code;  // of the exception; then nothing has changed
    Fields after;
    std::string trace;  // empty: none
};

void Check(const char* what, const std::vector<Row>& rows,
           const std::function<CParaSet&(CParaSet&)>& assign) {
    ASSERT_EQ(rows.size(), std::size(kEveryType)) << what << " has a row for each type";
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(what) + " into " + NameOf(row.before));
        CParaSet node("n");
        MakeNode(node, row.before);
        const std::size_t children = node.GetMapValue().size() + node.GetVctValue().size();
        const AsnDistinguishedResource* resource = node.asResID();
        CapturedLog log;
        EXPECT_EQ(CodeOf([&] { EXPECT_EQ(&assign(node), &node); }), row.code);
        EXPECT_EQ(FieldsOf(node), row.after);
        if (row.trace.empty()) {
            EXPECT_THAT(log.Texts(), IsEmpty());
        } else {
            EXPECT_THAT(log.Texts(), ElementsAre(row.trace));
        }
        EXPECT_EQ(node.GetMapValue().size() + node.GetVctValue().size(), children);
        EXPECT_EQ(node.asResID(), resource);
        EXPECT_EQ(node.name(), "n");
    }
}

std::vector<Row> IntegerRows(int value) {
    const Fields written{CParaSet::PARA_INT, value, 2.5, "old"};
    return {
        {CParaSet::PARA_NULL, 0, written, ""},
        {CParaSet::PARA_DOUBLE, 0, {CParaSet::PARA_DOUBLE, 3, double(value), "old"}, ""},
        {CParaSet::PARA_INT, 0, written, ""},
        {CParaSet::PARA_STRING, 0, written, IntegerTrace(3)},
        {CParaSet::PARA_ARRAY, 0, written, IntegerTrace(4)},
        {CParaSet::PARA_STRUCT, 0, written, IntegerTrace(5)},
        {CParaSet::PARA_RESERVED, 0, written, IntegerTrace(6)},
        {CParaSet::PARA_RESID, 0, written, IntegerTrace(7)},
        {kUnknownType, 0, written, IntegerTrace(99)},
    };
}

TEST(AssignInteger, GoesIntoEveryType) {
    Check("7", IntegerRows(7), [](CParaSet& n) -> CParaSet& { return n = 7; });
    Check("INT_MIN", IntegerRows(INT_MIN), [](CParaSet& n) -> CParaSet& { return n = INT_MIN; });
    Check("0", IntegerRows(0), [](CParaSet& n) -> CParaSet& { return n = 0; });
}

// The wider overloads keep the low 32 bits, as a signed number, and are that assignment.
TEST(AssignInteger, KeepsTheLowBitsOfWiderOnes) {
    Check("7U", IntegerRows(7), [](CParaSet& n) -> CParaSet& { return n = 7U; });
    Check("UINT_MAX", IntegerRows(-1), [](CParaSet& n) -> CParaSet& { return n = UINT_MAX; });
    Check("2147483648U", IntegerRows(INT_MIN),
          [](CParaSet& n) -> CParaSet& { return n = 2147483648U; });
    Check("7L", IntegerRows(7), [](CParaSet& n) -> CParaSet& { return n = 7L; });
    Check("-7L", IntegerRows(-7), [](CParaSet& n) -> CParaSet& { return n = -7L; });
    Check("2^32 + 5 as long", IntegerRows(5),
          [](CParaSet& n) -> CParaSet& { return n = (1L << 32) + 5; });
    Check("2^31 as long", IntegerRows(INT_MIN),
          [](CParaSet& n) -> CParaSet& { return n = 1L << 31; });
    Check("LONG_MIN", IntegerRows(0), [](CParaSet& n) -> CParaSet& { return n = LONG_MIN; });
    Check("LONG_MAX", IntegerRows(-1), [](CParaSet& n) -> CParaSet& { return n = LONG_MAX; });
    Check("7UL", IntegerRows(7), [](CParaSet& n) -> CParaSet& { return n = 7UL; });
    Check("ULONG_MAX", IntegerRows(-1), [](CParaSet& n) -> CParaSet& { return n = ULONG_MAX; });
    Check("2^32 as unsigned long", IntegerRows(0),
          [](CParaSet& n) -> CParaSet& { return n = 1UL << 32; });
}

std::vector<Row> RefusedBut(std::vector<Row> taken) {
    std::vector<Row> rows;
    for (const auto type : kEveryType) {
        rows.push_back({type, -3, {type, 3, 2.5, "old"}, ""});
        for (const Row& row : taken) {
            if (row.before == type) {
                rows.back() = row;
            }
        }
    }
    return rows;
}

TEST(AssignDouble, GoesIntoNullAndDoubleOnly) {
    const Fields written{CParaSet::PARA_DOUBLE, 3, 7.5, "old"};
    Check("7.5",
          RefusedBut(
              {{CParaSet::PARA_NULL, 0, written, ""}, {CParaSet::PARA_DOUBLE, 0, written, ""}}),
          [](CParaSet& n) -> CParaSet& { return n = 7.5; });
}

TEST(AssignCharacters, GoIntoNullAndStringOnly) {
    const Fields written{CParaSet::PARA_STRING, 3, 2.5, "new"};
    Check("\"new\"",
          RefusedBut(
              {{CParaSet::PARA_NULL, 0, written, ""}, {CParaSet::PARA_STRING, 0, written, ""}}),
          [](CParaSet& n) -> CParaSet& { return n = "new"; });
}

TEST(AssignCharacters, RefuseANullPointer) {
    for (const auto type : {CParaSet::PARA_NULL, CParaSet::PARA_STRING}) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        const char* null = nullptr;
        EXPECT_THROW(node = null, std::logic_error);
        EXPECT_EQ(FieldsOf(node), (Fields{type, 3, 2.5, "old"}));
    }
}

TEST(AssignString, GoesIntoEveryType) {
    const std::string value("n\0w", 3);
    const Fields written{CParaSet::PARA_STRING, 3, 2.5, value};
    std::vector<Row> rows;
    for (const auto type : kEveryType) {
        const bool quiet = type == CParaSet::PARA_NULL || type == CParaSet::PARA_STRING;
        rows.push_back({type, 0, written, quiet ? "" : StringTrace(type)});
    }
    Check("std::string", rows, [&](CParaSet& n) -> CParaSet& { return n = value; });
}

TEST(AssignResource, AttachesACopyWhateverTheType) {
    for (const auto type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        AsnDistinguishedResource resource = Resource("dn");
        resource.label.Emplace("label");
        CapturedLog log;
        EXPECT_EQ(&(node = &resource), &node);
        resource.resDN = "changed";
        EXPECT_EQ(FieldsOf(node), (Fields{CParaSet::PARA_RESID, 3, 2.5, "old"}));
        ASSERT_NE(node.asResID(), nullptr);
        EXPECT_NE(node.asResID(), &resource);
        EXPECT_EQ(node.asResID()->resDN.str(), "dn");
        EXPECT_EQ(node.asResID()->label->str(), "label");
        EXPECT_THAT(log.Texts(), IsEmpty());

        const AsnDistinguishedResource other = Resource("other");
        node = &other;
        EXPECT_EQ(node.asResID()->resDN.str(), "other");
        EXPECT_FALSE(node.asResID()->label);
    }
}

TEST(AssignResource, OfNothingDoesNothing) {
    for (const auto type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("n");
        MakeNode(node, type);
        const AsnDistinguishedResource* before = node.asResID();
        const AsnDistinguishedResource* null = nullptr;
        EXPECT_EQ(&(node = null), &node);
        EXPECT_EQ(FieldsOf(node), (Fields{type, 3, 2.5, "old"}));
        EXPECT_EQ(node.asResID(), before);
    }
}

// A node's own record may be what is assigned to it, or to a node beside it.
TEST(AssignResource, OfTheNodesOwnRecordKeepsIt) {
    CParaSet node("n");
    const AsnDistinguishedResource resource = Resource("dn");
    node = &resource;
    node = node.asResID();
    EXPECT_EQ(Shape(node), "resource(dn)");
    CParaSet other("o");
    other = node.asResID();
    EXPECT_EQ(Shape(other), "resource(dn)");
    EXPECT_NE(other.asResID(), node.asResID());
}

TEST(AssignInteger, OverAStructureLeavesItsChildren) {
    CParaSet node("n");
    node["a"] = 1;
    CapturedLog log;
    node = 5;
    EXPECT_EQ(node.type(), CParaSet::PARA_INT);
    ASSERT_NE(node.find("a"), nullptr);
    EXPECT_EQ(node.find("a")->asInt(), 1);
    EXPECT_THAT(log.Texts(), ElementsAre(IntegerTrace(5)));
}

}  // namespace
