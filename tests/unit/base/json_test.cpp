#include "base/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/captured_log.h"
#include "support/heap_meter.h"
#include "support/small_stack.h"

namespace {

using FrameUtil::JsonInt;
using FrameUtil::JsonMember;
using FrameUtil::JsonText;
using FrameUtil::ParseJson;

std::string Nested(int levels) {
    return std::string(static_cast<std::size_t>(levels), '[') +
           std::string(static_cast<std::size_t>(levels), ']');
}

TEST(Json, WhatIsTakenAndWhatIsNot) {
    struct Row {
        const char* name;
        std::string text;
        bool taken;
    };
    const Row rows[] = {
        {"object", R"({"a": [1, -2.5, "x", true, null]})", true},
        {"bare text", R"("x")", true},
        {"bare number", "17", true},
        {"null", "null", true},
        {"blanks around", " \r\n\t{} \n", true},
        {"UTF-8", "\"\xc3\xa9\xe6\x9d\xb1\xf0\x9f\x98\x80\"", true},
        {"slash within a text", R"("a/b //c")", true},
        {"64 levels", Nested(64), true},
        {"65 levels", Nested(65), false},
        {"100000 levels", Nested(100000), false},
        {"only opened", std::string(100000, '['), false},
        {"empty", "", false},
        {"blanks", "  ", false},
        {"cut", R"({"a": )", false},
        {"text is cut", R"("a\)", false},
        {"two values", "{} {}", false},
        {"garbage behind", "{}x", false},
        {"comma at the end", "[1,]", false},
        {"comment", "{} // x", false},
        {"long comment", "/* x */ {}", false},
        {"name twice", R"({"a": 1, "a": 2})", false},
        {"single quotes", "{'a': 1}", false},
        {"no name", "{1: 2}", false},
        {"NaN", "NaN", false},
        {"lone surrogate", R"("\ud800")", false},
        {"lone low surrogate", R"("\ude00")", false},
        {"low surrogate behind a character", R"("\ud38d\ude00")", false},
        {"high surrogate before a character", R"("\ud83d\u0041")", false},
        {"both surrogates", R"("\ud83d\ude00")", true},
        {"the same behind a backslash", R"("\\ude00")", true},
        {"octet that is no UTF-8", "\"\xff\"", false},
        {"overlong", "\"\xc0\xaf\"", false},
        {"overlong of three", "\"\xe0\x80\xaf\"", false},
        {"surrogate in UTF-8", "\"\xed\xa0\x80\"", false},
        {"beyond the last character", "\"\xf4\x90\x80\x80\"", false},
        {"character is cut", "\"\xe6\x9d\"", false},
        {"HTML", "<html></html>", false},
    };
    for (const Row& row : rows) {
        Json::Value value = 5;
        std::string why;
        EXPECT_EQ(ParseJson(row.text, value, &why), row.taken) << row.name << ": " << why;
        EXPECT_EQ(why.empty(), row.taken) << row.name;
        if (!row.taken) {
            EXPECT_TRUE(value.isNull()) << row.name;
        }
    }
}

TEST(Json, DeepInputOnASmallStack) {
    OnSmallStack([] {
        Json::Value value;
        EXPECT_TRUE(ParseJson(Nested(64), value));
        EXPECT_FALSE(ParseJson(Nested(2000000), value));
    });
}

// A value takes some hundred octets for the two of its input, so the values are counted
// before the first one is made.
TEST(Json, BoundsBeforeMemory) {
    const auto list = [](std::size_t values) {
        std::string text = "[1";
        for (std::size_t i = 2; i < values; ++i) {
            text += ",1";
        }
        return text + "]";
    };
    Json::Value value;
    EXPECT_TRUE(ParseJson(list(FrameUtil::kJsonMostValues), value));
    EXPECT_EQ(value.size(), FrameUtil::kJsonMostValues - 1);
    value = Json::Value();
    const std::size_t before = support::HeapInUse();
    std::string why;
    EXPECT_FALSE(ParseJson(list(FrameUtil::kJsonMostValues + 1), value, &why));
    EXPECT_EQ(why, "more than 200000 values");
    EXPECT_LE(support::HeapInUse(), before + support::kHeapNoise);
    const std::string longest = "\"" + std::string(FrameUtil::kJsonMostOctets - 2, 'x') + "\"";
    EXPECT_TRUE(ParseJson(longest, value));
    EXPECT_FALSE(ParseJson(longest + " ", value, &why));
    EXPECT_EQ(why, "longer than 16 MiB");
}

TEST(Json, Members) {
    Json::Value value;
    ASSERT_TRUE(ParseJson(R"({"a": null, "b": [1]})", value));
    EXPECT_NE(JsonMember(value, "a"), nullptr);
    EXPECT_EQ(JsonMember(value, "c"), nullptr);
    EXPECT_EQ(JsonMember(*JsonMember(value, "b"), "a"), nullptr);
    EXPECT_EQ(JsonMember(Json::Value("text"), "a"), nullptr);
    EXPECT_EQ(JsonMember(Json::Value(), "a"), nullptr);
}

TEST(Json, Reading) {
    const LocationInfo here("unit", "function", 7);
    struct Row {
        const char* json;
        const char* text;
        int number;
        bool text_fails, number_fails;
    };
    const Row rows[] = {
        {R"("x")", "x", 0, false, true},
        {"17", "17", 17, false, false},
        {"-1", "-1", -1, false, false},
        {"2.5", "2.5", 2, false, false},
        {"true", "true", 1, false, false},
        {"null", "", 0, false, false},
        {"5000000000", "5000000000", 0, false, true},
        {"[\"x\"]", "", 0, true, true},
        {R"({"x": 1})", "", 0, true, true},
    };
    for (const Row& row : rows) {
        Json::Value value;
        ASSERT_TRUE(ParseJson(row.json, value));
        const CapturedLog log;
        EXPECT_EQ(JsonText(value, here), row.text) << row.json;
        EXPECT_EQ(log.Texts().size(), row.text_fails ? 1U : 0U) << row.json;
        EXPECT_EQ(JsonInt(value, here, "port"), row.number) << row.json;
        const auto entries = log.Entries();
        EXPECT_EQ(entries.size(), (row.text_fails ? 1U : 0U) + (row.number_fails ? 1U : 0U))
            << row.json;
        for (const auto& entry : entries) {
            EXPECT_EQ(entry.level, kelp::log::Level::kError);
            EXPECT_EQ(entry.code, 0U);
            EXPECT_EQ(entry.unit, "unit");
            EXPECT_THAT(entry.text, testing::StartsWith("json exception:"));
        }
        if (row.number_fails) {
            EXPECT_THAT(entries.back().text, testing::EndsWith("port"));
        }
    }
}

}  // namespace
