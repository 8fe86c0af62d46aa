// nemgr/commands.h - the commands that nemgr serves.
//
// Arguments are one row of a common request; all may be left out unless said otherwise.
// An argument that a command does not know is refused, so that a misspelt one is noticed.
//
// Commands that talk to an element take:
//   element    text: "host", "host:port" or "[IPv6 address]:port"; nemgr's --element
//   community  text: the SNMP community; nemgr's --community, or --write-community
//   version    integer: 1 for SNMPv1, 2 for SNMPv2c (default)
//
// An answer carries "##retCode" (nemgr/results.h). When that is not 0 its one row holds
// errorText, what the code means, and errorItem, the thing at fault; and of the error
// resources errorReason, errorDetail and errorAdvice, empty where there are none.
#pragma once

#include <cstdint>

namespace nemgr {

inline constexpr std::uint16_t kProcType = 3001;  ///< nemgr's process type on the platform

enum CommandCode : std::uint32_t {
    /// The element's system group: one row with the texts sysDescr, sysObjectID,
    /// sysContact, sysName, sysLocation and the double sysUpTime, in seconds.
    kReadSystem = 30010,

    /// Contact and location are written, both at once or not at all, and read back.
    /// Arguments: contact, location: texts, at least one of them.
    /// Answer: one row with the texts sysContact and sysLocation.
    kWriteSystem = 30011,

    /// The element's interfaces, one row each. Integers ifIndex, ifType, ifMtu; doubles
    /// ifSpeed (bits a second), ifInOctets, ifOutOctets (of 64 bits where the element
    /// counts so) and ifInRate, ifOutRate; texts ifDescr, ifPhysAddress ("00:1a:2b:...").
    /// Rates are octets a second since the last earlier reading of the same element that
    /// is at least a second older; not a number while there is none.
    kReadInterfaces = 30012,

    /// The inventory: what the two reading commands saw, kept in the database. One row an
    /// element: texts element, sysName, sysLocation, seen (when it was read last, in UTC),
    /// integer interfaces (how many are known).
    kListElements = 30013,

    /// The interfaces that the inventory knows of an element. Argument: element. One row
    /// each, as kReadInterfaces but for the counters and rates.
    kListInterfaces = 30014,

    /// Removes an element and its interfaces from the inventory. Argument: element. Answer:
    /// one row with the text element.
    kForgetElement = 30015,

    /// What the platform made of this process. One row: integers procHandle, networkSize
    /// (the elements it made ready for) and workers; texts restGroups (the REST groups it
    /// serves) and withoutToken (the codes of its white list), both with commas between.
    kReadServer = 30016,

    /// The vendors whose registered prefix or name begins as given, in the order of the
    /// prefixes. Arguments, at most one of them: prefix, hexadecimal digits with or
    /// without ':', '-', '.' between them, or a whole hardware address; name, in any
    /// case. An empty or missing one gives the whole registry.
    /// Answer: the texts assignment (the prefix's digits), block (its size: "MA-L", ...),
    /// organization and postalAddress.
    kFindVendors = 30020,
};

}  // namespace nemgr
