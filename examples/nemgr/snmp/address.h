// nemgr/snmp/address.h - where an element listens.
#pragma once

#include <optional>
#include <string>

namespace nemgr::snmp {

/// A host and a port as somebody wrote them.
struct HostPort {
    std::string host;
    std::string port;
};

/// Takes "host", "host:port", "[IPv6 address]" and "[IPv6 address]:port" apart; the port
/// is 161 if none is given. Nothing when `text` is none of these or the port is no number
/// from 1 to 65535.
std::optional<HostPort> ParseHostPort(const std::string& text);

/// The numeric address of `where` as net-snmp spells it ("udp:127.0.0.1:161",
/// "udp6:[::1]:161"). Names are looked up here, by a call that several threads may make
/// at once, rather than in the library. Nothing, with the reason in `why`, when there is
/// no such host.
std::optional<std::string> Resolve(const HostPort& where, std::string& why);

}  // namespace nemgr::snmp
