// nemgr/snmp/oid.h - object identifiers. Numbers only: no MIB file is ever read.
#pragma once

#include <string>
#include <vector>

namespace nemgr::snmp {

using Oid = std::vector<unsigned long>;

/// "1.3.6.1.2.1.1.1.0".
std::string OidText(const Oid& oid);

/// Whether `oid` begins with all of `prefix`.
bool StartsWith(const Oid& oid, const Oid& prefix);

/// `oid` and one number more.
Oid Append(Oid oid, unsigned long number);

}  // namespace nemgr::snmp
