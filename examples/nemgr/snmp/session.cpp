#include "nemgr/snmp/session.h"

// The order of these two is net-snmp's rule.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <array>
#include <memory>
#include <mutex>
#include <utility>

namespace nemgr::snmp {
namespace {

using Pdu = std::unique_ptr<snmp_pdu, decltype(&snmp_free_pdu)>;

// Opening and closing walk the library's lists of transports, which it does not lock.
std::mutex g_opening;

// The error states of RFC 3416, by number.
constexpr std::array kStates = {"noError",
                                "tooBig",
                                "noSuchName",
                                "badValue",
                                "readOnly",
                                "genErr",
                                "noAccess",
                                "wrongType",
                                "wrongLength",
                                "wrongEncoding",
                                "wrongValue",
                                "noCreation",
                                "inconsistentValue",
                                "resourceUnavailable",
                                "commitFailed",
                                "undoFailed",
                                "authorizationError",
                                "notWritable",
                                "inconsistentName"};

std::string StateText(long state) {
    return state >= 0 && static_cast<std::size_t>(state) < kStates.size()
               ? kStates[static_cast<std::size_t>(state)]
               : "error state " + std::to_string(state);
}

Pdu NewPdu(int command) {
    Pdu pdu(snmp_pdu_create(command), snmp_free_pdu);
    if (!pdu) {
        throw std::bad_alloc();
    }
    return pdu;
}

void AddOid(snmp_pdu* pdu, const Oid& oid) {
    if (snmp_add_null_var(pdu, oid.data(), oid.size()) == nullptr) {
        throw std::bad_alloc();
    }
}

}  // namespace

Session::Session(Peer peer)
    : peer_(std::move(peer)),
      deadline_(std::chrono::steady_clock::now() + peer_.limit),
      handle_(nullptr) {
    std::string address = peer_.address;
    netsnmp_session wanted;
    snmp_sess_init(&wanted);
    wanted.version = peer_.version == Version::kV1 ? SNMP_VERSION_1 : SNMP_VERSION_2c;
    wanted.peername = address.data();
    wanted.community = reinterpret_cast<u_char*>(peer_.community.data());
    wanted.community_len = peer_.community.size();
    wanted.timeout = std::chrono::microseconds(peer_.timeout).count();
    wanted.retries = peer_.retries;
    const std::lock_guard lock(g_opening);
    handle_ = snmp_sess_open(&wanted);
    if (handle_ == nullptr) {
        throw Error(Error::Kind::kNoAnswer, "no socket can be opened for it");
    }
}

Session::~Session() {
    const std::lock_guard lock(g_opening);
    snmp_sess_close(handle_);
}

// Takes `request`. `subjects` are the variables that an error's index counts.
std::vector<Binding> Session::Ask(snmp_pdu* request, const std::vector<Oid>& subjects) {
    if (std::chrono::steady_clock::now() >= deadline_) {
        snmp_free_pdu(request);
        throw Error(Error::Kind::kNoAnswer,
                    "did not finish within " + std::to_string(peer_.limit.count()) + " ms");
    }
    snmp_pdu* received = nullptr;
    const int outcome = snmp_sess_synch_response(handle_, request, &received);
    const Pdu answer(received, snmp_free_pdu);
    if (outcome != STAT_SUCCESS || !answer) {
        throw Error(Error::Kind::kNoAnswer,
                    outcome == STAT_TIMEOUT
                        ? "asked " + std::to_string(peer_.retries + 1) + " times, " +
                              std::to_string(peer_.timeout.count()) + " ms each"
                        : "the packet cannot be sent");
    }
    if (answer->errstat != SNMP_ERR_NOERROR) {
        const auto index = static_cast<std::size_t>(answer->errindex);
        const std::string subject =
            index >= 1 && index <= subjects.size() ? OidText(subjects[index - 1]) + ": " : "";
        throw Error(Error::Kind::kRefused, subject + StateText(answer->errstat));
    }
    std::vector<Binding> bindings;
    for (const variable_list* v = answer->variables; v != nullptr; v = v->next_variable) {
        bindings.push_back(BindingOf(*v));
    }
    return bindings;
}

std::vector<Binding> Session::Get(const std::vector<Oid>& oids) {
    Pdu request = NewPdu(SNMP_MSG_GET);
    for (const Oid& oid : oids) {
        AddOid(request.get(), oid);
    }
    std::vector<Binding> answer = Ask(request.release(), oids);
    bool matches = answer.size() == oids.size();
    for (std::size_t i = 0; matches && i < oids.size(); ++i) {
        matches = answer[i].oid == oids[i];
    }
    if (!matches) {
        throw Error(Error::Kind::kNonsense, "other variables than it was asked for");
    }
    return answer;
}

std::vector<Binding> Session::Next(const Oid& oid, int most) {
    const bool bulk = peer_.version == Version::kV2c;
    Pdu request = NewPdu(bulk ? SNMP_MSG_GETBULK : SNMP_MSG_GETNEXT);
    if (bulk) {
        request->non_repeaters = 0;
        request->max_repetitions = most;
    }
    AddOid(request.get(), oid);
    std::vector<Binding> answer;
    try {
        answer = Ask(request.release(), {oid});
    } catch (const Error& e) {
        // The way of version 1 to say that nothing follows.
        if (bulk || e.kind() != Error::Kind::kRefused) {
            throw;
        }
    }
    const Oid* before = &oid;
    for (std::size_t i = 0; i < answer.size(); ++i) {
        if (std::holds_alternative<std::monostate>(answer[i].value)) {
            answer.resize(i);
            break;
        }
        if (answer[i].oid <= *before) {
            throw Error(Error::Kind::kNonsense, "variables out of order");
        }
        before = &answer[i].oid;
    }
    return answer;
}

void Session::Set(const std::vector<std::pair<Oid, std::string>>& values) {
    Pdu request = NewPdu(SNMP_MSG_SET);
    std::vector<Oid> oids;
    for (const auto& [oid, octets] : values) {
        oids.push_back(oid);
        if (snmp_pdu_add_variable(request.get(), oid.data(), oid.size(), ASN_OCTET_STR,
                                  octets.data(), octets.size()) == nullptr) {
            throw std::bad_alloc();
        }
    }
    Ask(request.release(), oids);
}

}  // namespace nemgr::snmp
