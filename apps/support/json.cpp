#include "support/json.h"

#include <json/reader.h>

#include <cstring>
#include <exception>
#include <memory>

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

// What the reader lets pass in every mode: comments wherever a blank may stand, and control
// characters inside texts. Empty when there is neither.
std::string Looseness(std::string_view text) {
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (quoted && static_cast<unsigned char>(text[i]) < 0x20) {
            return "a control character inside a text at byte " + std::to_string(i);
        }
        if (quoted && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && text[i] == '/') {
            return "a comment, or a '/' outside a text";
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
        return Refuse(why, "malformed JSON: not UTF-8 at byte " + std::to_string(bad));
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
