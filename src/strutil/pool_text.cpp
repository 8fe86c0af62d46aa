#include "strutil/pool_text.h"

#include <algorithm>
#include <new>

#include "frameutil/platform.h"

namespace FrameUtil {

void PoolText::Reserve(std::size_t more) {
    // A text that outgrows its first block is made of many pieces: it gets much more, so that
    // it is not copied often.
    const std::size_t wanted = std::max({m_length + more + 1, m_capacity * 4, m_first});
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
