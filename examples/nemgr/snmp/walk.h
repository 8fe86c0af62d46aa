// nemgr/snmp/walk.h - reading a table.
#pragma once

#include <cstddef>
#include <map>

#include "nemgr/snmp/session.h"

namespace nemgr::snmp {

inline constexpr std::size_t kMostRows = 10000;

/// The cells of one column of a table whose rows are numbered, by row number. A column
/// that the element does not have is empty. Throws Error, also when there are more rows
/// than kMostRows.
std::map<long, Value> ReadColumn(Session& session, const Oid& column);

}  // namespace nemgr::snmp
