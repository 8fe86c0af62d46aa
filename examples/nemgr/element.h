// nemgr/element.h - the element that a command is about.
#pragma once

#include <string>

#include "nemgr/arguments.h"
#include "nemgr/results.h"
#include "nemgr/snmp/session.h"

namespace nemgr {

/// How an element will be used: which community stands in for a missing argument.
enum class Access { kRead, kWrite };

/// Whom the arguments "element", "community" and "version", or nemgr's options, mean.
/// Throws CommandFailure (kBadArgument).
snmp::Peer PeerOf(const Arguments& arguments, Access access);

/// What the element is called in answers and in the inventory: "127.0.0.1:161".
std::string NameOf(const snmp::Peer& peer);

/// What is answered when talking to `peer` failed.
CommandFailure FailureOf(const snmp::Error& error, const snmp::Peer& peer);

}  // namespace nemgr
