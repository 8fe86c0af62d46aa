#include "kelpctl/arguments.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <optional>
#include <utility>

#include "support/json.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsName(std::string_view text) {
    const auto letter = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; };
    return !text.empty() && (letter(text[0]) || text[0] == '_') &&
           std::all_of(text.begin(), text.end(),
                       [&](char c) { return letter(c) || IsDigit(c) || c == '_' || c == '-'; });
}

std::string_view WithoutSign(std::string_view text) {
    return !text.empty() && text[0] == '-' ? text.substr(1) : text;
}

// Digits that a number would be written with: 007 and 00 are codes, not numbers.
bool LooksLikeInteger(std::string_view text) {
    const std::string_view digits = WithoutSign(text);
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), IsDigit) &&
           (digits.size() == 1 || digits[0] != '0');
}

bool LooksLikeDouble(std::string_view text) {
    const std::string_view digits = WithoutSign(text);
    const std::size_t point = digits.find('.');
    return point != std::string_view::npos && point + 1 < digits.size() &&
           LooksLikeInteger(digits.substr(0, point)) && IsDigit(digits[point + 1]) &&
           app::ParseDouble(text).has_value();
}

std::optional<std::int32_t> Integer32(std::string_view text) {
    const auto value = app::ParseInteger(text, std::numeric_limits<std::int32_t>::min(),
                                         std::numeric_limits<std::int32_t>::max());
    return value ? std::optional(static_cast<std::int32_t>(*value)) : std::nullopt;
}

std::optional<ArgumentValue> Refuse(std::string& why, std::string reason) {
    why = std::move(reason);
    return std::nullopt;
}

std::string TooLarge(std::string_view number) {
    return std::string(number) + " does not fit an integer of 32 bits; write it with a decimal " +
           "point for a double, or as a JSON text";
}

// What a command carries of a text ends at its first zero octet.
std::optional<ArgumentValue> Text(std::string text, std::string& why) {
    if (text.find('\0') != std::string::npos) {
        return Refuse(why, "a text with a zero octet cannot be carried");
    }
    return text;
}

std::optional<ArgumentValue> FromLook(std::string_view text, std::string& why) {
    if (LooksLikeInteger(text)) {
        const auto value = Integer32(text);
        return value ? std::optional<ArgumentValue>(*value) : Refuse(why, TooLarge(text));
    }
    if (LooksLikeDouble(text)) {
        return *app::ParseDouble(text);
    }
    return Text(std::string(text), why);
}

std::optional<ArgumentValue> FromJson(const Json::Value& value, std::string_view document,
                                      std::string& why) {
    if (value.isString()) {
        return Text(value.asString(), why);
    }
    if (value.isBool()) {
        return value.asBool() ? 1 : 0;
    }
    if (value.isNumeric()) {
        const std::string_view text = app::JsonNumberText(value, document);
        if (LooksLikeInteger(text)) {
            return FromLook(text, why);
        }
        const auto number = app::ParseDouble(text);
        return number ? std::optional<ArgumentValue>(*number)
                      : Refuse(why, std::string(text) + " is not a finite double");
    }
    return Refuse(why, "neither a text, a number, true nor false");
}

bool Add(std::string name, std::optional<ArgumentValue> value, Arguments& arguments,
         std::string& why) {
    const std::string who = "argument '" + app::ShowText(name) + "': ";
    if (!value) {
        why = who + why;
        return false;
    }
    if (!IsName(name)) {
        why = who + "a name is a letter or '_', then letters, digits, '_' and '-'";
        return false;
    }
    if (std::any_of(arguments.begin(), arguments.end(),
                    [&](const Argument& there) { return there.name == name; })) {
        why = who + "given twice";
        return false;
    }
    arguments.push_back({std::move(name), *std::move(value)});
    return true;
}

}  // namespace

bool AddPair(std::string_view pair, Arguments& arguments, std::string& why) {
    const std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos || equals == 0 || pair.substr(0, 2) == ":=") {
        why = "malformed argument '" + app::ShowText(pair) + "': expected key=value or key:=json";
        return false;
    }
    const std::string_view value = pair.substr(equals + 1);
    if (pair[equals - 1] != ':') {
        return Add(std::string(pair.substr(0, equals)), FromLook(value, why), arguments, why);
    }
    std::string name(pair.substr(0, equals - 1));
    const auto json = app::ParseJson(value, &why);
    return Add(std::move(name), json ? FromJson(*json, value, why) : std::nullopt, arguments, why);
}

bool AddObject(std::string_view text, Arguments& arguments, std::string& why) {
    const auto object = app::ParseJson(text, &why);
    if (!object) {
        return false;
    }
    if (!object->isObject()) {
        why = "not a JSON object";
        return false;
    }
    Arguments all = arguments;
    for (const std::string& name : object->getMemberNames()) {
        if (!Add(name, FromJson((*object)[name], text, why), all, why)) {
            return false;
        }
    }
    arguments = std::move(all);
    return true;
}

void FillRequest(const Arguments& arguments, std::int32_t user_id, FrameUtil::CParaSet& request) {
    request["##UserID"] = user_id;
    if (arguments.empty()) {
        return;
    }
    request["##TableCount"] = 1;
    request["##RowCount"] = 1;
    for (const Argument& argument : arguments) {
        std::visit([&](const auto& value) { request[argument.name] = value; }, argument.value);
    }
}

}  // namespace kelpctl
