// The common records octet by octet.
#include <gtest/gtest.h>

#include "frameutil/records.h"
#include "support/asn1_coding.h"

namespace FrameUtil {
namespace {

using namespace support;

// A cell is a SEQUENCE that holds one context-tagged value, or nothing.
TEST(RecordsOnTheWire, Cells) {
    const struct {
        const char* octets;
        void (*fill)(AsnValue&);
    } rows[] = {
        {"30 00", [](AsnValue&) {}},
        {"30 05 a0 03 01 01 00", [](AsnValue& value) { value.bVal.Emplace(false); }},
        {"30 05 a0 03 01 01 ff", [](AsnValue& value) { value.bVal.Emplace(true); }},
        {"30 05 a1 03 02 01 01", [](AsnValue& value) { value.iVal.Emplace(1); }},
        {"30 08 a1 06 02 04 80 00 00 00", [](AsnValue& v) { v.iVal.Emplace(-2147483648LL); }},
        {"30 07 a2 05 09 03 80 00 01", [](AsnValue& value) { value.dVal.Emplace(1.0); }},
        {"30 04 a2 02 09 00", [](AsnValue& value) { value.dVal.Emplace(0.0); }},
        {"30 05 a3 03 04 01 78", [](AsnValue& value) { value.sVal.Emplace("x"); }},
        {"30 04 a3 02 04 00", [](AsnValue& value) { value.sVal.Emplace(""); }},
        {"30 0a a1 03 02 01 01 a3 03 04 01 78",
         [](AsnValue& value) {
             value.iVal.Emplace(1);
             value.sVal.Emplace("x");
         }},
    };
    for (const auto& row : rows) {
        AsnValue value;
        row.fill(value);
        EXPECT_EQ(Hex(Encoded(value)), row.octets);
        AsnValue read;
        EXPECT_EQ(Decode(Octets(row.octets), read), "");
        EXPECT_EQ(Hex(Encoded(read)), row.octets);
    }
}

TEST(RecordsOnTheWire, Columns) {
    AsnSchemaItem item;
    EXPECT_EQ(Hex(Encoded(item)), "30 05 04 00 02 01 00");
    item.name = "mtu";
    item.type = 2;
    EXPECT_EQ(Hex(Encoded(item)), "30 08 04 03 6d 74 75 02 01 02");
    item.desc.Emplace("d");
    EXPECT_EQ(Hex(Encoded(item)), "30 0d 04 03 6d 74 75 02 01 02 a0 03 04 01 64");
}

// A table without a name and a schema is its rows alone.
TEST(RecordsOnTheWire, Tables) {
    AsnTable table;
    EXPECT_EQ(Hex(Encoded(table)), "30 02 30 00");
    table.rows.Append().Append().iVal.Emplace(1);
    EXPECT_EQ(Hex(Encoded(table)), "30 0b 30 09 30 07 30 05 a1 03 02 01 01");
    table.schema.Ensure().Append().name = "a";
    EXPECT_EQ(Hex(Encoded(table)),
              "30 17 a1 0a 30 08 30 06 04 01 61 02 01 00 30 09 30 07 30 05 a1 03 02 01 01");
    table.name.Emplace("t");
    table.rows.Clear();
    EXPECT_EQ(Hex(Encoded(table)),
              "30 13 a0 03 04 01 74 a1 0a 30 08 30 06 04 01 61 02 01 00 30 00");
}

TEST(RecordsOnTheWire, Resources) {
    AsnDistinguishedResource resource;
    EXPECT_EQ(Hex(Encoded(resource)), "30 02 04 00");
    resource.resDN = "d";
    resource.label.Emplace("l");
    resource.maintype.Emplace(1);
    resource.subtype.Emplace(2);
    resource.iResNumber.Emplace(3);
    resource.wholeLabel.Emplace("w");
    AsnRelation& relation = resource.aResRelation.Ensure().Append();
    relation.iRelation = 4;
    relation.iDepend = 5;
    relation.aResDN.Append() = "r";
    EXPECT_EQ(Hex(Encoded(resource)),
              "30 2d 04 01 64 a0 03 04 01 6c a1 03 02 01 01 a2 03 02 01 02 a3 03 02 01 03 "
              "a4 03 04 01 77 a5 0f 30 0d 30 0b 02 01 04 02 01 05 30 03 04 01 72");
    AsnDistinguishedResource read;
    EXPECT_EQ(Decode(Encoded(resource), read), "");
    EXPECT_EQ(Encoded(read), Encoded(resource));
}

TEST(RecordsOnTheWire, Requests) {
    AsnCommonRequest request;
    EXPECT_EQ(Hex(Encoded(request)), "30 03 02 01 00");
    request.userID = 7;
    request.resID.Ensure().resDN = "d";
    EXPECT_EQ(Hex(Encoded(request)), "30 0a 02 01 07 a0 05 30 03 04 01 64");
    request.tables.Ensure();
    EXPECT_EQ(Hex(Encoded(request)), "30 0e 02 01 07 a0 05 30 03 04 01 64 a1 02 30 00");
    request.resID.reset();
    request.tables->Append();
    EXPECT_EQ(Hex(Encoded(request)), "30 0b 02 01 07 a1 06 30 04 30 02 30 00");
}

TEST(RecordsOnTheWire, Responses) {
    AsnCommonResponse response;
    EXPECT_EQ(Hex(Encoded(response)), "30 03 02 01 00");
    response.retCode = 0x42000030;
    EXPECT_EQ(Hex(Encoded(response)), "30 06 02 04 42 00 00 30");
    response.retCodeEx.Emplace(-1);
    response.ver.Emplace("1");
    response.tables.Ensure();
    EXPECT_EQ(Hex(Encoded(response)),
              "30 14 02 04 42 00 00 30 a0 03 02 01 ff a1 03 04 01 31 a2 02 30 00");
}

TEST(RecordsOnTheWire, Lists) {
    AsnCommonRequestSeqOf requests;
    requests.Append();
    EXPECT_EQ(Hex(Encoded(requests)), "30 05 30 03 02 01 00");
    AsnCommonResponseSeqOf responses;
    responses.Append();
    responses.Append();
    EXPECT_EQ(Hex(Encoded(responses)), "30 0a 30 03 02 01 00 30 03 02 01 00");
    AsnResDNList names;
    names.Append() = "a";
    EXPECT_EQ(Hex(Encoded(names)), "30 03 04 01 61");
}

// A list's elements are the same whether its length is definite or indefinite.
TEST(RecordsOnTheWire, IndefiniteLengthsReadTheSame) {
    const std::string definite = Octets("30 0b 30 09 30 07 30 05 a1 03 02 01 01");
    const std::string indefinite =
        Octets("30 80 30 80 30 80 30 80 a1 80 02 01 01 00 00 00 00 00 00 00 00 00 00");
    AsnTable table;
    EXPECT_EQ(Decode(indefinite, table), "");
    EXPECT_EQ(Encoded(table), definite);
    // The end of the input stands for all the ends that are missing.
    EXPECT_EQ(Decode(indefinite.substr(0, 13), table), "");
    EXPECT_EQ(Encoded(table), definite);
}

}  // namespace
}  // namespace FrameUtil
