#include "platform/block_pool.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace FrameUtil {

BlockPool::Chunk BlockPool::Before(const Chunk& chunk) noexcept {
    Chunk before;
    std::memcpy(&before, chunk.begin + chunk.bytes - sizeof before, sizeof before);
    return before;
}

// Takes a chunk and makes it what m_fresh counts off.
bool BlockPool::Refill() noexcept {
    const auto bytes = [this] { return m_stride * m_next_blocks + sizeof(Chunk); };
    void* memory = ::operator new(bytes(), std::nothrow);
    if (memory == nullptr) {
        // Half of it may still be there. Below five blocks it is not worth it.
        if (m_next_blocks < 5) {
            return false;
        }
        m_next_blocks /= 2;
        memory = ::operator new(bytes(), std::nothrow);
        if (memory == nullptr) {
            return false;
        }
    }
    const Chunk chunk{static_cast<char*>(memory), bytes()};
    m_fresh = chunk.begin;
    m_fresh_end = chunk.begin + chunk.bytes - sizeof m_last;
    std::memcpy(m_fresh_end, &m_last, sizeof m_last);
    poison::Close(m_fresh, chunk.bytes - sizeof m_last);
    m_last = chunk;
    Grow();
    return true;
}

void BlockPool::Grow() noexcept {
    if (m_cap == 0) {
        m_next_blocks *= 2;
    } else if (m_cap > m_next_blocks * m_stride / m_block_size) {
        m_next_blocks = std::min(m_next_blocks * 2, m_cap * m_block_size / m_stride);
    }
}

// The pool as it was at first; its last chunk, for Release().
BlockPool::Chunk BlockPool::Empty() noexcept {
    const Chunk last = m_last;
    m_last = {};
    m_free = nullptr;
    m_fresh = nullptr;
    m_fresh_end = nullptr;
    m_next_blocks = FirstBlocks(m_block_size);
    return last;
}

void BlockPool::Release(Chunk chunk) noexcept {
    while (chunk.begin != nullptr) {
        const Chunk before = Before(chunk);
        poison::Open(chunk.begin, chunk.bytes);
        ::operator delete(chunk.begin);
        chunk = before;
    }
}

BlockPoolState BlockPool::State() noexcept {
    const PoolGuard guard(m_lock);
    BlockPoolState state{m_block_size, m_in_use, 0, 0, 0, m_next_blocks};
    for (Chunk chunk = m_last; chunk.begin != nullptr; chunk = Before(chunk)) {
        ++state.chunks;
        state.blocks += (chunk.bytes - sizeof(Chunk)) / m_stride;
        state.bytes += chunk.bytes;
    }
    return state;
}

}  // namespace FrameUtil
