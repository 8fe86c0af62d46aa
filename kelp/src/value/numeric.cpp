#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "kelp/value.h"

namespace refl {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The floating number that [begin, end) is known to spell.
double ReadDouble(const char* begin, const char* end, bool negative) {
    double value = 0;
    if (std::from_chars(begin, end, value).ec == std::errc::result_out_of_range) {
        // Too large or too small, which from_chars keeps to itself: an exponent decides, and
        // without one only digits before the point can have gone out of range.
        const char* const exponent =
            std::find_if(begin, end, [](char c) { return c == 'e' || c == 'E'; });
        const char* const first = std::find_if(begin, exponent, [](char c) { return c > '0'; });
        const char* const point = std::find(begin, exponent, '.');
        const bool small =
            exponent != end && exponent + 1 != end ? exponent[1] == '-' : first > point;
        value = small ? 0.0 : std::numeric_limits<double>::max();
    }
    return negative ? -value : value;
}

// A floating number as a whole one: nearest value of the type, 0 for not-a-number.
template <typename T>
T Saturate(double value) {
    using Limits = std::numeric_limits<T>;
    // Both bounds are powers of two or 0 and so exact; the upper one is outside the type.
    constexpr double kLow = static_cast<double>(Limits::min());
    constexpr double kBeyond = 2.0 * static_cast<double>(T{1} << (Limits::digits - 1));
    if (!(value == value)) {
        return 0;
    }
    if (value <= kLow) {
        return Limits::min();
    }
    return value >= kBeyond ? Limits::max() : static_cast<T>(value);
}

float Narrow(double value) {
    constexpr double kMost = std::numeric_limits<float>::max();
    const bool finite = value - value == 0.0;
    return static_cast<float>(finite ? std::clamp(value, -kMost, kMost) : value);
}

template <typename T>
std::string Print(T value) {
    char text[40];  // the longest double has 24 characters
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}

}  // namespace

CNumeric CNumeric::FromText(std::string_view text) noexcept {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && (*at == ' ' || (*at >= '\t' && *at <= '\r'))) {
        ++at;
    }
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) {
        ++at;
    }
    const char* stop = std::find_if_not(at, end, IsDigit);
    bool some = stop != at;
    bool whole = true;
    if (stop != end && *stop == '.') {
        const char* const fraction = stop + 1;
        stop = std::find_if_not(fraction, end, IsDigit);
        some = some || stop != fraction;
        whole = stop == fraction;  // "5." is a whole number
    }
    if (!some) {
        return CNumeric();
    }
    if (stop != end && (*stop == 'e' || *stop == 'E')) {
        const char* exponent = stop + 1;
        if (exponent != end && (*exponent == '-' || *exponent == '+')) {
            ++exponent;
        }
        if (exponent != end && IsDigit(*exponent)) {
            whole = false;
            stop = std::find_if_not(exponent, end, IsDigit);
        }
    }
    if (whole) {
        unsigned long long magnitude = 0;
        constexpr auto kMost =
            static_cast<unsigned long long>(std::numeric_limits<long long>::max());
        if (std::from_chars(at, stop, magnitude).ec == std::errc()) {
            if (!negative) {
                return magnitude > kMost ? CNumeric(magnitude)
                                         : CNumeric(static_cast<long long>(magnitude));
            }
            if (magnitude <= kMost + 1) {
                return CNumeric(static_cast<long long>(0 - magnitude));
            }
        }
    }
    return CNumeric(ReadDouble(at, stop, negative));
}

template <typename T>
T CNumeric::As() const noexcept {
    switch (m_kind) {
        case Kind::kSigned:
            return static_cast<T>(m_signed);
        case Kind::kUnsigned:
            return static_cast<T>(m_unsigned);
        case Kind::kDouble:
            break;
    }
    if constexpr (std::is_same_v<T, double>) {
        return m_double;
    } else if constexpr (std::is_same_v<T, float>) {
        return Narrow(m_double);
    } else {
        return Saturate<T>(m_double);
    }
}

template KELP_API char CNumeric::As<char>() const noexcept;
template KELP_API signed char CNumeric::As<signed char>() const noexcept;
template KELP_API unsigned char CNumeric::As<unsigned char>() const noexcept;
template KELP_API short CNumeric::As<short>() const noexcept;
template KELP_API unsigned short CNumeric::As<unsigned short>() const noexcept;
template KELP_API int CNumeric::As<int>() const noexcept;
template KELP_API unsigned int CNumeric::As<unsigned int>() const noexcept;
template KELP_API long CNumeric::As<long>() const noexcept;
template KELP_API unsigned long CNumeric::As<unsigned long>() const noexcept;
template KELP_API long long CNumeric::As<long long>() const noexcept;
template KELP_API unsigned long long CNumeric::As<unsigned long long>() const noexcept;
template KELP_API float CNumeric::As<float>() const noexcept;
template KELP_API double CNumeric::As<double>() const noexcept;

std::string CNumeric::ToString() const {
    switch (m_kind) {
        case Kind::kSigned:
            return Print(m_signed);
        case Kind::kUnsigned:
            return Print(m_unsigned);
        case Kind::kDouble:
            break;
    }
    return Print(m_double);
}

bool operator==(const CNumeric& a, const CNumeric& b) noexcept {
    if (a.m_kind != b.m_kind) {
        return false;
    }
    switch (a.m_kind) {
        case CNumeric::Kind::kSigned:
            return a.m_signed == b.m_signed;
        case CNumeric::Kind::kUnsigned:
            return a.m_unsigned == b.m_unsigned;
        case CNumeric::Kind::kDouble:
            break;
    }
    return a.m_double == b.m_double;
}

}  // namespace refl
