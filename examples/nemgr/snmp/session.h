// nemgr/snmp/session.h - talking to one element.
//
//     snmp::Session session(peer);
//     std::vector<snmp::Binding> answer = session.Get({kSysDescr, kSysName});
//
// Thread rule: one thread at a time for a session; different sessions share nothing.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "nemgr/snmp/value.h"

struct snmp_pdu;  // of net-snmp

namespace nemgr::snmp {

enum class Version { kV1, kV2c };

/// Whom to talk to, and how patiently.
struct Peer {
    std::string address;  ///< as Resolve() gives it
    std::string community;
    Version version = Version::kV2c;
    std::chrono::milliseconds timeout{1000};  ///< for one packet's answer
    int retries = 1;
    std::chrono::milliseconds limit{20000};  ///< for all requests of the session
};

/// What went wrong with an element.
class Error : public std::runtime_error {
  public:
    enum class Kind {
        kNoAnswer,  ///< not in time, or not reachable
        kRefused,   ///< the element said no; what() says how, for instance "noAccess"
        kNonsense,  ///< the answer does not belong to the question
    };
    Error(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const noexcept { return kind_; }

  private:
    Kind kind_;
};

/// Every operation throws Error.
class Session {
  public:
    explicit Session(Peer peer);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Peer& peer() const { return peer_; }

    /// The values of `oids`, in their order.
    std::vector<Binding> Get(const std::vector<Oid>& oids);

    /// Up to `most` variables that follow `oid` in the element's order; none at its end.
    std::vector<Binding> Next(const Oid& oid, int most);

    /// Writes octets, all or none.
    void Set(const std::vector<std::pair<Oid, std::string>>& values);

  private:
    std::vector<Binding> Ask(snmp_pdu* request, const std::vector<Oid>& subjects);

    Peer peer_;
    std::chrono::steady_clock::time_point deadline_;
    void* handle_;
};

}  // namespace nemgr::snmp
