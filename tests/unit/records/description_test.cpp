// How the records are described to the runtime: names, tags, presence, printed labels,
// the names that other units make types by.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "support/asn1_coding.h"
#include "support/golden_records.h"

namespace FrameUtil {
namespace {

using namespace support;

// "name [tag] optional" of every field, in the order of encoding.
std::vector<std::string> FieldsOf(const AsnSequence& record) {
    std::vector<std::string> fields;
    for (const refl::CAttribInfor& field : record.GetClassInfor().Attributes()) {
        std::string text = field.name;
        if (field.tag != refl::CClassInfor::kNoTag) {
            text += " [" + std::to_string(field.tag) + "]";
        }
        if (field.optional) {
            text += " optional";
        }
        fields.push_back(text);
    }
    return fields;
}

TEST(RecordDescription, ListsTheFieldsInTheOrderOfEncoding) {
    using Fields = std::vector<std::string>;
    EXPECT_EQ(FieldsOf(AsnValue()), (Fields{"bVal [0] optional", "iVal [1] optional",
                                            "dVal [2] optional", "sVal [3] optional"}));
    EXPECT_EQ(FieldsOf(AsnSchemaItem()), (Fields{"name", "type", "desc [0] optional"}));
    EXPECT_EQ(FieldsOf(AsnTable()), (Fields{"name [0] optional", "schema [1] optional", "rows"}));
    EXPECT_EQ(FieldsOf(AsnDistinguishedResource()),
              (Fields{"resDN", "label [0] optional", "maintype [1] optional",
                      "subtype [2] optional", "iResNumber [3] optional", "wholeLabel [4] optional",
                      "aResRelation [5] optional"}));
    EXPECT_EQ(FieldsOf(AsnRelation()), (Fields{"iRelation", "iDepend", "aResDN"}));
    EXPECT_EQ(FieldsOf(AsnCommonRequest()),
              (Fields{"userID", "resID [0] optional", "tables [1] optional"}));
    EXPECT_EQ(FieldsOf(AsnCommonResponse()), (Fields{"retCode", "retCodeEx [0] optional",
                                                     "ver [1] optional", "tables [2] optional"}));
}

TEST(RecordDescription, EveryTypeBelongsToTheUnitParaset) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        EXPECT_STREQ(golden.value->Unit(), "paraset") << golden.type;
    }
    for (const char* type : {"AsnSchemaDef", "AsnDataRow", "AsnTableSeqOf", "AsnTableList",
                             "AsnResDNList", "AsnRelation", "AsnDistinguishedResourceSeqOf"}) {
        EXPECT_STREQ(MakeRecord(type)->Unit(), "paraset") << type;
    }
}

TEST(RecordDescription, TypesAreMadeByTheNamesOtherUnitsKnow) {
    const struct {
        const char* name;
        const std::type_info& type;
    } rows[] = {
        {"FrameUtil::AsnSchemaDef", typeid(AsnSchemaDef)},
        {"FrameUtil::AsnTableSeqOf", typeid(AsnTableSeqOf)},
        {"AsnDistinguishedResourceSeqOf", typeid(AsnDistinguishedResourceSeqOf)},
        {"AsnResDNList", typeid(AsnResDNList)},
        {"AsnBool", typeid(AsnBool)},
        {"AsnReal", typeid(AsnReal)},
    };
    for (const auto& row : rows) {
        const std::unique_ptr<AsnType> made = refl::CClassInfor::CreateType(row.name);
        ASSERT_NE(made, nullptr) << row.name;
        const AsnType& type = *made;
        EXPECT_TRUE(typeid(type) == row.type) << row.name;
    }
    EXPECT_EQ(refl::CClassInfor::CreateType("AsnSchemaDef"), nullptr);
    EXPECT_EQ(refl::CClassInfor::CreateType("AsnInt"), nullptr);
}

// Printed fields carry the names of the description; absent ones are left out.
TEST(RecordDescription, NamesLabelThePrintedFields) {
    AsnCommonResponse response;
    response.retCode = 5;
    response.retCodeEx.Emplace(-1);
    response.ver.Emplace("V1");
    AsnTable& table = response.tables.Ensure().Append();
    table.name.Emplace("ports");
    AsnSchemaItem& item = table.schema.Ensure().Append();
    item.name = "mtu";
    item.type = 2;
    item.desc.Emplace("octets");
    AsnDataRow& row = table.rows.Append();
    row.Append().iVal.Emplace(1500);
    row.Append().dVal.Emplace(0.5);
    row.Append().sVal.Emplace("x");
    row.Append().bVal.Emplace(true);
    row.Append();
    EXPECT_EQ(Printed(response),
              "AsnCommonResponse {\n"
              "  retCode 5\n"
              "  retCodeEx -1\n"
              "  ver \"V1\"\n"
              "  tables [1] {\n"
              "    AsnTable {\n"
              "      name \"ports\"\n"
              "      schema [1] {\n"
              "        AsnSchemaItem {\n"
              "          name \"mtu\"\n"
              "          type 2\n"
              "          desc \"octets\"\n"
              "        }\n"
              "      }\n"
              "      rows [1] {\n"
              "        [5] {\n"
              "          AsnValue {\n"
              "            iVal 1500\n"
              "          }\n"
              "          AsnValue {\n"
              "            dVal 0.5\n"
              "          }\n"
              "          AsnValue {\n"
              "            sVal \"x\"\n"
              "          }\n"
              "          AsnValue {\n"
              "            bVal true\n"
              "          }\n"
              "          AsnValue {\n"
              "          }\n"
              "        }\n"
              "      }\n"
              "    }\n"
              "  }\n"
              "}\n");

    AsnCommonRequest request;
    request.resID.Emplace(GoldenResource(63));
    EXPECT_EQ(Printed(request),
              "AsnCommonRequest {\n"
              "  userID 0\n"
              "  resID AsnDistinguishedResource {\n"
              "    resDN \"NE=7340033,PORT=63\"\n"
              "    label \"tokyo-1\"\n"
              "    maintype 70000\n"
              "    subtype -3\n"
              "    iResNumber 1099511627776\n"
              "    wholeLabel \"asia/japan/tokyo-1\"\n"
              "    aResRelation [2] {\n"
              "      AsnRelation {\n"
              "        iRelation 1\n"
              "        iDepend 0\n"
              "        aResDN [0] {\n"
              "        }\n"
              "      }\n"
              "      AsnRelation {\n"
              "        iRelation -2\n"
              "        iDepend 300\n"
              "        aResDN [2] {\n"
              "          \"NE=1\"\n"
              "          \"\"\n"
              "        }\n"
              "      }\n"
              "    }\n"
              "  }\n"
              "}\n");
}

}  // namespace
}  // namespace FrameUtil
