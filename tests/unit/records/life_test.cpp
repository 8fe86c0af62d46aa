// Records' lives: made empty, copied deeply, cleared; limits and memory.
#include <gtest/gtest.h>

#include <memory>

#include "support/asn1_coding.h"
#include "support/golden_records.h"
#include "support/heap_meter.h"

namespace FrameUtil {
namespace {

using namespace support;

constexpr const char* kTypes[] = {"AsnValue",
                                  "AsnSchemaItem",
                                  "AsnSchemaDef",
                                  "AsnDataRow",
                                  "AsnTableSeqOf",
                                  "AsnTable",
                                  "AsnTableList",
                                  "AsnResDNList",
                                  "AsnRelation",
                                  "AsnCommonRequest",
                                  "AsnCommonResponse",
                                  "AsnDistinguishedResourceSeqOf",
                                  "AsnDistinguishedResource",
                                  "AsnCommonRequestSeqOf",
                                  "AsnCommonResponseSeqOf"};

TEST(RecordLife, BeginsWithAbsentFieldsZerosAndEmptyTexts) {
    const AsnCommonRequest request;
    EXPECT_EQ(static_cast<std::int64_t>(request.userID), 0);
    EXPECT_FALSE(request.resID);
    EXPECT_FALSE(request.tables);
    const AsnCommonResponse response;
    EXPECT_EQ(static_cast<std::int64_t>(response.retCode), 0);
    EXPECT_FALSE(response.retCodeEx);
    EXPECT_FALSE(response.ver);
    EXPECT_FALSE(response.tables);
    const AsnTable table;
    EXPECT_FALSE(table.name);
    EXPECT_FALSE(table.schema);
    EXPECT_TRUE(table.rows.empty());
    const AsnSchemaItem item;
    EXPECT_TRUE(item.name.empty());
    EXPECT_FALSE(item.desc);
    const AsnDistinguishedResource resource;
    EXPECT_TRUE(resource.resDN.empty());
    EXPECT_FALSE(resource.aResRelation);
}

// Copying, cloning, assigning over something else and clearing, for every golden record.
TEST(RecordLife, CopiesAreDeepAndClearingIsComplete) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        SCOPED_TRACE(golden.name);
        const std::unique_ptr<AsnType> clone = golden.value->Clone();
        EXPECT_EQ(Encoded(*clone), golden.octets);
        const std::unique_ptr<AsnType> target = MakeRecord(golden.type);
        const std::string empty = Encoded(*target);
        target->CopyFrom(*clone);
        clone->Clear();
        EXPECT_EQ(Encoded(*clone), empty);
        EXPECT_EQ(Encoded(*target), golden.octets);
        if (auto* record = dynamic_cast<AsnSequence*>(target.get())) {
            const std::unique_ptr<AsnType> assigned = MakeRecord(golden.type);
            dynamic_cast<AsnSequence&>(*assigned).Assign(*record);
            record->Assign(dynamic_cast<const AsnSequence&>(*clone));
            EXPECT_EQ(Encoded(*record), empty);
            EXPECT_EQ(Encoded(*assigned), golden.octets);
        }
    }
    for (const char* type : kTypes) {
        EXPECT_NE(MakeRecord(type), nullptr) << type;
    }
}

TEST(RecordLife, CopiesShareNothing) {
    AsnCommonRequest request;
    request.tables.Ensure().Append(GoldenTable(3));
    AsnCommonRequest copy(request);
    *(*request.tables)[0].rows[1][0].iVal = 99;
    (*request.tables)[0].rows.Append();
    EXPECT_EQ(static_cast<std::int64_t>(*(*copy.tables)[0].rows[1][0].iVal), 1);
    EXPECT_EQ((*copy.tables)[0].rows.Count(), 3U);
    copy = request;
    EXPECT_EQ(Encoded(copy), Encoded(request));
}

// Nothing is longer than the limit, and what is exactly as long is written.
TEST(RecordLife, EncodingLimitHoldsToTheOctet) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        SCOPED_TRACE(golden.name);
        AsnBuffer out;
        EXPECT_FALSE(AsnEncode(*golden.value, out, golden.octets.size() - 1));
        EXPECT_EQ(out.size(), 0U);
        EXPECT_TRUE(AsnEncode(*golden.value, out, golden.octets.size()));
        EXPECT_EQ(out.size(), golden.octets.size());
    }
}

// A 32nd of a gigabyte must not become a gigabyte: the smallest records there are.
TEST(RecordLife, HoldsASmallMultipleOfItsOctets) {
    const std::size_t many = 50'000;
    const auto list = [](std::string_view content) { return Element(0x30, content); };
    const struct {
        const char* name;
        const char* type;
        std::string octets;
    } rows[] = {
        {"empty cells", "AsnDataRow", list(Repeat(Octets("30 00"), many))},
        {"empty rows", "AsnTableSeqOf", list(Repeat(Octets("30 00"), many))},
        {"rows of one empty cell", "AsnTableSeqOf", list(Repeat(Octets("30 02 30 00"), many))},
        {"rows of two", "AsnTableSeqOf", list(Repeat(Octets("30 04 30 00 30 00"), many))},
        {"rows of nine", "AsnTableSeqOf", list(Repeat(list(Repeat(Octets("30 00"), 9)), many))},
        {"open rows of one", "AsnTableSeqOf", list(Repeat(Octets("30 80 30 00 00 00"), many))},
        {"open rows of 29", "AsnTableSeqOf",
         list(Repeat(IndefiniteElement(0x30, Repeat(Octets("30 00"), 29)), many / 10))},
        {"rows of one empty text", "AsnTableSeqOf",
         list(Repeat(Octets("30 06 30 04 a3 02 04 00"), many))},
        {"rows of one real", "AsnTableSeqOf",
         list(Repeat(Octets("30 06 30 04 a2 02 09 00"), many))},
        {"empty tables", "AsnTableList", list(Repeat(Octets("30 02 30 00"), many))},
        {"tables with an empty schema", "AsnTableList",
         list(Repeat(Octets("30 06 a1 02 30 00 30 00"), many))},
        {"tables of one empty row", "AsnTableList",
         list(Repeat(Octets("30 04 30 02 30 00"), many))},
        {"columns", "AsnSchemaDef", list(Repeat(Octets("30 05 04 00 02 01 00"), many))},
        {"names", "AsnResDNList", list(Repeat(Octets("04 00"), many))},
        {"relations", "AsnDistinguishedResourceSeqOf",
         list(Repeat(Octets("30 08 02 01 00 02 01 00 30 00"), many))},
        {"requests", "AsnCommonRequestSeqOf", list(Repeat(Octets("30 03 02 01 00"), many))},
        {"requests with resources", "AsnCommonRequestSeqOf",
         list(Repeat(Octets("30 09 02 01 00 a0 04 30 02 04 00"), many))},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<AsnType> record = MakeRecord(row.type);
        const std::size_t before = HeapInUse();
        EXPECT_EQ(Decode(row.octets, *record), "");
        EXPECT_LE(HeapInUse(), before + 32 * row.octets.size() + kHeapNoise);
    }
}

}  // namespace
}  // namespace FrameUtil
