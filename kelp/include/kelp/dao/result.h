// kelp/dao/result.h - the rows of a statement, all in memory, and its status.
//
//     dao::CExecResult result = session.Query("SELECT id, name FROM ne");
//     const int name = result.FindColumn("name");
//     for (std::size_t row = 0; row < result.GetRowCount(); ++row) {
//         std::puts(result.At(row, name).As_std_string().c_str());
//     }
//
// A failed statement's result has no rows, whatever came before the failure.
//
// What a cell holds:
//
// | in the database            | cell                                                     |
// |----------------------------|----------------------------------------------------------|
// | NULL                       | the empty value                                          |
// | smallint, integer, bigint  | DT_SHORT, DT_INT, DT_LONG_LONG                           |
// | oid                        | DT_UNSIGNED_INT                                          |
// | real, double precision     | DT_FLOAT, DT_DOUBLE                                      |
// | boolean                    | DT_INT, 0 or 1                                           |
// | numeric                    | a whole number of 64 bits: DT_LONG_LONG, or above 2^63-1 |
// |                            | DT_UNSIGNED_LONG; all others: DT_TEXT, every digit       |
// | bytea                      | DT_BINARY                                                |
// | every other type           | DT_TEXT, as PostgreSQL spells it                         |
// | SQLite INTEGER             | DT_LONG_LONG; DT_UNSIGNED_LONG when the column's declared|
// |                            | type contains UNSIGNED and the value is not negative     |
// | SQLite REAL, TEXT, BLOB    | DT_DOUBLE, DT_TEXT, DT_BINARY                            |
//
// thread-compatible.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/dao/status.h"
#include "kelp/value.h"

namespace dao {

// A column of a result. The type is what the database declares: on SQLite, whose cells have
// types of their own, the affinity of the declared type; DT_EMPTY for an expression there.
struct CColumn {
    std::string name;
    refl::Enum::DataTypeEnum type = refl::Enum::DT_EMPTY;
};

using CRow = std::vector<TEValue>;

// The index of the first column of that name, letters' case ignored, or -1. Does not throw.
KELP_API int FindColumn(const std::vector<CColumn>& columns, std::string_view name) noexcept;

class KELP_API CExecResult {
  public:
    CExecResult() = default;

    const CExecStatus& GetStatus() const noexcept { return m_status; }
    int GetErrCode() const noexcept { return m_status.GetErrCode(); }
    void SetStatus(const CExecStatus& status) { m_status = status; }

    std::size_t GetRowCount() const noexcept { return m_rows.size(); }
    std::size_t GetColumnCount() const noexcept { return m_columns.size(); }
    const std::vector<CColumn>& GetColumns() const noexcept { return m_columns; }
    int FindColumn(std::string_view name) const noexcept {
        return dao::FindColumn(m_columns, name);
    }
    // The cell; for an index out of range (-1 of FindColumn too) an empty value that lives as
    // long as the process.
    const TEValue& At(std::size_t row, std::size_t column) const noexcept;
    const TEValue& At(std::size_t row, int column) const noexcept {
        return At(row, static_cast<std::size_t>(column));
    }
    const TEValue& At(std::size_t row, std::string_view column) const noexcept {
        return At(row, FindColumn(column));
    }
    const TEValue& At(std::size_t row, const char* column) const noexcept {
        return At(row, std::string_view(column));
    }

    // All rows, each with a cell a column.
    const std::vector<CRow>& GetRows() const noexcept { return m_rows; }
    // The rows themselves; the result has none afterwards. For filling a table without a copy.
    std::vector<CRow> TakeRows() noexcept { return std::exchange(m_rows, {}); }

    // Becomes what a default-made one is.
    void Clear() noexcept;
    // Puts columns and rows in, for those who make results.
    void Assign(std::vector<CColumn> columns, std::vector<CRow> rows) noexcept;

  private:
    CExecStatus m_status;
    std::vector<CColumn> m_columns;
    std::vector<CRow> m_rows;
};

}  // namespace dao
