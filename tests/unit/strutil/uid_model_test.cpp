// The parser against a second implementation of the grammar: every short text, and long
// ones that random made.

#include "support/uid_model.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "frameutil/strutil.h"

namespace FrameUtil {
namespace {

// The empty text when both agree, else what they disagree about.
std::string Difference(StrUIDParser& parser, const std::string& text) {
    const support::UidModel model(text);
    if (parser.Parse(text.c_str()) != model.done) {
        return "the result";
    }
    parser.SetCurToFirst();
    for (const auto& [key, value] : model.pairs) {
        if (!parser.Next()) {
            return "too few pairs";
        }
        if (parser.Type() != key || parser.StrValue() != value.value_or("")) {
            return "pair '" + key + "'";
        }
    }
    if (parser.Next()) {
        return "too many pairs";
    }
    if (parser.GetMOC() != (model.pairs.empty() ? "" : model.pairs.back().first)) {
        return "the class";
    }
    std::string found;
    for (const char* key : {"a", "c"}) {
        for (const unsigned long index : {0UL, 1UL}) {
            const auto expected = model.Find(key, index);
            if (parser.GetValue(found, key, index) != expected.has_value() ||
                (expected && found != *expected)) {
                return std::string("value of ") + key;
            }
        }
    }
    return "";
}

// Separators, the escape, what may follow it, and characters that mean nothing.
constexpr std::string_view kAlphabet = ",=\\ce|a1";

TEST(UidModel, AgreesOnAllShortTexts) {
    StrUIDParser parser;
    long texts = 0, accepted = 0;
    for (std::size_t length = 0; length <= 6; ++length) {
        std::string text(length, kAlphabet[0]);
        std::vector<std::size_t> digits(length, 0);
        for (;;) {
            const std::string difference = Difference(parser, text);
            ASSERT_EQ(difference, "") << text;
            ++texts;
            accepted += parser.Parse(text.c_str()) ? 1 : 0;
            std::size_t at = 0;
            while (at < length && ++digits[at] == kAlphabet.size()) {
                digits[at] = 0;
                text[at++] = kAlphabet[0];
            }
            if (at == length) {
                break;
            }
            text[at] = kAlphabet[digits[at]];
        }
    }
    EXPECT_EQ(texts, 299593);  // 8^0 + ... + 8^6
    EXPECT_GT(accepted, 10000);
}

TEST(UidModel, AgreesOnAllTextsOfOneAndTwoBytes) {
    StrUIDParser parser;
    for (int first = 1; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const char text[] = {static_cast<char>(first), static_cast<char>(second), '\0'};
            const auto printable = [](int byte) { return byte >= 0x20 && byte <= 0x7e; };
            if (printable(first) && (second == 0 || printable(second))) {
                ASSERT_EQ(Difference(parser, text), "") << text;
            } else {
                ASSERT_FALSE(parser.Parse(text)) << first << ' ' << second;
            }
        }
    }
}

// Mostly well formed, so that the reading gets far.
std::string RandomText(std::mt19937& random, std::size_t most) {
    std::string text;
    const std::size_t length = random() % most;
    while (text.size() < length) {
        switch (random() % 20) {
            case 0:
                text += kAlphabet[random() % kAlphabet.size()];
                break;
            case 1:
                text += std::string(random() % 60, 'c');
                break;
            default:
                text += text.empty() ? "" : ",";
                text += std::string(1 + random() % 3, static_cast<char>('a' + random() % 3)) + "=";
                for (std::size_t i = random() % 12 + 1; i != 0; --i) {
                    constexpr const char* kPieces[] = {"a", "1", " ", "\\c", "\\e", "\\\\", "\\|"};
                    text += kPieces[random() % 7];
                }
        }
    }
    return text;
}

TEST(UidModel, AgreesOnLongRandomTexts) {
    std::mt19937 random(20);
    StrUIDParser parser;
    int accepted = 0, refused = 0;
    for (int i = 0; i < 100'000; ++i) {
        const std::string text = RandomText(random, i % 2 == 0 ? 60 : 600);
        ASSERT_EQ(Difference(parser, text), "") << text;
        ++(parser.Parse(text.c_str()) ? accepted : refused);
    }
    EXPECT_GT(accepted, 10'000);
    EXPECT_GT(refused, 10'000);
}

// Around the end of the buffer: every text of two pairs whose escapes cross it.
TEST(UidModel, AgreesAroundTheEndOfTheBuffer) {
    StrUIDParser parser;
    for (std::size_t length = 235; length < 260; ++length) {
        for (const char* tail : {"", "\\c", "\\|", "\\|\\|", "\\\\", ",", ",b", ",b=", ",b=1",
                                 ",b=\\|", "=", "\\x", "\\", "\\||", ",bbb=\\|\\|\\|"}) {
            const std::string text = "a=" + std::string(length, 'v') + tail;
            ASSERT_EQ(Difference(parser, text), "") << text;
        }
        const std::string key(length, 'k');
        for (const char* tail : {"", "=", "=1", "=\\|", "=1,b=2", ","}) {
            ASSERT_EQ(Difference(parser, key + tail), "") << key << tail;
        }
    }
}

// What the factory builds is read back, and built from that again.
TEST(UidModel, WhatIsBuiltIsReadBack) {
    std::mt19937 random(21);
    StrUIDParser parser;
    int whole = 0;
    for (int i = 0; i < 20'000; ++i) {
        StrUIDFactory factory;
        std::vector<std::pair<std::string, std::string>> pairs;
        std::size_t bytes = 0;
        for (std::size_t n = random() % 6; n != 0; --n) {
            const std::string key(1 + random() % 5, static_cast<char>('a' + random() % 26));
            std::string value;
            for (std::size_t length = 1 + random() % 40; length != 0; --length) {
                value += static_cast<char>(0x20 + random() % 0x5f);
            }
            factory.Append(key.c_str(), value.c_str());
            bytes += key.size() + value.size() + 2;
            pairs.emplace_back(key, value);
        }
        const std::string text = factory.GetStr();
        ASSERT_EQ(parser.Parse(text.c_str()), bytes <= 256) << text;
        if (bytes > 256) {
            continue;
        }
        ++whole;
        StrUIDFactory again;
        for (const auto& [key, value] : pairs) {
            ASSERT_TRUE(parser.Next());
            ASSERT_EQ(parser.Type(), key);
            ASSERT_EQ(parser.StrValue(), value);
            again.Append(parser.Type().c_str(), parser.StrValue().c_str());
        }
        ASSERT_FALSE(parser.Next());
        ASSERT_EQ(again.GetStr(), text);
    }
    EXPECT_GT(whole, 10'000);
}

// A value that is too long with its escapes is written without them, and lost.
TEST(UidModel, ManyEscapesDoNotComeBack) {
    for (const std::size_t count : {127UL, 128UL}) {
        StrUIDFactory factory;
        const std::string value(count, ',');
        factory.Append("k", value.c_str());
        StrUIDParser parser;
        EXPECT_EQ(parser.Parse(factory.GetStr().c_str()), count == 127);
        std::string escaped;
        for (std::size_t i = 0; i < count; ++i) {
            escaped += "\\c";
        }
        // The parser would have had room for either.
        EXPECT_TRUE(parser.Parse(("k=" + escaped).c_str()));
    }
}

}  // namespace
}  // namespace FrameUtil
