// Columns: their names, and finding one by its name at a cost that does not grow with their
// number.
#include <algorithm>
#include <cstring>

#include "frameutil/table.h"

namespace FrameUtil {

namespace {

template <typename Word>
std::uint64_t Load(const char* from) noexcept {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15;

std::uint64_t Mix(std::uint64_t sum, std::uint64_t word) noexcept {
    sum = (sum ^ word) * kMultiplier;
    return sum ^ sum >> 32;
}

// Most names are short: up to 16 octets take two loads, which overlap in the middle.
std::uint64_t PlaceOf(std::string_view name) noexcept {
    const std::size_t size = name.size();
    const char* const begin = name.data();
    std::uint64_t sum = size;
    if (size >= 8) {
        for (std::size_t at = 8; at + 8 < size; at += 8) {
            sum = Mix(sum, Load<std::uint64_t>(begin + at));
        }
        return Mix(sum + Load<std::uint64_t>(begin) * 3, Load<std::uint64_t>(begin + size - 8));
    }
    if (size >= 4) {
        return Mix(sum, Load<std::uint32_t>(begin) << 32 | Load<std::uint32_t>(begin + size - 4));
    }
    if (size == 0) {
        return 0;
    }
    return Mix(sum, Load<std::uint8_t>(begin) | Load<std::uint8_t>(begin + size / 2) << 8 |
                        Load<std::uint8_t>(begin + size - 1) << 16);
}

bool Equal(const std::string& left, std::string_view right) noexcept {
    const std::size_t size = right.size();
    if (left.size() != size) {
        return false;
    }
    // As above; only longer names are worth the call of a function.
    const char* const a = left.data();
    const char* const b = right.data();
    if (size > 16) {
        return std::memcmp(a, b, size) == 0;
    }
    if (size >= 8) {
        return ((Load<std::uint64_t>(a) ^ Load<std::uint64_t>(b)) |
                (Load<std::uint64_t>(a + size - 8) ^ Load<std::uint64_t>(b + size - 8))) == 0;
    }
    if (size >= 4) {
        return ((Load<std::uint32_t>(a) ^ Load<std::uint32_t>(b)) |
                (Load<std::uint32_t>(a + size - 4) ^ Load<std::uint32_t>(b + size - 4))) == 0;
    }
    return std::equal(a, a + size, b);
}

}  // namespace

CBMSTableObject::CBMSTableObject() = default;

CBMSTableObject::CBMSTableObject(const std::vector<std::string>& colNames) {
    for (const std::string& name : colNames) {
        AppendCol(name);
    }
}

CBMSTableObject::CBMSTableObject(const CBMSTableObject& other) = default;

CBMSTableObject& CBMSTableObject::operator=(const CBMSTableObject& other) {
    if (this != &other) {
        CBMSTableObject copy(other);
        m_strTableName.swap(copy.m_strTableName);
        m_vecColNames.swap(copy.m_vecColNames);
        m_vecRows.swap(copy.m_vecRows);
        m_vecColSlots.swap(copy.m_vecColSlots);
        m_iSortType = copy.m_iSortType;
    }
    return *this;
}

CBMSTableObject::~CBMSTableObject() = default;

int CBMSTableObject::LookUp(std::string_view name) const noexcept {
    if (m_vecColSlots.empty()) {
        return -1;
    }
    const std::size_t mask = m_vecColSlots.size() - 1;
    for (std::size_t slot = PlaceOf(name) & mask;; slot = (slot + 1) & mask) {
        const std::int32_t col = m_vecColSlots[slot];
        if (col < 0 || Equal(m_vecColNames[static_cast<std::size_t>(col)], name)) {
            return col;
        }
    }
}

// Of equal names the first one gets the slot. Slots suffice, so nothing is allocated.
void CBMSTableObject::IndexCols(std::size_t from) noexcept {
    const std::size_t mask = m_vecColSlots.size() - 1;
    for (std::size_t col = from; col < m_vecColNames.size(); ++col) {
        std::size_t slot = PlaceOf(m_vecColNames[col]) & mask;
        while (m_vecColSlots[slot] >= 0 &&
               m_vecColNames[static_cast<std::size_t>(m_vecColSlots[slot])] != m_vecColNames[col]) {
            slot = (slot + 1) & mask;
        }
        if (m_vecColSlots[slot] < 0) {
            m_vecColSlots[slot] = static_cast<std::int32_t>(col);
        }
    }
}

void CBMSTableObject::IndexAllCols() noexcept {
    std::fill(m_vecColSlots.begin(), m_vecColSlots.end(), -1);
    IndexCols(0);
}

void CBMSTableObject::AppendCol(std::string name) {
    // At most every second slot is taken, so that a search ends soon.
    const std::size_t needed = 2 * (m_vecColNames.size() + 1);
    if (needed > m_vecColSlots.size()) {
        const std::size_t size = std::max<std::size_t>(16, 2 * m_vecColSlots.size());
        std::vector<std::int32_t> slots(size, -1);
        m_vecColNames.reserve(size / 2);
        m_vecColSlots.swap(slots);
        IndexCols(0);
    }
    m_vecColNames.push_back(std::move(name));
    IndexCols(m_vecColNames.size() - 1);
}

void CBMSTableObject::RemoveCols() noexcept {
    m_vecColNames.clear();
    m_vecColSlots.clear();
}

int CBMSTableObject::AddCol(const char* name) {
    if (name == nullptr || LookUp(name) >= 0) {
        return -1;
    }
    if (!m_vecRows.empty()) {
        return -2;
    }
    AppendCol(name);
    return 0;
}

int CBMSTableObject::DeleteCol(const char* name) {
    if (!m_vecRows.empty()) {
        return -1;
    }
    const int col = FindCol(name);
    if (col < 0) {
        return -2;
    }
    m_vecColNames.erase(m_vecColNames.begin() + col);
    IndexAllCols();
    return 0;
}

int CBMSTableObject::FindCol(const char* name) const noexcept {
    return name == nullptr ? -1 : LookUp(name);
}

int CBMSTableObject::SetColName(int col, const char* name) {
    if (GetColName(col) == nullptr || name == nullptr) {
        return -1;
    }
    std::string copy(name);  // also when the name given is the one that goes
    m_vecColNames[static_cast<std::size_t>(col)].swap(copy);
    IndexAllCols();
    return 0;
}

const char* CBMSTableObject::GetColName(int col) const noexcept {
    return col >= 0 && static_cast<std::size_t>(col) < m_vecColNames.size()
               ? m_vecColNames[static_cast<std::size_t>(col)].c_str()
               : nullptr;
}

void CBMSTableObject::SetTableName(const char* name) {
    std::string copy(name == nullptr ? "" : name);
    m_strTableName.swap(copy);
}

const std::string& CBMSTableObject::GetTableName() const noexcept {
    return m_strTableName;
}

}  // namespace FrameUtil
