#include "support/json.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::HasSubstr;

struct Case {
    const char* name;
    std::string text;
    const char* complaint;  // null: accepted
};

std::string Nested(int levels) {
    return std::string(static_cast<std::size_t>(levels), '[') +
           std::string(static_cast<std::size_t>(levels), ']');
}

// Strict where the parser's own defaults are lenient, and never an exception.
TEST(ParseJson, AcceptsOneStrictDocumentAndNothingElse) {
    const Case cases[] = {
        {"object", R"({"a": [1, 2.5, "x", true, null]})", nullptr},
        {"scalar", "42", nullptr},
        {"text with a slash", R"("a/b")", nullptr},
        {"text with escaped quote and slashes", R"("\"//")", nullptr},
        {"empty", "", "malformed JSON"},
        {"blank", " \n", "malformed JSON"},
        {"unfinished", "{", "malformed JSON"},
        {"behind the document", "{} x", "malformed JSON"},
        {"two documents", "1 2", "malformed JSON"},
        {"trailing comma", "[1,]", "malformed JSON"},
        {"duplicate name", R"({"a":1,"a":2})", "malformed JSON"},
        {"line comment", "// no\n1", "a comment"},
        {"block comment", "[1 /* no */]", "a comment"},
        {"single quotes", "{'a':1}", "malformed JSON"},
        {"not a number", "NaN", "malformed JSON"},
        {"lone high half", R"("\ud800")", "half a character is escaped at byte 1, line 1"},
        {"lone low half", "[\n\"\\ude00\"]", "half a character is escaped at byte 3, line 2"},
        {"in a name", R"({"\ude00": 1})", "half a character is escaped at byte 2"},
        {"low half behind a character", R"("\ud38d\ude00")",
         "half a character is escaped at byte 7"},
        {"high half before a character", R"("\ud83d\u0041")",
         "half a character is escaped at byte 1"},
        {"high half twice", R"("\ud83d\ud83d\ude00")", "half a character is escaped at byte 1"},
        {"high half at the end", R"("\ud83d)", "half a character is escaped"},
        {"half of a half", R"("\ud83)", "malformed JSON"},
        {"both halves", R"("\ud83d\uDE00")", nullptr},
        {"the same behind a backslash", R"("\\ude00")", nullptr},
        {"not UTF-8", "\"a\xff\"", "not UTF-8 at byte 2, line 1"},
        {"control character", "[1,\n\"a\x01\"]",
         "a control character inside a text at byte 6, line 2"},
        {"60 levels", Nested(60), nullptr},
        {"1100 levels", Nested(1100), "malformed JSON"},
        {"a million levels", Nested(500000), "malformed JSON"},
        {"too long", std::string(app::kJsonLimitBytes + 1, ' '), "longer than"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string why;
        const auto value = app::ParseJson(c.text, &why);
        EXPECT_EQ(value.has_value(), c.complaint == nullptr) << why;
        if (c.complaint != nullptr) {
            EXPECT_THAT(why, HasSubstr(c.complaint));
            EXPECT_EQ(why.find('\n'), std::string::npos) << "one line: " << why;
        }
    }
}

TEST(ParseJson, LimitOfBytesItselfIsAccepted) {
    const std::string text = "1" + std::string(app::kJsonLimitBytes - 1, ' ');
    EXPECT_TRUE(app::ParseJson(text, nullptr).has_value());
}

// Whatever stands where a member is read, the answer is "no such member".
TEST(JsonMembers, AreReadWithoutExceptions) {
    const std::string text = R"({"text":"x","whole":7,"big":5000000000,"real":7.0,"list":[]})";
    const auto value = app::ParseJson(text, nullptr);
    ASSERT_TRUE(value);
    EXPECT_EQ(app::JsonText(*value, "text"), "x");
    EXPECT_EQ(app::JsonText(*value, "whole"), std::nullopt);
    EXPECT_EQ(app::JsonText(*value, "none"), std::nullopt);
    EXPECT_EQ(app::JsonInteger(*value, "whole", 0, 10), 7);
    EXPECT_EQ(app::JsonInteger(*value, "whole", 8, 10), std::nullopt);
    EXPECT_EQ(app::JsonInteger(*value, "big", 0, 10), std::nullopt);
    EXPECT_EQ(app::JsonInteger(*value, "real", 0, 10), std::nullopt);
    EXPECT_EQ(app::JsonInteger(*value, "text", 0, 10), std::nullopt);
    const auto list = app::ParseJson("[1]", nullptr);
    ASSERT_TRUE(list);
    EXPECT_EQ(app::JsonText(*list, "text"), std::nullopt);
    EXPECT_EQ(app::JsonMember(*list, "text"), nullptr);
}

TEST(JsonLine, IsWhereTheValueBegins) {
    const std::string text = "{\"a\":\n 1,\n\n \"b\": {\n}}";
    const auto value = app::ParseJson(text, nullptr);
    ASSERT_TRUE(value);
    EXPECT_EQ(app::JsonLine(*value, text), 1U);
    EXPECT_EQ(app::JsonLine((*value)["a"], text), 2U);
    EXPECT_EQ(app::JsonLine((*value)["b"], text), 4U);
}

TEST(JsonNumberText, IsWhatStoodThere) {
    const std::string text = R"({"a": 1e3, "b": 1000})";
    const auto value = app::ParseJson(text, nullptr);
    ASSERT_TRUE(value);
    EXPECT_EQ(app::JsonNumberText((*value)["a"], text), "1e3");
    EXPECT_EQ(app::JsonNumberText((*value)["b"], text), "1000");
}

}  // namespace
