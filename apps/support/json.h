// support/json.h - JSON that comes from outside.
//
//     std::string why;
//     std::optional<Json::Value> value = app::ParseJson(text, &why);
//     if (!value) return Fail("commands.json: " + why);
//     std::optional<std::string> name = app::JsonText(*value, "name");
//
// The parser is strict: one document and nothing behind it, no duplicate member names,
// no comments, no control characters or escaped halves of characters in texts, valid UTF-8, at
// most 64 levels unless told otherwise. Reading a member never throws, whatever stands there.
//
// Thread rule: thread-safe.
#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace app {

inline constexpr std::size_t kJsonLimitBytes = std::size_t{1} << 20;
inline constexpr int kJsonLimitDepth = 64;

/// What a document may have at most.
struct JsonLimits {
    std::size_t bytes = kJsonLimitBytes;
    int depth = kJsonLimitDepth;
};

/// The value that `text` spells, scalars included; nothing when it is no such JSON or
/// exceeds `limits`, with one line in `*why` saying what and where.
std::optional<Json::Value> ParseJson(std::string_view text, std::string* why,
                                     const JsonLimits& limits = {});

/// The text of a number of a parsed document as it stood there: 1e3 and 1000 are the same
/// number, but not the same text. `document` is what ParseJson read `number` from.
std::string_view JsonNumberText(const Json::Value& number, std::string_view document);

/// The line, from 1, in which a value of a parsed document begins; likewise.
std::size_t JsonLine(const Json::Value& value, std::string_view document);

/// The member `name` of `object` if it is a text.
std::optional<std::string> JsonText(const Json::Value& object, const char* name);
/// The member `name` of `object` if it is an integer from `least` to `most`.
std::optional<std::int64_t> JsonInteger(const Json::Value& object, const char* name,
                                        std::int64_t least, std::int64_t most);
/// The member `name` of `object`, or null when `object` is none or has no such member.
const Json::Value* JsonMember(const Json::Value& object, const char* name);

}  // namespace app
