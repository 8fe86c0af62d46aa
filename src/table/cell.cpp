#include "table/cell.h"

namespace FrameUtil::table {

constinit const TEValue kEmptyCell;

namespace {

using refl::Enum::DataTypeEnum;

// Whether the octets of the cell are its text form.
bool IsOctets(const TEValue& cell) noexcept {
    switch (cell.GetType()) {
        case DataTypeEnum::DT_EMPTY:
        case DataTypeEnum::DT_CHAR:
        case DataTypeEnum::DT_UNSIGNED_CHAR:
        case DataTypeEnum::DT_TEXT:
        case DataTypeEnum::DT_BINARY:
            return true;
        default:
            return false;
    }
}

template <typename T>
int Sign(T left, T right) noexcept {
    return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

Comparing ComparingOf(const TEValue& cell) noexcept {
    switch (cell.GetType()) {
        case DataTypeEnum::DT_SHORT:
        case DataTypeEnum::DT_INT:
        case DataTypeEnum::DT_LONG:
        case DataTypeEnum::DT_LONG_LONG:
        case DataTypeEnum::DT_UNSIGNED_SHORT:
        case DataTypeEnum::DT_UNSIGNED_INT:
            return Comparing::kSigned;
        case DataTypeEnum::DT_UNSIGNED_LONG:
            return Comparing::kUnsigned;
        default:
            return Comparing::kText;
    }
}

CellText::CellText(const TEValue& cell) : m_is_converted(!IsOctets(cell)) {
    if (m_is_converted) {
        m_converted = cell.As_TEString();
    } else {
        m_octets = cell.Bytes();
        m_octets = m_octets.substr(0, m_octets.find('\0'));
    }
}

LeftCell::LeftCell(const TEValue& cell) : m_cell(cell), m_comparing(ComparingOf(cell)) {
    if (m_comparing == Comparing::kText) {
        m_text.emplace(cell);
    }
}

int LeftCell::Compare(const TEValue& right) const {
    switch (m_comparing) {
        case Comparing::kSigned:
            return Sign(m_cell.As_long(), right.As_long());
        case Comparing::kUnsigned:
            return Sign(m_cell.As_unsigned_long(), right.As_unsigned_long());
        default:
            return Sign(m_text->view().compare(CellText(right).view()), 0);
    }
}

}  // namespace FrameUtil::table
