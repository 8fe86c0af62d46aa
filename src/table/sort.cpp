#include <utility>

#include "frameutil/table.h"
#include "table/exchange.h"

namespace FrameUtil {

namespace {

// Gives each position i the row order[i], each row moved once and none through memory of
// their own. `order` is used up.
void Arrange(table::Rows& rows, std::vector<std::uint32_t>& order) noexcept {
    for (std::size_t start = 0; start < order.size(); ++start) {
        if (order[start] == start) {
            continue;
        }
        table::Row first = std::move(rows[start]);
        std::size_t at = start;
        for (;;) {
            const auto from =
                static_cast<std::size_t>(std::exchange(order[at], static_cast<std::uint32_t>(at)));
            if (from == start) {
                break;
            }
            rows[at] = std::move(rows[from]);
            at = from;
        }
        rows[at] = std::move(first);
    }
}

}  // namespace

int CBMSTableObject::Sort(std::vector<int>& keyCols, int sortType) {
    if (keyCols.empty()) {
        return -1;
    }
    std::vector<std::uint32_t> order = table::ExchangedOrder(m_vecRows, keyCols);
    Arrange(m_vecRows, order);
    m_iSortType = sortType;
    return 0;
}

int CBMSTableObject::GetSortType() const noexcept {
    return m_iSortType;
}

}  // namespace FrameUtil
