#include "kelp/value.h"

namespace refl {

static_assert(sizeof(CValue) == 24 && sizeof(TEValue) == 24);
static_assert(std::is_nothrow_move_constructible_v<TEValue> &&
              std::is_nothrow_move_assignable_v<TEValue>);

// The shared part of the object says already that the bytes are on the free store.
void CValue::CopyLong(std::string_view bytes) {
    char* const block = new char[bytes.size()];
    const std::size_t length = bytes.size();
    std::memcpy(block, bytes.data(), length);
    std::memcpy(m_bytes + kNumberAt, &block, sizeof block);
    std::memcpy(m_bytes + kLengthAt, &length, sizeof length);
}

CValue::CValue(Enum::DataTypeEnum type, std::string_view bytes) {
    if (bytes.size() > kShortMax) {
        CopyLong(bytes);
        m_short_length = kLong;
    } else if (!bytes.empty()) {
        std::memcpy(m_bytes, bytes.data(), bytes.size());
        m_short_length = static_cast<std::uint8_t>(bytes.size());
    }
    m_type = static_cast<std::uint8_t>(type);
}

void CValue::Release() noexcept {
    char* block = nullptr;
    std::memcpy(&block, m_bytes + kNumberAt, sizeof block);
    delete[] block;
}

void CValue::ReadFrom(const CValue& other) {
    if (this != &other) {
        *this = CValue(other);
    }
}

}  // namespace refl

TEValue::TEValue(const refl::CNumeric& number) noexcept {
    switch (number.GetKind()) {
        case refl::CNumeric::Kind::kSigned:
            *this = TEValue(number.As<long long>());
            break;
        case refl::CNumeric::Kind::kUnsigned:
            *this = TEValue(number.As<unsigned long long>());
            break;
        case refl::CNumeric::Kind::kDouble:
            *this = TEValue(number.As<double>());
            break;
    }
}
