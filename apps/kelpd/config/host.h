// kelpd/config/host.h - the names and addresses that a certificate vouches for.
//
// thread-safe
#pragma once

#include <string>
#include <string_view>

namespace kelpd {

enum class HostKind { kName, kAddress, kNeither };

/// kAddress for an IPv4 or IPv6 address, kName for a host name as the domain name system
/// spells it (letters, digits, hyphens; labels of 63 characters, 253 in all; no wildcard).
/// What looks like an IPv4 address and is none ("10.0.0.256") is neither.
HostKind KindOfHost(std::string_view host);

}  // namespace kelpd
