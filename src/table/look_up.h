// Looking a column up by its name, for what does so in every cell access.
#pragma once

#include <bit>
#include <cstring>
#include <string_view>

#include "frameutil/table.h"

namespace FrameUtil {

namespace table {

template <typename Word>
Word LoadWord(const char* from) noexcept {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// The first and the last octets of a name, which overlap in names of 4 to 16 octets: these
// are known by them and their size.
inline constexpr std::size_t kKnownByKey = 16;

template <class Slot>
void FillKey(Slot& key, std::string_view name) noexcept {
    const std::size_t size = name.size();
    const char* const begin = name.data();
    key.size = static_cast<std::uint32_t>(size);
    if (size >= 8) {
        key.head = LoadWord<std::uint64_t>(begin);
        key.tail = LoadWord<std::uint64_t>(begin + size - 8);
    } else if (size >= 4) {
        key.head = LoadWord<std::uint32_t>(begin);
        key.tail = LoadWord<std::uint32_t>(begin + size - 4);
    } else if (size > 0) {
        key.head = LoadWord<std::uint8_t>(begin) | LoadWord<std::uint8_t>(begin + size / 2) << 8 |
                   LoadWord<std::uint8_t>(begin + size - 1) << 16;
    }
}

}  // namespace table

inline std::size_t CBMSTableObject::PlaceOf(const ColSlot& key,
                                            std::string_view name) const noexcept {
    std::uint64_t sum = (key.head ^ std::rotl(key.tail, 29)) + key.size;
    for (std::size_t at = 8; at + 8 < name.size(); at += 8) {
        sum = (sum ^ table::LoadWord<std::uint64_t>(name.data() + at)) * 0x9E3779B97F4A7C15;
        sum ^= sum >> 32;
    }
    // The highest bits of a product depend on all bits of both factors.
    return static_cast<std::size_t>(sum * m_iColFactor >> m_iColShift);
}

// Nearly every name that a column has is short and in its own place.
inline int CBMSTableObject::LookUp(std::string_view name) const noexcept {
    if (m_vecColSlots.empty()) {
        return -1;
    }
    ColSlot key;
    table::FillKey(key, name);
    const std::size_t place = PlaceOf(key, name);
    const ColSlot& slot = m_vecColSlots[place];
    if (((slot.head ^ key.head) | (slot.tail ^ key.tail) | (slot.size ^ key.size)) == 0 &&
        name.size() <= table::kKnownByKey) {
        return slot.col;  // -1 of a free slot, which is like one of the empty name
    }
    return LookUpFrom(place, key, name);
}

}  // namespace FrameUtil
