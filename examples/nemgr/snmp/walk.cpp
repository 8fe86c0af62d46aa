#include "nemgr/snmp/walk.h"

#include <utility>

namespace nemgr::snmp {
namespace {

constexpr int kRowsAtATime = 25;

}  // namespace

std::map<long, Value> ReadColumn(Session& session, const Oid& column) {
    std::map<long, Value> cells;
    for (Oid at = column;;) {
        std::vector<Binding> next = session.Next(at, kRowsAtATime);
        if (next.empty()) {
            return cells;
        }
        for (Binding& binding : next) {
            if (!StartsWith(binding.oid, column)) {
                return cells;
            }
            if (binding.oid.size() != column.size() + 1 || cells.size() == kMostRows) {
                throw Error(Error::Kind::kNonsense, "no table at " + OidText(column));
            }
            cells[static_cast<long>(binding.oid.back())] = std::move(binding.value);
        }
        at = std::move(next.back().oid);
    }
}

}  // namespace nemgr::snmp
