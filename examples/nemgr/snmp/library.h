// nemgr/snmp/library.h - net-snmp, set up for a server.
#pragma once

namespace nemgr::snmp {

/// Makes the library ready; once, before there are threads. No configuration, MIB or state
/// file is read or written, and nothing is logged by the library: what it has to say,
/// Session says.
class Library {
  public:
    Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

}  // namespace nemgr::snmp
