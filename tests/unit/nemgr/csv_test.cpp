#include "nemgr/vendors/csv.h"

#include <gmock/gmock.h>

namespace {

using Records = std::vector<std::vector<std::string>>;

Records ReadAll(std::string_view text) {
    nemgr::vendors::CsvReader reader(text);
    Records records;
    for (std::vector<std::string> fields; reader.Next(fields);) {
        records.push_back(fields);
    }
    return records;
}

TEST(Csv, ReadsRecordsAndQuotedFields) {
    const struct {
        const char* name;
        const char* text;
        Records records;
    } cases[] = {
        {"nothing", "", {}},
        {"one field", "a", {{"a"}}},
        {"line ends", "a,b\r\nc,d\n", {{"a", "b"}, {"c", "d"}}},
        {"empty fields", ",\n", {{"", ""}}},
        {"comma at the end of all", "a,", {{"a", ""}}},
        {"blank line", "a\n\nb", {{"a"}, {""}, {"b"}}},
        {"quoted comma", "\"a,b\",c", {{"a,b", "c"}}},
        {"doubled quote", "\"a\"\"b\"", {{"a\"b"}}},
        {"quoted line end", "\"a\r\nb\",c\r\n", {{"a\r\nb", "c"}}},
        {"unfinished quote", "\"a,b\nc", {{"a,b\nc"}}},
        {"quote inside", "a\"b,c", {{"a\"b", "c"}}},
        {"text behind the quotes", "\"a\"b,c", {{"ab", "c"}}},
        {"carriage return alone", "a\rb", {{"a\rb"}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ReadAll(c.text), c.records) << c.name;
    }
}

}  // namespace
