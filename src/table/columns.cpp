// Columns: their names, and finding one by its name at a cost that does not grow with their
// number.
#include <algorithm>
#include <bit>
#include <utility>

#include "frameutil/table.h"
#include "table/look_up.h"

namespace FrameUtil {

namespace {

// Up to so many columns, factors are tried until all have places of their own.
constexpr std::size_t kManyCols = 64;

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
        m_iColFactor = copy.m_iColFactor;
        m_iColShift = copy.m_iColShift;
        m_iSortType = copy.m_iSortType;
    }
    return *this;
}

CBMSTableObject::~CBMSTableObject() = default;

int CBMSTableObject::LookUpFrom(std::size_t place, const ColSlot& key,
                                std::string_view name) const noexcept {
    const std::size_t mask = m_vecColSlots.size() - 1;
    for (std::size_t at = place; m_vecColSlots[at].col >= 0; at = (at + 1) & mask) {
        const ColSlot& slot = m_vecColSlots[at];
        if (slot.head == key.head && slot.tail == key.tail && slot.size == key.size &&
            m_vecColNames[static_cast<std::size_t>(slot.col)] == name) {
            return slot.col;
        }
    }
    return -1;
}

// Of equal names the first one gets a slot. Returns whether the column has its own place.
bool CBMSTableObject::IndexCol(std::size_t col) noexcept {
    const std::string& name = m_vecColNames[col];
    ColSlot key;
    table::FillKey(key, name);
    const std::size_t mask = m_vecColSlots.size() - 1;
    const std::size_t place = PlaceOf(key, name);
    std::size_t at = place;
    while (m_vecColSlots[at].col >= 0) {
        if (m_vecColNames[static_cast<std::size_t>(m_vecColSlots[at].col)] == name) {
            return true;
        }
        at = (at + 1) & mask;
    }
    key.col = static_cast<std::int32_t>(col);
    m_vecColSlots[at] = key;
    return at == place;
}

// Slots suffice, so nothing is allocated. A few factors are tried: one that gives every name
// a place of its own makes a look-up a single comparison.
void CBMSTableObject::IndexCols() noexcept {
    constexpr int kTries = 16;
    std::size_t shared = 1;
    for (int round = 0; round < kTries && shared != 0; ++round) {
        m_iColFactor = m_iColFactor * 0xD1342543DE82EF95 + 0x9E3779B97F4A7C14;
        std::fill(m_vecColSlots.begin(), m_vecColSlots.end(), ColSlot());
        shared = 0;
        for (std::size_t col = 0; col < m_vecColNames.size(); ++col) {
            shared += IndexCol(col) ? 0 : 1;
        }
        if (m_vecColNames.size() > kManyCols) {
            break;  // of many some always share
        }
    }
}

void CBMSTableObject::AppendCol(std::string name) {
    const std::size_t cols = m_vecColNames.size() + 1;
    if (2 * cols > m_vecColSlots.size()) {
        std::vector<ColSlot> slots(std::max<std::size_t>(16, 4 * m_vecColSlots.size()));
        m_vecColNames.reserve(slots.size() / 2);
        m_vecColSlots.swap(slots);
        m_iColShift = static_cast<unsigned>(std::countl_zero(m_vecColSlots.size() - 1));
        IndexCols();
    }
    m_vecColNames.push_back(std::move(name));
    if (!IndexCol(cols - 1) && cols <= kManyCols) {
        IndexCols();
    }
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
    IndexCols();
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
    IndexCols();
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
