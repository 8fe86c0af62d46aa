// One cell of a row, and how cells are compared.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/value.h"

namespace FrameUtil::table {

using Row = std::vector<TEValue>;
using Rows = std::vector<Row>;

/// What stands for every cell that is not there, in the whole process.
extern const TEValue kEmptyCell;

/// The cell at `col`, or the empty cell where the row has none: rows that callers reach may
/// have any length, and column numbers come from callers too.
inline const TEValue& CellAt(const Row& row, int col) noexcept {
    return col >= 0 && static_cast<std::size_t>(col) < row.size()
               ? row[static_cast<std::size_t>(col)]
               : kEmptyCell;
}

/// How a comparison is made when such a cell is the left one.
enum class Comparing : std::uint8_t { kSigned, kUnsigned, kText };
inline constexpr int kComparings = 3;

Comparing ComparingOf(const TEValue& cell) noexcept;

/// The text form of a cell up to its first zero octet. Of a text, a block or a character
/// these are the cell's own octets, good while it is unchanged; only numbers are converted.
class CellText {
  public:
    explicit CellText(const TEValue& cell);

    /// Whether this object holds the octets, and not the cell.
    bool is_converted() const noexcept { return m_is_converted; }
    std::string_view view() const noexcept {
        return m_is_converted ? std::string_view(m_converted) : m_octets;
    }

  private:
    bool m_is_converted;
    std::string_view m_octets;
    std::string m_converted;
};

/// The left side of comparisons: converted once, compared often. Refers to the cell.
class LeftCell {
  public:
    explicit LeftCell(const TEValue& cell);

    /// -1, 0 or 1: the left cell is less, equal or greater.
    int Compare(const TEValue& right) const;

  private:
    const TEValue& m_cell;
    Comparing m_comparing;
    std::optional<CellText> m_text;  // when it is compared as a text
};

}  // namespace FrameUtil::table
