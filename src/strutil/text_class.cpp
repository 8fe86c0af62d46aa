#include "strutil/text_class.h"

#include <algorithm>
#include <limits>

namespace FrameUtil {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

struct Number {
    bool negative;
    bool fits;  // its magnitude, in an unsigned long
    unsigned long magnitude;
};

Number Read(std::string_view integer) {
    Number number{!integer.empty() && integer[0] == '-', true, 0};
    if (!integer.empty() && !IsDigit(integer[0])) {
        integer.remove_prefix(1);
    }
    for (const char c : integer) {
        const auto digit = static_cast<unsigned long>(c - '0');
        unsigned long tens = 0;
        if (__builtin_mul_overflow(number.magnitude, 10UL, &tens) ||
            __builtin_add_overflow(tens, digit, &number.magnitude)) {
            number.fits = false;
            break;
        }
    }
    return number;
}

}  // namespace

std::size_t PrintableLength(std::string_view text) noexcept {
    if (IsPrintable(text)) {
        return text.size();
    }
    const auto* const found = std::find_if(text.begin(), text.end(), [](char c) {
        return !IsPrintable({&c, 1});
    });
    return static_cast<std::size_t>(found - text.begin());
}

bool IsPrintable(std::string_view text) noexcept {
    // Without a way out of the loop the compiler looks at many bytes at a time.
    unsigned char outside = 0;
    for (const char c : text) {
        outside |= static_cast<unsigned char>(c - 0x20) > 0x7e - 0x20 ? 1 : 0;
    }
    return outside == 0;
}

bool IsInteger(std::string_view text) noexcept {
    if (text.empty() || (!IsDigit(text[0]) && text[0] != '+' && text[0] != '-')) {
        return false;
    }
    return std::all_of(text.begin() + 1, text.end(), IsDigit);
}

long ToLong(std::string_view integer) noexcept {
    constexpr auto kMost = static_cast<unsigned long>(std::numeric_limits<long>::max());
    const Number number = Read(integer);
    if (number.negative) {
        return number.fits && number.magnitude <= kMost ? -static_cast<long>(number.magnitude)
                                                        : std::numeric_limits<long>::min();
    }
    return number.fits && number.magnitude <= kMost ? static_cast<long>(number.magnitude)
                                                    : std::numeric_limits<long>::max();
}

unsigned long ToUnsignedLong(std::string_view integer) noexcept {
    const Number number = Read(integer);
    if (!number.fits) {
        return std::numeric_limits<unsigned long>::max();
    }
    return number.negative ? -number.magnitude : number.magnitude;
}

}  // namespace FrameUtil
