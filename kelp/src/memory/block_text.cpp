#include "kelp/block_text.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace kelp {

namespace {

// Of a block for so many octets and the zero behind them.
std::size_t CapacityFor(std::size_t size) {
    constexpr std::size_t kGranule = 8;  // what blocks are rounded up to anyway
    if (size > std::numeric_limits<std::uint32_t>::max() - 2 * kGranule) {
        throw std::length_error("block text: too long");
    }
    return (size + kGranule) / kGranule * kGranule;
}

}  // namespace

void BlockText::assign(std::string_view text) {
    if (text.size() < capacity_) {
        if (!text.empty()) {  // an empty view may be a null pointer
            std::memmove(octets_, text.data(), text.size());
        }
    } else {
        if (text.empty()) {
            octets_ = const_cast<char*>(kNone);
            size_ = 0;
            return;
        }
        const std::size_t capacity = CapacityFor(text.size());
        char* const octets = static_cast<char*>(AllocateBlock(capacity));
        std::memcpy(octets, text.data(), text.size());
        Release();
        octets_ = octets;
        capacity_ = static_cast<std::uint32_t>(capacity);
    }
    size_ = static_cast<std::uint32_t>(text.size());
    octets_[size_] = '\0';
}

char* BlockText::Overwrite(std::size_t size) {
    if (size >= capacity_) {
        Release();
        octets_ = const_cast<char*>(kNone);
        size_ = 0;
        if (size == 0) {
            return octets_;
        }
        const std::size_t capacity = CapacityFor(size);
        octets_ = static_cast<char*>(AllocateBlock(capacity));
        capacity_ = static_cast<std::uint32_t>(capacity);
    }
    size_ = static_cast<std::uint32_t>(size);
    octets_[size_] = '\0';
    return octets_;
}

void BlockText::clear() noexcept {
    if (capacity_ == 0) {
        octets_ = const_cast<char*>(kNone);
    } else {
        *octets_ = '\0';
    }
    size_ = 0;
}

}  // namespace kelp
