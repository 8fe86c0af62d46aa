// What the records refuse, where, and what they hold afterwards.
#include <gtest/gtest.h>

#include <memory>

#include "support/asn1_coding.h"
#include "support/golden_records.h"

namespace FrameUtil {
namespace {

using namespace support;

TEST(RecordRefusal, NamesTheOffsetAndTheUnit) {
    const struct {
        const char* name;
        const char* type;
        const char* octets;
        const char* why;
    } rows[] = {
        {"an integer in a table list", "AsnTableList", "30 07 30 02 30 00 02 01 05",
         "Unexpected Tag at offset 6 (paraset)"},
        {"a set in a table list", "AsnTableList", "30 02 31 00",
         "Unexpected Tag at offset 2 (paraset)"},
        {"a table that is no sequence", "AsnTable", "31 02 30 00",
         "Unexpected Tag at offset 0 (paraset)"},
        {"a table without rows", "AsnTable", "30 05 a0 03 04 01 74",
         "Unexpected End at offset 7 (paraset)"},
        {"rows before the schema", "AsnTable", "30 06 30 00 a1 02 30 00",
         "Unexpected Tag at offset 4 (paraset)"},
        {"an integer among rows", "AsnTableSeqOf", "30 03 02 01 05",
         "Unexpected Tag at offset 2 (paraset)"},
        {"an integer among cells", "AsnDataRow", "30 05 30 00 02 01 05",
         "Unexpected Tag at offset 4 (paraset)"},
        {"an untagged integer in a cell", "AsnValue", "30 03 02 01 05",
         "Unexpected Tag at offset 2 (paraset)"},
        {"an implicit tag in a cell", "AsnValue", "30 03 81 01 05",
         "Unexpected Tag at offset 2 (paraset)"},
        {"an unknown tag in a cell", "AsnValue", "30 05 a4 03 02 01 05",
         "Unexpected Tag at offset 2 (paraset)"},
        {"a text under the integer's tag", "AsnValue", "30 05 a1 03 04 01 05",
         "Unexpected Tag at offset 4 (paraset)"},
        {"fields of a cell out of order", "AsnValue", "30 0a a3 03 04 01 78 a1 03 02 01 01",
         "Unexpected Tag at offset 7 (paraset)"},
        {"a field of a cell twice", "AsnValue", "30 0a a1 03 02 01 01 a1 03 02 01 01",
         "Unexpected Tag at offset 7 (paraset)"},
        {"an integer of 9 octets in a cell", "AsnValue",
         "30 0d a1 0b 02 09 00 00 00 00 00 00 00 00 05", "Bad Integer at offset 15 (asn1)"},
        {"a column without a type", "AsnSchemaItem", "30 03 04 01 61",
         "Unexpected End at offset 5 (paraset)"},
        {"a column with its type first", "AsnSchemaItem", "30 06 02 01 02 04 01 61",
         "Unexpected Tag at offset 2 (paraset)"},
        {"a relation without names", "AsnRelation", "30 06 02 01 01 02 01 02",
         "Unexpected End at offset 8 (paraset)"},
        {"a resource without a name", "AsnDistinguishedResource", "30 05 a0 03 04 01 6c",
         "Unexpected Tag at offset 2 (paraset)"},
        {"an integer among names", "AsnResDNList", "30 03 02 01 05",
         "Unexpected Tag at offset 2 (paraset)"},
        {"a request without a user", "AsnCommonRequest", "30 00",
         "Unexpected End at offset 2 (paraset)"},
        {"a request of a text", "AsnCommonRequest", "30 03 04 01 07",
         "Unexpected Tag at offset 2 (paraset)"},
        {"a response for a request", "AsnCommonRequest", "30 08 02 01 00 a0 03 02 01 ff",
         "Unexpected Tag at offset 7 (paraset)"},
        {"a request for a response", "AsnCommonResponse", "30 0a 02 01 07 a0 05 30 03 04 01 64",
         "Unexpected Tag at offset 7 (paraset)"},
        {"tables twice", "AsnCommonResponse", "30 0b 02 01 00 a2 02 30 00 a2 02 30 00",
         "Unexpected Tag at offset 9 (paraset)"},
        {"an unknown field behind", "AsnCommonResponse", "30 07 02 01 00 a3 02 30 00",
         "Unexpected Tag at offset 5 (paraset)"},
        {"a table list that claims 16 MB", "AsnCommonRequest", "30 83 ff ff ff 02 01 00",
         "Length Beyond Input at offset 1 (paraset)"},
        {"a request and an octet", "AsnCommonRequest", "30 03 02 01 00 00",
         "Octets Behind Element at offset 5 (asn1)"},
        {"nothing", "AsnCommonRequest", "", "Unexpected End at offset 0 (asn1)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<AsnType> record = MakeRecord(row.type);
        const std::string empty = Encoded(*record);
        EXPECT_EQ(Decode(Octets(row.octets), *record), row.why);
        EXPECT_EQ(Encoded(*record), empty) << "cleared";
    }
}

// Reading without AsnDecode leaves what came before the failure.
TEST(RecordRefusal, KeepsTheElementsDecodedSoFar) {
    const std::string octets = Octets("30 0d 30 02 30 00 30 02 30 00 02 03 01 02 03");
    AsnTableList tables;
    AsnReader in(octets.data(), octets.size());
    try {
        tables.BDec(in);
        ADD_FAILURE() << "an integer among tables";
    } catch (const CSM_Exception& failure) {
        EXPECT_STREQ(failure.what(), "Unexpected Tag");
        EXPECT_STREQ(failure.Unit(), "paraset");
        EXPECT_EQ(failure.Offset(), 10U);
    }
    EXPECT_EQ(tables.Count(), 2U);

    const std::string partly = Octets("30 0d 02 01 05 a2 08 30 06 30 02 30 00 31 00");
    AsnCommonResponse response;
    AsnReader again(partly.data(), partly.size());
    EXPECT_THROW(response.BDec(again), CSM_Exception);
    EXPECT_EQ(static_cast<std::int64_t>(response.retCode), 5);
    EXPECT_EQ(response.tables->Count(), 1U);
}

}  // namespace
}  // namespace FrameUtil
