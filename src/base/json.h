// JSON that comes from other processes: bounded before it takes memory, and read without
// surprises.
//
//     Json::Value answer;
//     if (!ParseJson(body, answer)) ...
//     if (const Json::Value* groups = JsonMember(answer, "groupmap"); groups != nullptr) ...
//     const std::string name = JsonText(*groups, "name", where);
//
// Strict: one value and nothing behind it but blanks, valid UTF-8, no comments, no member
// twice, at most 64 levels, 16 MiB and 200,000 values. A value takes some hundred octets in
// memory, so it is the values that have to be counted.
//
// Thread rule: thread-safe, with one thread at a time for each value.
#pragma once

#include <json/value.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "kelp/log.h"

namespace FrameUtil {

inline constexpr std::size_t kJsonMostOctets = std::size_t{16} << 20;
inline constexpr std::size_t kJsonMostValues = 200000;
inline constexpr int kJsonMostLevels = 64;

/// False when `text` is no such JSON, with the reason in `*why`; `value` is then null.
/// Throws std::bad_alloc only.
bool ParseJson(std::string_view text, Json::Value& value, std::string* why = nullptr);

/// The member `name` of `value`; null when that is no object or has none.
const Json::Value* JsonMember(const Json::Value& value, const char* name);

/// `value` as text: a number's digits, "true", and "" for null. A list or an object has no
/// text: that is logged as an error with code 0 at `where`, "json exception:", the reason and
/// `what`, and the result is "".
std::string JsonText(const Json::Value& value, const LocationInfo& where, const char* what = "");
/// `value` as a number, likewise: 0 when it has none that fits.
int JsonInt(const Json::Value& value, const LocationInfo& where, const char* what = "");

}  // namespace FrameUtil
