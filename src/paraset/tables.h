// One table node to one AsnTable, and back. The converters of the common records drop
// these codes: a child that is no table travels as an empty one.
#pragma once

#include "frameutil/paraset.h"

namespace FrameUtil {

/// What a schema says of its columns' cells: CParaSet::getType() of them.
namespace cell_type {
inline constexpr int kInteger = 2;
inline constexpr int kString = 4;
inline constexpr int kNotValued = 5;
inline constexpr int kDouble = 9;
inline constexpr int kArray = 257;  // of a column's node; its cells tell the column's type
}  // namespace cell_type

/// Appends the columns and rows of `node` to `table`. 0; -3 without a table, -1 without
/// a node or its "##RowCount" child, -2 when that reads 0. Index access on the way
/// makes missing elements of array columns.
int ParaSet2Table(CParaSet* node, AsnTable* table);

/// Writes the rows of `table` into `node`: scalars when there is one row, arrays when
/// there are several. 0; -1 without a record or its schema, -2 when it has no columns
/// or no rows, -3, with a warning in the log, when its rows lack more than 65536 values
/// and more than 16 for each that is there: null slots would take memory out of all
/// proportion to what arrived. `node` is as it was then. Throws FRexception when existing
/// children refuse their value.
int Table2ParaSet(const AsnTable* table, CParaSet& node);

}  // namespace FrameUtil
