#include "support/utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace app {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Marks that combine with the character before them, and characters without width.
constexpr Range kZeroWidth[] = {
    {0x0300, 0x036f}, {0x0483, 0x0489},   {0x0591, 0x05bd},   {0x0610, 0x061a}, {0x064b, 0x065f},
    {0x06d6, 0x06dc}, {0x0900, 0x0902},   {0x093c, 0x093c},   {0x0941, 0x0948}, {0x0e31, 0x0e31},
    {0x0e34, 0x0e3a}, {0x0e47, 0x0e4e},   {0x1ab0, 0x1aff},   {0x1dc0, 0x1dff}, {0x200b, 0x200d},
    {0x20d0, 0x20ff}, {0x302a, 0x302d},   {0x3099, 0x309a},   {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f},
    {0xfeff, 0xfeff}, {0x1f3fb, 0x1f3ff}, {0xe0100, 0xe01ef},
};

// Characters of two columns: Unicode's East Asian Wide and Fullwidth, by block.
constexpr Range kWide[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2e80, 0x303e},   {0x3041, 0x33ff},
    {0x3400, 0x4dbf},   {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f},
    {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},
    {0xffe0, 0xffe6},   {0x16fe0, 0x18aff}, {0x1b000, 0x1b2ff}, {0x1f300, 0x1f64f},
    {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd},
};

// Characters that reorder what stands around them, and separators of lines.
constexpr Range kTreacherous[] = {
    {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069}, {0xfff9, 0xfffb}};

template <std::size_t kCount>
bool In(const Range (&ranges)[kCount], char32_t code) {
    const Range* after = std::upper_bound(std::begin(ranges), std::end(ranges), code,
                                          [](char32_t c, const Range& r) { return c < r.first; });
    return after != std::begin(ranges) && code <= std::prev(after)->last;
}

bool IsControl(char32_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0);
}

std::string Escape(char32_t code) {
    switch (code) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), code < 0x100 ? "\\x%02x" : "\\u%04x",
                  static_cast<unsigned>(code));
    return text.data();
}

}  // namespace

Utf8Char FirstUtf8(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty()) {
        return {0, 0};
    }
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < bytes) {
        return {0, 0};
    }
    char32_t code = lead & (0xff >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return {0, 0};
        }
        code = code << 6 | (byte(i) & 0x3f);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kLeast[bytes] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) {
        return {0, 0};
    }
    return {code, bytes};
}

std::size_t InvalidUtf8At(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t bytes = FirstUtf8(text.substr(at)).bytes;
        if (bytes == 0) {
            return at;
        }
        at += bytes;
    }
    return std::string_view::npos;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const Utf8Char c = FirstUtf8(text);
        width += In(kZeroWidth, c.code) ? 0 : In(kWide, c.code) ? 2 : 1;
        text.remove_prefix(std::max<std::size_t>(c.bytes, 1));
    }
    return width;
}

bool ActsOnTerminal(char32_t code) {
    return IsControl(code) || In(kTreacherous, code);
}

std::string ShowText(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const Utf8Char c = FirstUtf8(text);
        if (c.bytes == 0) {
            shown += Escape(static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        if (c.code == '\\') {
            shown += "\\\\";
        } else if (ActsOnTerminal(c.code)) {
            shown += Escape(c.code);
        } else {
            shown.append(text, 0, c.bytes);
        }
        text.remove_prefix(c.bytes);
    }
    return shown;
}

}  // namespace app
