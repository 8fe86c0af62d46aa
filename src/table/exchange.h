// The order in which a sort leaves the rows.
#pragma once

#include <cstdint>
#include <vector>

#include "table/cell.h"

namespace FrameUtil::table {

/// The numbers of the rows in the order that exchanging every row with each later one that
/// it does not precede leaves them in; see CBMSTableObject::Sort(). Same outcome, other work.
std::vector<std::uint32_t> ExchangedOrder(const Rows& rows, const std::vector<int>& keyCols);

}  // namespace FrameUtil::table
