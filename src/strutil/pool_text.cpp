#include "strutil/pool_text.h"

#include <algorithm>
#include <charconv>
#include <new>

#include "frameutil/platform.h"

namespace FrameUtil {

namespace {

// The sign and the digits of the longest number.
constexpr std::size_t kNumber = 20;

template <typename Integer>
void AppendNumber(PoolText& text, Integer number) {
    char* const room = text.Room(kNumber);
    text.Grown(static_cast<std::size_t>(std::to_chars(room, room + kNumber, number).ptr - room));
}

}  // namespace

PoolText& PoolText::Append(long number) {
    AppendNumber(*this, number);
    return *this;
}

PoolText& PoolText::Append(unsigned long number) {
    AppendNumber(*this, number);
    return *this;
}

void PoolText::Reserve(std::size_t more) {
    // The first block fits a short name whole; then it doubles, so that a text of many
    // pieces is copied a few times only.
    constexpr std::size_t kFirst = 64;
    const std::size_t wanted = std::max({m_length + more + 1, m_capacity * 2, kFirst});
    const std::size_t capacity = (wanted + 3) & ~std::size_t{3};
    auto* const block = static_cast<char*>(Malloc(capacity));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (m_text != nullptr) {
        std::memcpy(block, m_text, m_length + 1);
        Drop();
    } else {
        block[0] = '\0';
    }
    m_text = block;
    m_capacity = capacity;
}

void PoolText::Drop() noexcept {
    Free(m_text, m_capacity);
}

}  // namespace FrameUtil
