// How a record becomes a line, in both formats.

#include "log/render.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "support/temp_folder.h"

namespace {

using kelp::log::Format;
using kelp::log::Level;
using kelp::log::LineContext;
using kelp::log::Record;
using kelp::log::Render;

// 2024-11-21T09:27:13.123456Z
const std::chrono::system_clock::time_point kTime{std::chrono::microseconds(1732181233123456)};
const LocationInfo kWhere("ftpapi.cpp", "Upload", 88);
const LocationInfo& kNowhere = LocationInfo::getLocationUnavailable();

Record Make(Level level, unsigned code, std::string_view text, const LocationInfo& where) {
    return {kTime, level, code, text, where, 4711};
}

TEST(TextLine, Fields) {
    const struct {
        Record record;
        unsigned process;
        const char* line;
    } cases[] = {
        {Make(Level::kDebug, 0, "x", kNowhere), 0,
         "2024-11-21T09:27:13.123456Z DEBUG pid=12 tid=4711 x"},
        {Make(Level::kInfo, 0, "x", kWhere), 0,
         "2024-11-21T09:27:13.123456Z INFO  pid=12 tid=4711 [ftpapi.cpp:Upload:88] x"},
        {Make(Level::kWarn, 0, "", kNowhere), 3001,
         "2024-11-21T09:27:13.123456Z WARN  pid=12 tid=4711 proc=3001 "},
        {Make(Level::kError, 0x42000030, "no", kWhere), 3001,
         "2024-11-21T09:27:13.123456Z ERROR pid=12 tid=4711 proc=3001 code=0x42000030 "
         "[ftpapi.cpp:Upload:88] no"},
        {Make(Level::kError, 0, "no", kNowhere), 0,
         "2024-11-21T09:27:13.123456Z ERROR pid=12 tid=4711 code=0x00000000 no"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Render(c.record, {Format::kText, c.process, 12}), c.line);
    }
}

// A text cannot begin a line of its own or drive the terminal that shows it; one line
// break at its end is dropped.
TEST(TextLine, ControlCharactersAreEscaped) {
    const struct {
        std::string text;
        std::string after;
    } cases[] = {
        {"a\nb", "a\\nb"},
        {"a\n", "a"},
        {"a\n\n", "a\\n"},
        {"\n", ""},
        {"a\r\n", "a\\r"},
        {"\ta", "\\ta"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"\x1b[31mred", "\\x1b[31mred"},
        {"\x7f", "\\x7f"},
        {"\xC2\x9B"
         "31m",
         "\\xc2\\x9b31m"},
        {"\xC2\xA0", "\xC2\xA0"},
        {"M\xC3\xBCnchen \xE2\x82\xAC \xF0\x9F\x98\x80",
         "M\xC3\xBCnchen \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"\xFF\xFE", "\\xff\\xfe"},
        {"\xC3", "\\xc3"},
        {"\xC0\xAF", "\\xc0\\xaf"},
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
        {"a\\nb", "a\\nb"},
    };
    for (const auto& c : cases) {
        const std::string line =
            Render(Make(Level::kInfo, 0, c.text, kNowhere), {Format::kText, 0, 12});
        EXPECT_EQ(line, "2024-11-21T09:27:13.123456Z INFO  pid=12 tid=4711 " + c.after);
    }
    const LocationInfo forged("a\nb", "c\nd", 1);
    EXPECT_EQ(Render(Make(Level::kInfo, 0, "x", forged), {Format::kText, 0, 12}),
              "2024-11-21T09:27:13.123456Z INFO  pid=12 tid=4711 [a\\nb:c\\nd:1] x");
}

// The lines that the documentation shows are what the log writes.
TEST(Lines, Documentation) {
    const std::string manual = ReadFile(KELP_LOG_MANUAL);
    const std::string json =
        Render(Make(Level::kError, 0x42000064, "no answer from \"ne-7\"\n", kWhere),
               {Format::kJson, 3001, 12});
    EXPECT_EQ(json,
              R"({"time":"2024-11-21T09:27:13.123456Z","level":"error","pid":12,"process":3001,)"
              R"("thread":4711,"unit":"ftpapi.cpp","function":"Upload","line":88,)"
              R"("code":1107296356,"text":"no answer from \"ne-7\"\n"})");
    EXPECT_THAT(manual, testing::HasSubstr("\n" + json + "\n"));
    const std::string text =
        Render(Make(Level::kError, 0x42000064, "no answer", kWhere), {Format::kText, 3001, 12});
    EXPECT_THAT(manual, testing::HasSubstr("\n" + text + "\n"));
}

TEST(JsonLine, FieldsThatAreUnknownAreThere) {
    EXPECT_EQ(Render(Make(Level::kInfo, 0, "", kNowhere), {Format::kJson, 0, 12}),
              R"({"time":"2024-11-21T09:27:13.123456Z","level":"info","pid":12,"process":0,)"
              R"("thread":4711,"unit":"","function":"","line":0,"code":0,"text":""})");
}

// What a JSON reader finds in the text field: the text, or the replacement character
// for every byte that is no UTF-8.
TEST(JsonLine, TextsOfAnyBytes) {
    const struct {
        const char* name;
        std::string text;
        std::string after;
    } cases[] = {
        {"quotes and backslashes", "\"\\/", "\"\\/"},
        {"short escapes", "\n\r\t", "\n\r\t"},
        {"zero", std::string("a\0b", 3), std::string("a\0b", 3)},
        {"escape and delete", "\x1b\x7f", "\x1b\x7f"},
        {"two, three and four bytes", "\xC2\xA0\xE2\x82\xAC\xF4\x8F\xBF\xBF",
         "\xC2\xA0\xE2\x82\xAC\xF4\x8F\xBF\xBF"},
        {"second kind of control", "\xC2\x9B", "\xC2\x9B"},
        {"lone continuation", "a\x80z", "a\xEF\xBF\xBDz"},
        {"truncated", "a\xE2\x82", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"truncated, then text", "\xE2\x82z", "\xEF\xBF\xBD\xEF\xBF\xBDz"},
        {"overlong", "\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"overlong, three bytes", "\xE0\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"surrogate", "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"beyond the last character", "\xF4\x90\x80\x80",
         "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"no first byte", "\xF5\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& c : cases) {
        const std::string line =
            Render(Make(Level::kInfo, 0, c.text, kNowhere), {Format::kJson, 0, 12});
        const auto json = nlohmann::json::parse(line, nullptr, false);
        ASSERT_FALSE(json.is_discarded()) << c.name << ": " << line;
        EXPECT_EQ(json.at("text").get<std::string>(), c.after) << c.name;
    }
}

// Neither format is broken by random bytes: one line, and a JSON line stays valid.
TEST(Lines, RandomBytes) {
    std::mt19937 random(20241121);  // NOLINT(cert-msc51-cpp): the same bytes in every run
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 64, '\0');
        for (char& byte : bytes) {
            // Half of them from the range where multi-byte characters begin and go on.
            byte = static_cast<char>(round % 2 == 0 ? random() : 0x80 | random());
        }
        const LocationInfo where(bytes.c_str(), bytes.c_str(), 1);
        const Record record = Make(Level::kError, 1, bytes, where);
        const std::string json_line = Render(record, {Format::kJson, 0, 12});
        const std::string text_line = Render(record, {Format::kText, 0, 12});
        EXPECT_TRUE(nlohmann::json::accept(json_line)) << json_line;
        for (const std::string& line : {json_line, text_line}) {
            for (const char c : line) {
                ASSERT_GE(static_cast<unsigned char>(c), 0x20) << line;
            }
        }
    }
}

TEST(PrintTime, Calendar) {
    const struct {
        std::int64_t microseconds;
        const char* text;
    } cases[] = {
        {0, "1970-01-01T00:00:00.000000Z"},
        {-1, "1969-12-31T23:59:59.999999Z"},
        {951782399999999, "2000-02-28T23:59:59.999999Z"},
        {951782400000000, "2000-02-29T00:00:00.000000Z"},
        {1732181233123456, "2024-11-21T09:27:13.123456Z"},
        {253402300799999999, "9999-12-31T23:59:59.999999Z"},
    };
    for (const auto& c : cases) {
        char text[kelp::log::kTimeSize];
        kelp::log::PrintTime(c.microseconds, text);
        EXPECT_STREQ(text, c.text);
    }
}

TEST(Location, NullNamesAreEmpty) {
    const LocationInfo where(nullptr, nullptr, 0);
    EXPECT_STREQ(where.getClassName(), "");
    EXPECT_STREQ(where.getMethodName(), "");
    EXPECT_FALSE(where.IsAvailable());
    EXPECT_FALSE(kNowhere.IsAvailable());
    EXPECT_TRUE(kWhere.IsAvailable());
    EXPECT_STREQ(kWhere.getClassName(), "ftpapi.cpp");
    EXPECT_STREQ(kWhere.getMethodName(), "Upload");
    EXPECT_EQ(kWhere.getLine(), 88);
}

}  // namespace
