#include "strutil/uid_escape.h"

#include <algorithm>

namespace FrameUtil {

namespace {

constexpr std::size_t kMostEscaped = 255;

bool IsEscaped(std::string_view value) {
    if (value.size() > kMostEscaped) {
        return false;
    }
    const auto counted = std::count_if(value.begin(), value.end(),
                                       [](char c) { return c == ',' || c == '=' || c == '\\'; });
    return value.size() + static_cast<std::size_t>(counted) <= kMostEscaped;
}

}  // namespace

void AppendEscaped(PoolText& text, std::string_view value, char separator) {
    if (!IsEscaped(value)) {
        text.Append(value);
        return;
    }
    char* const begin = text.Room(2 * value.size());
    char* out = begin;
    for (const char c : value) {
        if (c == separator) {
            *out++ = '\\';
            *out++ = 'c';
        } else if (c == '=') {
            *out++ = '\\';
            *out++ = 'e';
        } else {
            if (c == '\\') {
                *out++ = '\\';
            }
            *out++ = c;
        }
    }
    text.Grown(static_cast<std::size_t>(out - begin));
}

std::size_t EscapedRoom(std::string_view value) noexcept {
    return value.size() > kMostEscaped ? value.size() : 2 * value.size();
}

}  // namespace FrameUtil
