#include "support/json.h"

#include <json/reader.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>

#include "support/numbers.h"
#include "support/utf8.h"

namespace app {
namespace {

Json::CharReaderBuilder StrictBuilder(int depth) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    // A scalar is a value too: an argument may be written as one.
    builder["strictRoot"] = false;
    builder["stackLimit"] = depth;
    return builder;
}

std::size_t LineAt(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, byte);
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

// The reader's complaint comes over several lines, with blanks between.
std::string OneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool blank = c == '\n' || c == '\t' || c == '\r' || c == ' ' || c == '*';
        if (!blank) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    return line;
}

std::string At(std::string_view text, std::size_t byte) {
    return " at byte " + std::to_string(byte) + ", line " + std::to_string(LineAt(text, byte));
}

// The unit that an escape "\uXXXX" at `at` stands for; 0 when there is none.
unsigned EscapedUnit(std::string_view text, std::size_t at) {
    if (text.substr(at, 2) != "\\u") {
        return 0;
    }
    unsigned unit = 0;
    for (std::size_t i = at + 2; i < at + 6; ++i) {
        const int digit = i < text.size() ? HexDigit(text[i]) : -1;
        if (digit < 0) {
            return 0;
        }
        unit = unit * 16 + static_cast<unsigned>(digit);
    }
    return unit;
}

// How many bytes the escape at `at` takes, both halves of a character together; 0: half a
// character, which the reader would make a text of that is no UTF-8, or another character.
std::size_t EscapeBytes(std::string_view text, std::size_t at) {
    const auto is_low = [](unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
    const unsigned unit = EscapedUnit(text, at);
    if (unit < 0xD800 || unit > 0xDFFF) {
        return 2;
    }
    return !is_low(unit) && is_low(EscapedUnit(text, at + 6)) ? 12 : 0;
}

// What the reader lets pass in every mode: comments wherever a blank may stand, control
// characters inside texts and halves of characters. Empty when there is none of them.
std::string Looseness(std::string_view text) {
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (quoted && static_cast<unsigned char>(text[i]) < 0x20) {
            return "a control character inside a text" + At(text, i);
        }
        if (quoted && text[i] == '\\') {
            const std::size_t bytes = EscapeBytes(text, i);
            if (bytes == 0) {
                return "half a character is escaped" + At(text, i);
            }
            i += bytes - 1;
        } else if (text[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && text[i] == '/') {
            return "a comment, or a '/' outside a text," + At(text, i);
        }
    }
    return {};
}

std::optional<Json::Value> Refuse(std::string* why, std::string reason) {
    if (why != nullptr) {
        *why = std::move(reason);
    }
    return std::nullopt;
}

}  // namespace

std::optional<Json::Value> ParseJson(std::string_view text, std::string* why,
                                     const JsonLimits& limits) {
    if (text.size() > limits.bytes) {
        return Refuse(why, "JSON longer than " + std::to_string(limits.bytes) + " bytes");
    }
    if (const std::size_t bad = InvalidUtf8At(text); bad != std::string_view::npos) {
        return Refuse(why, "malformed JSON: not UTF-8" + At(text, bad));
    }
    if (std::string loose = Looseness(text); !loose.empty()) {
        return Refuse(why, "malformed JSON: " + loose);
    }
    Json::Value value;
    std::string complaint;
    try {
        const std::unique_ptr<Json::CharReader> reader(StrictBuilder(limits.depth).newCharReader());
        if (reader->parse(text.data(), text.data() + text.size(), &value, &complaint)) {
            return value;
        }
    } catch (const std::exception& e) {
        complaint = e.what();  // nesting beyond the limit is thrown, not returned
    }
    return Refuse(why, "malformed JSON: " + OneLine(complaint));
}

std::string_view JsonNumberText(const Json::Value& number, std::string_view document) {
    const auto start = static_cast<std::size_t>(number.getOffsetStart());
    const auto limit = static_cast<std::size_t>(number.getOffsetLimit());
    return start <= limit && limit <= document.size() ? document.substr(start, limit - start)
                                                      : std::string_view();
}

std::size_t JsonLine(const Json::Value& value, std::string_view document) {
    return LineAt(document, static_cast<std::size_t>(value.getOffsetStart()));
}

const Json::Value* JsonMember(const Json::Value& object, const char* name) {
    return object.isObject() ? object.find(name, name + std::strlen(name)) : nullptr;
}

std::optional<std::string> JsonText(const Json::Value& object, const char* name) {
    const Json::Value* member = JsonMember(object, name);
    if (member == nullptr || !member->isString()) {
        return std::nullopt;
    }
    return member->asString();
}

std::optional<std::int64_t> JsonInteger(const Json::Value& object, const char* name,
                                        std::int64_t least, std::int64_t most) {
    const Json::Value* member = JsonMember(object, name);
    if (member == nullptr || !member->isInt64() || member->type() == Json::realValue) {
        return std::nullopt;
    }
    const std::int64_t value = member->asInt64();
    return value >= least && value <= most ? std::optional(value) : std::nullopt;
}

}  // namespace app
