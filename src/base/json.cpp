#include "base/json.h"

#include <json/reader.h>

#include <charconv>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

namespace FrameUtil {
namespace {

// How many octets the well-formed UTF-8 character takes that `text` begins with; 0: none.
std::size_t CharacterOctets(std::string_view text) {
    const auto octet = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = octet(0);
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC2 || first > 0xF4) {
        return 0;
    }
    // Overlong forms, surrogates and what lies above the last character are told by the
    // second octet.
    const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (octet(1) < least || octet(1) > most) {
        return 0;
    }
    const std::size_t octets = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (std::size_t i = 2; i < octets; ++i) {
        if ((octet(i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    return octets;
}

// The code unit that an escape "\uXXXX" at the beginning of `text` stands for; else 0.
unsigned EscapedUnit(std::string_view text) {
    unsigned unit = 0;
    if (text.size() < 6 || text[0] != '\\' || text[1] != 'u') {
        return 0;
    }
    const char* const end = text.data() + 6;
    return std::from_chars(text.data() + 2, end, unit, 16).ptr == end ? unit : 0;
}

bool IsHighHalf(unsigned unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowHalf(unsigned unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// How many octets the escape takes that `text` begins with, both halves of a character
// together; 0: half a character, which the parser would let through as no UTF-8.
std::size_t EscapeOctets(std::string_view text) {
    constexpr std::size_t kUnit = 6;
    const unsigned unit = EscapedUnit(text);
    if (IsLowHalf(unit)) {
        return 0;
    }
    if (IsHighHalf(unit)) {
        return IsLowHalf(EscapedUnit(text.substr(kUnit))) ? 2 * kUnit : 0;
    }
    return 2;
}

// What must not even be given to the parser, or null.
const char* FaultOf(std::string_view text) {
    if (text.size() > kJsonMostOctets) {
        return "longer than 16 MiB";
    }
    std::size_t values = 1;
    bool quoted = false;
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (quoted && c == '\\') {
            const std::size_t octets = EscapeOctets(text.substr(at));
            if (octets == 0) {
                return "half a character escaped";
            }
            at += octets;
            continue;
        }
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && c == '/') {
            return "a comment, or a '/' outside a text";
        } else if (!quoted && (c == ',' || c == '[' || c == '{') && ++values > kJsonMostValues) {
            return "more than 200000 values";
        }
        const std::size_t octets = CharacterOctets(text.substr(at));
        if (octets == 0) {
            return "not UTF-8";
        }
        at += octets;
    }
    return nullptr;
}

Json::CharReaderBuilder StrictBuilder() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false;  // a bare value is one; who wants an object asks for it
    builder["stackLimit"] = kJsonMostLevels;
    return builder;
}

// Calls `read`, which may throw what the parser's values throw.
template <class Read>
auto Guarded(const LocationInfo& where, const char* what, Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        LogProcess::Error(0, std::string("json exception:") + e.what() + what, where);
    } catch (...) {
        LogProcess::Error(0, std::string("json exception unknow what ") + what, where);
    }
    return {};
}

}  // namespace

bool ParseJson(std::string_view text, Json::Value& value, std::string* why) {
    value = Json::Value();
    std::string reason;
    if (const char* const fault = FaultOf(text); fault != nullptr) {
        reason = fault;
    } else {
        try {
            const std::unique_ptr<Json::CharReader> reader(StrictBuilder().newCharReader());
            if (reader->parse(text.data(), text.data() + text.size(), &value, &reason)) {
                return true;
            }
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& e) {
            reason = e.what();  // too many levels are thrown, not returned
        }
        value = Json::Value();
    }
    if (why != nullptr) {
        *why = reason;
    }
    return false;
}

const Json::Value* JsonMember(const Json::Value& value, const char* name) {
    return value.isObject() ? value.find(name, name + std::strlen(name)) : nullptr;
}

std::string JsonText(const Json::Value& value, const LocationInfo& where, const char* what) {
    return Guarded(where, what, [&] { return value.asString(); });
}

int JsonInt(const Json::Value& value, const LocationInfo& where, const char* what) {
    return Guarded(where, what, [&] { return value.asInt(); });
}

}  // namespace FrameUtil
