// kelp/block_text.h - octets in a pooled block: a small string for objects that come in
// millions.
//
// Two words where std::string has four, and the octets in blocks of their size instead
// of on the heap, so that making and dropping a million texts costs no heap's book-keeping
// and reads memory in order.
//
//     kelp::BlockText text("eth0");
//     text.assign("a longer name");
//     use(text.c_str());
//
// Any octets, zeros included; a zero octet that is not counted stands behind them.
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "kelp/blocks.h"
#include "kelp/export.h"

namespace kelp {

class KELP_API BlockText {
  public:
    BlockText() noexcept = default;
    /// A copy of `text`. May throw std::bad_alloc, and std::length_error from 4 GiB - 16 on.
    explicit BlockText(std::string_view text) { assign(text); }
    BlockText(const BlockText& other) { *this = other; }
    BlockText(BlockText&& other) noexcept { Swap(other); }
    BlockText& operator=(const BlockText& other) {
        if (this == &other) {
            return *this;
        }
        if (other.capacity_ == 0) {
            Release();
            octets_ = other.octets_;
            size_ = other.size_;
        } else {
            assign(other.view());
        }
        return *this;
    }
    BlockText& operator=(BlockText&& other) noexcept {
        Swap(other);
        return *this;
    }
    ~BlockText() { Release(); }

    /// A text that refers to `literal`, which lives as long as the process, and owns
    /// nothing. Copies of it refer to the literal as well.
    static BlockText Literal(const char* literal) noexcept {
        BlockText text;
        text.octets_ = const_cast<char*>(literal);
        text.size_ = static_cast<std::uint32_t>(std::string_view(literal).size());
        return text;
    }

    /// Takes a copy of `text`, which may be a part of this one. Unchanged when it throws,
    /// as the constructor does.
    void assign(std::string_view text);
    /// Becomes `size` octets of no particular value and returns the first, for the caller
    /// to write. Throws as assign() does, and then the old octets are lost.
    char* Overwrite(std::size_t size);
    /// Drops the octets; the block stays for the next ones.
    void clear() noexcept;

    std::string_view view() const { return {octets_, size_}; }
    const char* c_str() const { return octets_; }
    /// The octets for overwriting in place. REQUIRES: the text is empty or no literal.
    char* data() { return octets_; }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

  private:
    void Release() noexcept {
        if (capacity_ != 0) {
            FreeBlock(octets_, capacity_);
            capacity_ = 0;
        }
    }
    void Swap(BlockText& other) noexcept {
        std::swap(octets_, other.octets_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    static constexpr const char* kNone = "";

    char* octets_ = const_cast<char*>(kNone);
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;  // of the block; 0: the octets are a literal's
};

}  // namespace kelp
