// frameutil/table.h - CBMSTableObject, a table in memory, and CFrmTableObject, the same with
// a read cursor.
//
//     FrameUtil::CFrmTableObject ports;
//     ports.AddCol("name");
//     ports.AddCol("mtu");
//     ports.AddRow(1);
//     ports.SetCellValue("name", 0, TEValue("eth0"));   // column first, then row
//     ports.SetCellValue("mtu", 0, TEValue(1500));
//
//     std::string name;
//     int mtu = 0;
//     while (ports() != nullptr) {                      // the next row
//         ports >> name >> mtu;                         // its cells in column order
//     }
//
// A cell is a TEValue. A column is known by its index, which counts from 0, or by its name,
// which is compared exactly and costs about the same whatever the number of columns. Rows
// count from 0 as well.
//
// Nothing here throws for a wrong index, name, count or pointer: operations answer with
// the codes at their declarations, 0 for success. Only memory that runs out is reported by
// std::bad_alloc, or a size beyond every limit by std::length_error, and then the table, the
// cursor and every output are as they were.
//
// Rows can also be reached as they lie (GetRow, GetTable), and a caller may leave them with
// fewer or more cells than there are columns. Wherever a cell is read that its row does not
// have, the empty value stands for it.
//
// Thread rule: thread-compatible; one thread changes a table or moves its cursor at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/export.h"
#include "kelp/value.h"

namespace FrameUtil {

/// A table: a name, columns, and rows of cells.
class FRAMEUTIL_API CBMSTableObject {
  public:
    // ---- making and copying ----------------------------------------------------------

    /// No name, no columns, no rows.
    CBMSTableObject();
    /// The same with these columns; equal names are not refused here.
    explicit CBMSTableObject(const std::vector<std::string>& colNames);
    /// A deep copy: name, sort type, rows and columns.
    CBMSTableObject(const CBMSTableObject& other);
    CBMSTableObject& operator=(const CBMSTableObject& other);
    virtual ~CBMSTableObject();

    // ---- columns ---------------------------------------------------------------------

    /// Deletes all rows and sets the sort type to -1. Columns and name stay.
    virtual void RemoveAll();

    /// Appends a column.
    ///    0  done
    ///   -1  a column of that name exists, or `name` is null
    ///   -2  the table has rows: columns come first
    virtual int AddCol(const char* name);

    /// Removes the first column of that name; the columns behind it move down one index.
    ///    0  done
    ///   -1  the table has rows
    ///   -2  there is no such column, or `name` is null
    int DeleteCol(const char* name);

    /// The index of the first column with exactly that name; -1 if there is none or `name`
    /// is null.
    int FindCol(const char* name) const noexcept;

    /// Renames a column. A name that another column has is taken: FindCol() then finds the
    /// first of them. -1 if there is no column `col` or `name` is null, else 0.
    int SetColName(int col, const char* name);

    /// A column's name, null if there is no column `col`. Good until the columns change.
    const char* GetColName(int col) const noexcept;

    /// Names the table; null gives it the empty name.
    void SetTableName(const char* name);
    const std::string& GetTableName() const noexcept;

    // ---- rows ------------------------------------------------------------------------

    /// Appends `count` rows with one empty cell for each column. -1 if there are no columns;
    /// else 0, and a count below 1 changes nothing. Throws std::length_error if rows could
    /// no longer be counted by an int.
    int AddRow(int count);

    /// Removes `count` rows from row `start` on, or as many as there are; a count below 1
    /// removes none. -1 if there is no row `start`, else 0.
    int DeleteRow(int start, int count);

    int GetRowCount() const noexcept;

    /// The cells of a row, owned by the table; null if there is no such row. Good until
    /// rows are added or deleted; Sort() gives it the cells of another row.
    std::vector<TEValue>* GetRow(int row) noexcept;
    const std::vector<TEValue>* GetRowEx(int row) const noexcept;

    /// All rows, owned by the table; never null.
    std::vector<std::vector<TEValue>>* GetTable() noexcept;

    /// Gives the table exactly `rows` rows of exactly one cell for each column. What is
    /// there already stays, new cells are empty, surplus ones are destroyed. The second
    /// argument is not used. 0; or -1, nothing changed, if `rows` is negative.
    int Initilize(int rows, int unused);

    // ---- cells: column first, then row -----------------------------------------------

    /// Copies `value` into a cell. -1 if there is no such column, row or cell, else 0.
    int SetCellValue(int col, int row, const TEValue& value);
    int SetCellValue(const char* col, int row, const TEValue& value);

    /// A cell, good until the table changes; or, if there is no such column, row or cell,
    /// an empty value that lives as long as the program.
    const TEValue& GetCellValue(int col, int row) const noexcept;
    const TEValue& GetCellValue(const char* col, int row) const noexcept;

    // ---- comparing -------------------------------------------------------------------
    //
    // Two cells are compared as the type of the left one says:
    //
    // | left cell | compared as |
    // |---|---|
    // | short, int, long, long long, unsigned short, unsigned int (13-16, 23, 24) | long |
    // | unsigned long (25) | unsigned long |
    // | anything else: text, float, double, char, binary, empty | texts up to their first
    //   zero octet, octet by octet |
    //
    // So the integers 9 and 10 are in the order of numbers, the texts "10" and "9" and the
    // doubles 10.0 and 9.0 in that of texts. The right cell is converted, whatever it is:
    // comparing two cells of different kinds the other way round may not give the opposite.
    //
    // Where two lists of columns say which cells belong together, the first list decides how
    // many pairs there are; what is behind it in the second is not looked at. A column that
    // its row does not have, or that the second list lacks, holds the empty value.

    /// Sorts the rows by the columns `keyCols`, in place: what GetRow() gave still points
    /// to the row of that number. `sortType` is stored, and does not change the order.
    /// -1, and nothing is stored, if `keyCols` is empty; else 0.
    ///
    /// The order is that of exchanging row i with each later row j that it does not precede,
    /// for i = 0, 1, ...; and a row precedes another if any of its keys is less. So
    ///   - one key column: ascending. Rows with equal keys end up in the reverse of their
    ///     order; sorting twice restores it.
    ///   - several: not the usual order by the first key, then the second. Of two rows the
    ///     one with a less key anywhere is left in front, even if its first key is greater.
    ///     All that is sure: a row stands in front of every other that is at least as great
    ///     in each key and greater in one. Rows with equal keys are in the reverse of their
    ///     order. For an order by two columns, make a column that holds both.
    ///   - a column of cells of different kinds has no order of its own; the result is
    ///     still the one that the exchanges give.
    ///
    /// One key whose cells are of one kind takes the time of sorting: 100,000 rows some
    /// milliseconds. All else takes quadratic time: 10,000 rows about ten milliseconds with
    /// two keys, and some hundred if kinds are mixed.
    int Sort(std::vector<int>& keyCols, int sortType);

    /// What the last Sort() stored; -1 before the first one and after RemoveAll().
    int GetSortType() const noexcept;

    /// The first row from `start` on whose cells at `tableCols` equal the cells of `row` at
    /// `rowCols`, pair by pair; GetTable()->end() if there is none. Without pairs every
    /// row matches. `start` that is no position of this table, and a null `row`, match
    /// nothing.
    std::vector<std::vector<TEValue>>::iterator FindRowLocation(
        std::vector<TEValue>* row, std::vector<std::vector<TEValue>>::iterator start,
        std::vector<int>& rowCols, std::vector<int>& tableCols);

    /// The index of the first row of this table, from row `start` on, whose cells at
    /// `thisCols` equal the cells of row `otherRow` of `other` at `otherCols`. A negative
    /// `start` begins at row 0.
    ///   >= 0  the index
    ///      1  also if `other` is null or has no row `otherRow`, deliberately: check with
    ///         other->GetRowEx(otherRow) first where that can be
    ///     -1  no row matches
    ///     -5  this table has no rows
    int FindRowLocation(CBMSTableObject* other, int otherRow, int start,
                        std::vector<int>& otherCols, std::vector<int>& thisCols);

    /// Whether row `otherRow` of `other` and row `thisRow` of this table are equal in the
    /// columns `otherCols` and `thisCols`, pair by pair. The cells of `other` are the left
    /// ones.
    ///   1  equal; also if `other` is null or has no such row, deliberately: nothing there
    ///      asks for a change
    ///   0  not equal, or this table has no such row
    int DetectIfEqual(CBMSTableObject* other, int otherRow, int thisRow,
                      std::vector<int>& otherCols, std::vector<int>& thisCols);

    /// Whether they differ, and with `collectNames` in which columns.
    ///   1  they differ. `modifiedCols` names, with `collectNames`, the columns of `other`
    ///      that do, as "a;c"; else it is empty. A column without a name counts as "".
    ///   0  they do not, and `modifiedCols` is empty. Also if `other` is null or one of the
    ///      rows is not there: then `modifiedCols` is left as it was.
    int DetectIfModified(CBMSTableObject* other, int otherRow, int thisRow,
                         std::vector<int>& otherCols, std::vector<int>& thisCols, bool collectNames,
                         std::string& modifiedCols);

  protected:
    /// Appends a column whatever its name.
    void AppendCol(std::string name);
    /// Removes all columns, not the rows.
    void RemoveCols() noexcept;

    std::string m_strTableName;
    std::vector<std::string> m_vecColNames;  ///< changed by AppendCol() and RemoveCols()
    std::vector<std::vector<TEValue>> m_vecRows;
    std::int32_t m_iSortType = -1;

  private:
    // Where a column is looked up by its name. A name's place among the slots follows from
    // its octets; if that is taken, the next free slot is used.
    struct ColSlot {
        std::uint64_t head = 0, tail = 0;  // the name's first and last octets
        std::uint32_t size = 0;
        std::int32_t col = -1;  // -1: the slot is free
    };
    std::size_t PlaceOf(const ColSlot& key, std::string_view name) const noexcept;
    int LookUp(std::string_view name) const noexcept;
    int LookUpFrom(std::size_t place, const ColSlot& key, std::string_view name) const noexcept;
    bool IndexCol(std::size_t col) noexcept;
    void IndexCols() noexcept;

    std::vector<ColSlot> m_vecColSlots;  // a power of two, at least twice the columns
    std::uint64_t m_iColFactor = 1;      // chosen so that few names share a place
    unsigned m_iColShift = 0;            // by which a product becomes a place
};

/// A table with a read cursor and a declared type for each column.
///
/// The cursor is a row and in it the next cell to be read. It keeps their numbers and not
/// their addresses. So rows may be added, deleted and sorted beneath it: it stays at the
/// same row number and cell, whatever stands there now. If the row or cell is gone, reads
/// do nothing and the next row is the end.
///
/// Copies go by value: each copy has its own cursor, at the same place in its own rows.
class FRAMEUTIL_API CFrmTableObject : public CBMSTableObject {
  public:
    /// An empty table; the cursor stands before the first row.
    CFrmTableObject();
    /// Copies rows, columns, types and the place of the cursor. The source is not changed;
    /// that it may not be const is part of the interface.
    CFrmTableObject(CFrmTableObject& other);
    CFrmTableObject& operator=(const CFrmTableObject& other);
    ~CFrmTableObject() override;

    /// Deletes rows and columns, sets the sort type to -1, and the cursor before the first
    /// row. The declared types stay, deliberately: columns added afterwards get further
    /// entries, so GetColType() goes on to answer with the earlier ones.
    void RemoveAll() override;

    /// Appends a column of type 0. A name that is taken is lengthened: the columns are gone
    /// through in order, and whenever one has the name built so far, its index is appended
    /// to it. Three times "A" gives "A", "A0" and "A01". The columns gone through already
    /// are not looked at again, so with "A1" and "A" there another "A" becomes a second
    /// "A1".
    ///    0  done
    ///   -1  the table has rows, or `name` is null
    int AddCol(const char* name) override;

    /// Declares a column's type: nothing is converted by it. -1 if there is no entry for
    /// `col`, else 0. DeleteCol() removes no entry.
    int SetColType(int col, refl::Enum::DataTypeEnum type);
    /// The declared type, 0 (DT_EMPTY) if there is no entry for `col`.
    refl::Enum::DataTypeEnum GetColType(int col) const noexcept;

    // ---- the cursor ------------------------------------------------------------------

    /// Moves to the first cell of the next row, from before the first to the first. Returns
    /// its cells, good until the table changes; null behind the last row, and the cursor is
    /// then before the first again: a second walk just starts. A table without rows gives
    /// null and leaves the cursor as it is.
    std::vector<TEValue>* operator()() noexcept;

    /// Moves within the row to column `col`, or to the last column if there are fewer.
    /// Returns the table. Without a row no cell is selected.
    CFrmTableObject& operator[](unsigned long col) noexcept;
    /// The same by name. A name that no column has selects column 0, deliberately: check
    /// with FindCol() where that can be.
    CFrmTableObject& operator[](const CStdString& name) noexcept;

    /// Reads the cell into `value`, converted as kelp/value.h tells, and moves to the next
    /// one. Returns the table.
    ///
    /// Behind the last cell, or without a row, `value` stays as it is, and so it goes on
    /// until operator() or operator[] selects a cell again: nothing else tells that a
    /// target was not read, so count the columns first where that can be.
    ///
    /// Also for an empty cell `value` is written: 0, an empty text, an empty value.
    CFrmTableObject& operator>>(char& value) noexcept;
    CFrmTableObject& operator>>(unsigned char& value) noexcept;
    CFrmTableObject& operator>>(short& value) noexcept;
    CFrmTableObject& operator>>(unsigned short& value) noexcept;
    CFrmTableObject& operator>>(int& value) noexcept;
    CFrmTableObject& operator>>(unsigned int& value) noexcept;
    CFrmTableObject& operator>>(long& value) noexcept;
    CFrmTableObject& operator>>(unsigned long& value) noexcept;
    CFrmTableObject& operator>>(float& value) noexcept;
    CFrmTableObject& operator>>(double& value) noexcept;
    CFrmTableObject& operator>>(TEValue& value);
    CFrmTableObject& operator>>(refl::CValue& value);
    CFrmTableObject& operator>>(refl::CBinary& value);
    CFrmTableObject& operator>>(CStdString& value);
    CFrmTableObject& operator>>(refl::CNumeric& value) noexcept;
    CFrmTableObject& operator>>(std::string& value);

  protected:
    std::int32_t m_iCurCol = -1;    ///< the column selected last, -1 when no cell is
    std::int32_t m_iCurRow = -1;    ///< -1 before the first row
    std::int32_t m_iNextCell = -1;  ///< what is read next in the row, -1 when none
    std::vector<refl::Enum::DataTypeEnum> m_vecColTypes;

  private:
    void ResetCursor() noexcept;
    void Select(int col) noexcept;
    template <class Assign>
    CFrmTableObject& Read(Assign assign);
};

}  // namespace FrameUtil
