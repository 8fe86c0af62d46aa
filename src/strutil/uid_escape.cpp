#include "strutil/uid_escape.h"

#include <algorithm>
#include <cstring>

#include "strutil/plain_run.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kMostEscaped = 255;

bool IsEscaped(std::string_view value) {
    if (2 * value.size() <= kMostEscaped || value.size() > kMostEscaped) {
        return value.size() <= kMostEscaped;
    }
    const auto counted = std::count_if(value.begin(), value.end(),
                                       [](char c) { return c == ',' || c == '=' || c == '\\'; });
    return value.size() + static_cast<std::size_t>(counted) <= kMostEscaped;
}

}  // namespace

char* WriteEscaped(std::string_view value, char separator, char* out) {
    if (!IsEscaped(value)) {
        std::memcpy(out, value.data(), value.size());
        return out + value.size();
    }
    const PlainRun run(separator, '=', '\\');
    const char* in = value.data();
    const char* const end = in + value.size();
    for (;;) {
        const std::size_t plain = run.Copy(in, end, out);
        in += plain;
        out += plain;
        if (in == end) {
            return out;
        }
        *out++ = '\\';
        *out++ = *in == separator ? 'c' : *in == '=' ? 'e' : '\\';
        ++in;
    }
}

std::size_t EscapedRoom(std::string_view value) noexcept {
    return value.size() > kMostEscaped ? value.size() : 2 * value.size();
}

}  // namespace FrameUtil
