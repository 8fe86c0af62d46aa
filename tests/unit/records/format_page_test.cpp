// The worked example of docs/formats/records.md is what the library writes and reads.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "frameutil/paraset.h"
#include "support/asn1_coding.h"

namespace FrameUtil {
namespace {

using namespace support;

// The octets of the page's "hex" block: the pairs of digits that begin each line, up to
// the words behind them.
std::string ExampleOctets() {
    std::ifstream page(RECORDS_FORMAT_PAGE);
    std::string octets;
    std::string line;
    bool inside = false;
    while (std::getline(page, line)) {
        if (line.starts_with("```")) {
            inside = line == "```hex";
            continue;
        }
        std::istringstream words(line);
        for (std::string word; inside && words >> word;) {
            if (word.size() != 2 ||
                word.find_first_not_of("0123456789abcdef") != std::string::npos) {
                break;
            }
            octets += Octets(word);
        }
    }
    return octets;
}

AsnCommonResponse ExampleRecord() {
    AsnCommonResponse response;
    response.ver.Emplace("V1");
    AsnTable& table = response.tables.Ensure().Append();
    const struct {
        const char* name;
        int type;
    } columns[] = {{"mtu", 2}, {"load", 9}, {"name", 4}};
    for (const auto& column : columns) {
        AsnSchemaItem& item = table.schema.Ensure().Append();
        item.name = column.name;
        item.type = column.type;
    }
    AsnDataRow& row = table.rows.Append();
    row.Append().iVal.Emplace(1500);
    row.Append().dVal.Emplace(0.5);
    row.Append().sVal.Emplace("eth0");
    return response;
}

TEST(RecordsFormatPage, ExampleIsWhatTheLibraryWrites) {
    EXPECT_EQ(Hex(Encoded(ExampleRecord())), Hex(ExampleOctets()));
    EXPECT_EQ(ExampleOctets().size(), 84U);
}

TEST(RecordsFormatPage, ExampleReadsAsTheTreeItDescribes) {
    AsnCommonResponse response;
    ASSERT_EQ(Decode(ExampleOctets(), response), "");
    CParaSet tree("root");
    EXPECT_EQ(tree.CommonRspAsn2Para(response), 0);
    EXPECT_EQ(tree["##retCode"].asInt(), 0);
    EXPECT_STREQ(tree["##ver"].asString(), "V1");
    EXPECT_EQ(tree["##TableCount"].asInt(), 1);
    EXPECT_EQ(tree.GetRowCount(), 1);
    EXPECT_EQ(tree["mtu"].asInt(), 1500);
    EXPECT_EQ(tree["load"].asDouble(), 0.5);
    EXPECT_STREQ(tree["name"].asString(), "eth0");
    // Columns travel in the order of their names.
    AsnCommonResponse again;
    EXPECT_EQ(tree.Para2CommonRspAsn(again), 0);
    EXPECT_EQ((*again.tables)[0].schema->At(0)->name.str(), "load");
}

}  // namespace
}  // namespace FrameUtil
