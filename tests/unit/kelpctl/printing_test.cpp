#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "kelpctl/answer.h"
#include "kelpctl/json_text.h"
#include "kelpctl/table_text.h"
#include "support/json.h"

namespace {

using kelpctl::Answer;
using kelpctl::Cell;
using kelpctl::Table;

const double kNan = std::numeric_limits<double>::quiet_NaN();

Cell Text(const char* text) {
    return std::string(text);
}
Cell Integer(std::int64_t value) {
    return value;
}

std::string TextOf(const Answer& answer, std::size_t most_rows = kelpctl::kAllRows) {
    std::ostringstream out;
    kelpctl::PrintText(answer, most_rows, out);
    return out.str();
}

std::string JsonOf(const Answer& answer) {
    std::ostringstream out;
    kelpctl::PrintJson(answer, out);
    return out.str();
}

Answer With(Table table) {
    Answer answer;
    answer.tables.push_back(std::move(table));
    return answer;
}

TEST(TextTables, AlignByColumnsNotByBytes) {
    Table table;
    table.columns = {"name", "n"};
    table.rows = {{Text("\u6771\u4eac"), Integer(7)}, {Text("Z\u00fcrich"), Integer(1000)}};
    EXPECT_EQ(TextOf(With(table)),
              "name       n\n"
              "------  ----\n"
              "\u6771\u4eac       7\n"
              "Z\u00fcrich  1000\n"
              "2 rows\n");
}

TEST(TextTables, ASingleRowIsAList) {
    Table table;
    table.columns = {"a", "long"};
    table.rows = {{Integer(1), Text("x\ny")}};
    EXPECT_EQ(TextOf(With(table)), "a     1\nlong  x\\ny\n");
}

TEST(TextTables, MissingValuesAndNonNumbersAreDashes) {
    Table table;
    table.columns = {"a", "b", "c"};
    table.rows = {{std::monostate(), kNan, true}, {Integer(5), 0.5, false}};
    EXPECT_EQ(TextOf(With(table)),
              "a    b      c\n"
              "-  ---  -----\n"
              "-    -   true\n"
              "5  0.5  false\n"
              "2 rows\n");
}

TEST(TextTables, RowsMayBeLimitedMissingOrUneven) {
    Table table;
    table.columns = {"a"};
    EXPECT_EQ(TextOf(With(table)), "a\n-\n0 rows\n");
    table.rows = {{Integer(1)}, {Integer(2), Text("more")}, {}};
    EXPECT_EQ(TextOf(With(table)), "a\n-  ----\n1\n2  more\n\n3 rows\n");
    EXPECT_EQ(TextOf(With(table), 1), "a\n-\n1\n... 1 of 3 rows\n");
}

TEST(TextTables, SeveralStandUnderOneAnotherWithTheirTitles) {
    Table one;
    one.name = "ports";
    one.columns = {"a"};
    one.rows = {{Integer(1)}};
    Table two = one;
    two.name.reset();
    Answer answer;
    answer.ver = "1.2";
    answer.ret_code_ex = 5;
    answer.tables = {one, two};
    EXPECT_EQ(TextOf(answer),
              "##retCodeEx  5\n##ver        1.2\n\nports:\na  1\n\ntable 1:\na  1\n");
}

// One cell of a megabyte must not cost every row a megabyte of blanks.
TEST(TextTables, PaddingIsBounded) {
    Table table;
    table.columns = {"a", "b"};
    table.rows.assign(1000, {Text("x"), Text("y")});
    table.rows[0][0] = std::string(std::size_t{1} << 20, 'x');
    EXPECT_LT(TextOf(With(table)).size(), (std::size_t{1} << 20) + 1010 * 250);
}

TEST(Json, HoldsEveryOctetAndNumber) {
    Table table;
    table.columns = {"t", "t", "", "#9", std::string("\xff")};
    table.rows = {{std::string("q\"\\\n\x7f\0", 6), std::string("\xff\x00", 2), std::monostate(),
                   kNan, std::numeric_limits<double>::infinity(), 0.1, Integer(-5), true}};
    Answer answer = With(table);
    answer.ret_code = 12;
    answer.ver = "v";
    const std::string text = JsonOf(answer);
    EXPECT_EQ(
        text,
        "{\"retCode\":12,\"ver\":\"v\",\"tables\":[\n"
        "{\"name\":null,\"columns\":[\"t\",\"t\",\"\",\"#9\",{\"octets\":\"ff\"}],\"rows\":[\n"
        "{\"t\":\"q\\\"\\\\\\u000a\\u007f\\u0000\",\"#1\":{\"octets\":\"ff00\"},\"#2\":null,"
        "\"#3\":\"NaN\",\"#4\":\"Infinity\",\"#5\":0.1,\"#6\":-5,\"#7\":true}]}]}\n");
    std::string why;
    EXPECT_TRUE(app::ParseJson(text, &why)) << why;
}

TEST(Json, AnEmptyAnswerIsAnObject) {
    EXPECT_EQ(JsonOf(Answer{}), "{\"retCode\":0,\"tables\":[]}\n");
}

TEST(ErrorRow, IsTakenFromAFailedAnswerOnly) {
    Table table;
    table.columns = {"errorItem", "errorAdvice", "errorText"};
    table.rows = {{Text("10.0.0.1"), Text("Wait."), Text("no answer")}};
    Answer failed = With(table);
    failed.ret_code = 11;
    const auto row = kelpctl::TakeErrorRow(failed);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text, "no answer");
    EXPECT_EQ(row->item, "10.0.0.1");
    EXPECT_EQ(row->advice, "Wait.");
    EXPECT_TRUE(failed.tables.empty());

    Answer fine = With(table);
    EXPECT_FALSE(kelpctl::TakeErrorRow(fine));
    EXPECT_EQ(fine.tables.size(), 1U);

    Table other;
    other.columns = {"a", "errorText"};
    other.rows = {{Text("x")}};
    Answer elsewhere = With(other);
    elsewhere.ret_code = 11;
    EXPECT_FALSE(kelpctl::TakeErrorRow(elsewhere));
    EXPECT_EQ(elsewhere.tables.size(), 1U);
}

TEST(TakeAnswer, KeepsWhatTheRecordHeld) {
    FrameUtil::AsnCommonResponse response;
    response.retCode = 3;
    response.retCodeEx.Emplace(4);
    FrameUtil::AsnTable& table = response.tables.Ensure().Append();
    table.schema.Ensure().Append().name = "t";
    FrameUtil::AsnDataRow& row = table.rows.Append();
    row.Append().sVal.Emplace(std::string("a\0b", 3));
    row.Append().bVal.Emplace(true);
    row.Append();
    const Answer answer = kelpctl::TakeAnswer(response);
    EXPECT_EQ(answer.ret_code, 3);
    EXPECT_EQ(answer.ret_code_ex, 4);
    EXPECT_FALSE(answer.ver);
    ASSERT_EQ(answer.tables.size(), 1U);
    EXPECT_FALSE(answer.tables[0].name);
    ASSERT_EQ(answer.tables[0].rows.size(), 1U);
    EXPECT_EQ(answer.tables[0].rows[0],
              (std::vector<Cell>{std::string("a\0b", 3), true, std::monostate()}));
}

}  // namespace
