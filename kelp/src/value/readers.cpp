#include <charconv>
#include <cstring>

#include "kelp/value.h"

namespace refl {

namespace {

template <typename T>
T Load(const char* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

}  // namespace

std::string_view CStdBasicTypeConstRefrence::Bytes() const noexcept {
    switch (m_type) {
        case Enum::DT_TEXT:
        case Enum::DT_BINARY:
            if (m_short_length != kLong) {
                return {m_bytes, m_short_length};
            }
            return {Load<const char*>(m_bytes + kNumberAt), Load<std::size_t>(m_bytes + kLengthAt)};
        case Enum::DT_CHAR:
        case Enum::DT_UNSIGNED_CHAR:
            return {m_bytes + kNumberAt, 1};
        default:
            return {};
    }
}

template <typename T>
T CStdBasicTypeConstRefrence::Read() const noexcept {
    const char* const number = m_bytes + kNumberAt;
    switch (m_type) {
        case Enum::DT_CHAR:
            return static_cast<T>(Load<char>(number));
        case Enum::DT_SHORT:
            return static_cast<T>(Load<short>(number));
        case Enum::DT_INT:
            return static_cast<T>(Load<int>(number));
        case Enum::DT_LONG:
        case Enum::DT_LONG_LONG:
            return static_cast<T>(Load<long long>(number));
        case Enum::DT_UNSIGNED_CHAR:
            return static_cast<T>(Load<unsigned char>(number));
        case Enum::DT_UNSIGNED_SHORT:
            return static_cast<T>(Load<unsigned short>(number));
        case Enum::DT_UNSIGNED_INT:
            return static_cast<T>(Load<unsigned int>(number));
        case Enum::DT_UNSIGNED_LONG:
            return static_cast<T>(Load<unsigned long long>(number));
        case Enum::DT_FLOAT:
            return CNumeric(static_cast<double>(Load<float>(number))).As<T>();
        case Enum::DT_DOUBLE:
            return CNumeric(Load<double>(number)).As<T>();
        case Enum::DT_TEXT:
            return CNumeric::FromText(Bytes()).As<T>();
        default:
            return T{};
    }
}

CNumeric CStdBasicTypeConstRefrence::As_CNumeric() const noexcept {
    switch (m_type) {
        case Enum::DT_FLOAT:
        case Enum::DT_DOUBLE:
            return CNumeric(Read<double>());
        case Enum::DT_UNSIGNED_CHAR:
        case Enum::DT_UNSIGNED_SHORT:
        case Enum::DT_UNSIGNED_INT:
        case Enum::DT_UNSIGNED_LONG:
            return CNumeric(Read<unsigned long long>());
        case Enum::DT_TEXT:
            return CNumeric::FromText(Bytes());
        default:
            return CNumeric(Read<long long>());
    }
}

char CStdBasicTypeConstRefrence::As_char() const noexcept {
    return Read<char>();
}
unsigned char CStdBasicTypeConstRefrence::As_unsigned_char() const noexcept {
    return Read<unsigned char>();
}
short CStdBasicTypeConstRefrence::As_short() const noexcept {
    return Read<short>();
}
unsigned short CStdBasicTypeConstRefrence::As_unsigned_short() const noexcept {
    return Read<unsigned short>();
}
int CStdBasicTypeConstRefrence::As_int() const noexcept {
    return Read<int>();
}
unsigned int CStdBasicTypeConstRefrence::As_unsigned_int() const noexcept {
    return Read<unsigned int>();
}
long CStdBasicTypeConstRefrence::As_long() const noexcept {
    return Read<long>();
}
unsigned long CStdBasicTypeConstRefrence::As_unsigned_long() const noexcept {
    return Read<unsigned long>();
}
long long CStdBasicTypeConstRefrence::As_long_long() const noexcept {
    return Read<long long>();
}
unsigned long long CStdBasicTypeConstRefrence::As_unsigned_long_long() const noexcept {
    return Read<unsigned long long>();
}
float CStdBasicTypeConstRefrence::As_float() const noexcept {
    return Read<float>();
}
double CStdBasicTypeConstRefrence::As_double() const noexcept {
    return Read<double>();
}

std::string CStdBasicTypeConstRefrence::As_std_string() const {
    switch (m_type) {
        case Enum::DT_EMPTY:
            return {};
        case Enum::DT_CHAR:
        case Enum::DT_UNSIGNED_CHAR:
        case Enum::DT_TEXT:
        case Enum::DT_BINARY:
            return std::string(Bytes());
        case Enum::DT_FLOAT: {
            // Shortest among floats: 0.1f is "0.1", not the double next to it.
            char text[40];
            const auto end =
                std::to_chars(text, text + sizeof text, Load<float>(m_bytes + kNumberAt));
            return std::string(text, end.ptr);
        }
        default:
            return As_CNumeric().ToString();
    }
}

CBinary CStdBasicTypeConstRefrence::As_CBinary() const {
    switch (m_type) {
        case Enum::DT_CHAR:
        case Enum::DT_UNSIGNED_CHAR:
        case Enum::DT_TEXT:
        case Enum::DT_BINARY: {
            const std::string_view bytes = Bytes();
            return CBinary(bytes.data(), bytes.size());
        }
        default: {
            const std::string text = As_std_string();
            return CBinary(text.data(), text.size());
        }
    }
}

}  // namespace refl
