#include <utility>

#include "frameutil/table.h"

namespace FrameUtil {

using refl::Enum::DataTypeEnum;

CFrmTableObject::CFrmTableObject() = default;
CFrmTableObject::CFrmTableObject(CFrmTableObject& other) = default;
CFrmTableObject::~CFrmTableObject() = default;

CFrmTableObject& CFrmTableObject::operator=(const CFrmTableObject& other) {
    if (this != &other) {
        std::vector<DataTypeEnum> types = other.m_vecColTypes;
        CBMSTableObject::operator=(other);
        m_vecColTypes.swap(types);
        m_iCurCol = other.m_iCurCol;
        m_iCurRow = other.m_iCurRow;
        m_iNextCell = other.m_iNextCell;
    }
    return *this;
}

void CFrmTableObject::RemoveAll() {
    ResetCursor();
    RemoveCols();
    CBMSTableObject::RemoveAll();
}

int CFrmTableObject::AddCol(const char* name) {
    if (name == nullptr || !m_vecRows.empty()) {
        return -1;
    }
    std::string free_name = name;
    for (std::size_t col = 0; col < m_vecColNames.size(); ++col) {
        if (m_vecColNames[col] == free_name) {
            free_name += std::to_string(col);
        }
    }
    m_vecColTypes.push_back(DataTypeEnum::DT_EMPTY);
    try {
        AppendCol(std::move(free_name));
    } catch (...) {
        m_vecColTypes.pop_back();
        throw;
    }
    return 0;
}

int CFrmTableObject::SetColType(int col, DataTypeEnum type) {
    if (col < 0 || static_cast<std::size_t>(col) >= m_vecColTypes.size()) {
        return -1;
    }
    m_vecColTypes[static_cast<std::size_t>(col)] = type;
    return 0;
}

DataTypeEnum CFrmTableObject::GetColType(int col) const noexcept {
    return col >= 0 && static_cast<std::size_t>(col) < m_vecColTypes.size()
               ? m_vecColTypes[static_cast<std::size_t>(col)]
               : DataTypeEnum::DT_EMPTY;
}

void CFrmTableObject::ResetCursor() noexcept {
    m_iCurCol = -1;
    m_iCurRow = -1;
    m_iNextCell = -1;
}

// Without a row only the column is selected: there is no cell to be read.
void CFrmTableObject::Select(int col) noexcept {
    m_iCurCol = col;
    m_iNextCell = m_iCurRow < 0 ? -1 : col;
}

std::vector<TEValue>* CFrmTableObject::operator()() noexcept {
    if (m_vecRows.empty()) {
        return nullptr;
    }
    // The row may have been deleted meanwhile, and more before it.
    if (m_iCurRow >= GetRowCount() - 1) {
        ResetCursor();
        return nullptr;
    }
    ++m_iCurRow;
    Select(0);
    return GetRow(m_iCurRow);
}

CFrmTableObject& CFrmTableObject::operator[](unsigned long col) noexcept {
    const std::size_t cols = m_vecColNames.size();
    Select(col < cols ? static_cast<int>(col) : cols == 0 ? 0 : static_cast<int>(cols - 1));
    return *this;
}

CFrmTableObject& CFrmTableObject::operator[](const CStdString& name) noexcept {
    const int col = FindCol(name.c_str());
    Select(col < 0 ? 0 : col);
    return *this;
}

// The conversion comes first: when it throws, neither the target nor the cursor has changed.
template <class Assign>
CFrmTableObject& CFrmTableObject::Read(Assign assign) {
    const std::vector<TEValue>* const row = GetRow(m_iCurRow);
    if (row != nullptr && m_iNextCell >= 0 && static_cast<std::size_t>(m_iNextCell) < row->size()) {
        assign((*row)[static_cast<std::size_t>(m_iNextCell)]);
        ++m_iNextCell;
    } else {
        m_iNextCell = -1;
        m_iCurCol = -1;
    }
    return *this;
}

CFrmTableObject& CFrmTableObject::operator>>(char& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(unsigned char& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(short& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(unsigned short& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(int& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(unsigned int& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(long& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(unsigned long& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(float& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(double& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell; });
}
CFrmTableObject& CFrmTableObject::operator>>(TEValue& value) {
    return Read([&](const TEValue& cell) { value.ReadFrom(cell); });
}
CFrmTableObject& CFrmTableObject::operator>>(refl::CValue& value) {
    return Read([&](const TEValue& cell) { value = refl::CValue(cell); });
}
CFrmTableObject& CFrmTableObject::operator>>(refl::CBinary& value) {
    return Read([&](const TEValue& cell) { value = cell.As_CBinary(); });
}
CFrmTableObject& CFrmTableObject::operator>>(CStdString& value) {
    return Read([&](const TEValue& cell) { value = cell.As_TEString(); });
}
CFrmTableObject& CFrmTableObject::operator>>(refl::CNumeric& value) noexcept {
    return Read([&](const TEValue& cell) { value = cell.As_CNumeric(); });
}
CFrmTableObject& CFrmTableObject::operator>>(std::string& value) {
    return Read([&](const TEValue& cell) { value = cell.As_TEString(); });
}

}  // namespace FrameUtil
