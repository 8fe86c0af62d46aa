// A text that grows, in blocks of the library's small-block pools.
//
//     PoolText text;
//     text.Append("a=").Append('1');
//     text.c_str();                    // "a=1"
//
// The capacity is a multiple of 4; an empty text that was never anything else has no block.
// Growing throws std::bad_alloc and leaves the text as it was.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace FrameUtil {

/// The sign and the digits of the longest number.
inline constexpr std::size_t kLongestNumber = 20;

class PoolText {
  public:
    /// The first block is to have `first` bytes. The pools' largest, 128, fits most names.
    explicit PoolText(std::size_t first = 128) : m_first(first) {}
    ~PoolText() { Drop(); }
    PoolText(const PoolText&) = delete;
    PoolText& operator=(const PoolText&) = delete;

    bool empty() const { return m_length == 0; }
    std::string_view view() const { return {c_str(), m_length}; }
    const char* c_str() const { return m_text != nullptr ? m_text : ""; }

    /// Back to the text that has no block.
    void Clear() {
        Drop();
        m_text = nullptr;
        m_length = 0;
        m_capacity = 0;
    }

    /// Room for `more` characters and the terminator behind the text. What is written there
    /// counts from Grown() on, which terminates.
    char* Room(std::size_t more) {
        if (m_capacity - m_length <= more) {
            Reserve(more);
        }
        return m_text + m_length;
    }
    void Grown(std::size_t by) {
        m_length += by;
        m_text[m_length] = '\0';
    }

    PoolText& Append(std::string_view more) {
        std::memcpy(Room(more.size()), more.data(), more.size());
        Grown(more.size());
        return *this;
    }
    PoolText& Append(char c) {
        *Room(1) = c;
        Grown(1);
        return *this;
    }

  private:
    void Reserve(std::size_t more);
    void Drop() noexcept;

    char* m_text = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;
    const std::size_t m_first;
};

}  // namespace FrameUtil
