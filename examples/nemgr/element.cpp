#include "nemgr/element.h"

#include "nemgr/settings.h"
#include "nemgr/snmp/address.h"

namespace nemgr {
namespace {

std::string AddressOf(const std::string& element) {
    const auto where = snmp::ParseHostPort(element);
    if (!where) {
        throw CommandFailure(Result::kBadArgument, "element: '" + element + "' is no host:port");
    }
    std::string why;
    const auto address = snmp::Resolve(*where, why);
    if (!address) {
        throw CommandFailure(Result::kBadArgument, "element: '" + element + "': " + why);
    }
    return *address;
}

Result ResultOf(snmp::Error::Kind kind) {
    switch (kind) {
        case snmp::Error::Kind::kNoAnswer:
            return Result::kNoAnswer;
        case snmp::Error::Kind::kRefused:
            return Result::kElementRefuses;
        case snmp::Error::Kind::kNonsense:
            break;
    }
    return Result::kElementNonsense;
}

}  // namespace

snmp::Peer PeerOf(const Arguments& arguments, Access access) {
    const Settings& settings = TheSettings();
    const std::string& community =
        access == Access::kWrite ? settings.write_community : settings.community;
    snmp::Peer peer;
    peer.address = AddressOf(arguments.Text("element").value_or(settings.element));
    peer.community = arguments.Text("community").value_or(community);
    peer.version =
        arguments.Integer("version", 1, 2) == 1 ? snmp::Version::kV1 : snmp::Version::kV2c;
    peer.timeout = std::chrono::milliseconds(settings.snmp_timeout_ms);
    peer.retries = settings.snmp_retries;
    peer.limit = std::chrono::milliseconds(settings.element_timeout_ms);
    return peer;
}

std::string NameOf(const snmp::Peer& peer) {
    return peer.address.substr(peer.address.find(':') + 1);  // without the transport
}

CommandFailure FailureOf(const snmp::Error& error, const snmp::Peer& peer) {
    return {ResultOf(error.kind()), NameOf(peer) + ": " + error.what()};
}

}  // namespace nemgr
