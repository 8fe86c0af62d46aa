#include "http/fault.h"

#include <openssl/x509_vfy.h>

#include <algorithm>

namespace kelp::http {
namespace {

using namespace UFHTTPMSGMGR;

constexpr Fault kNoAnswer = {HTTP_ERR_NO_ANSWER, "the server closed without an answer"};

struct ResultRow {
    CURLcode result;
    Fault fault;
};
const ResultRow kResults[] = {
    {CURLE_URL_MALFORMAT, {HTTP_ERR_ARGUMENT, "the URL is malformed"}},
    {CURLE_LOGIN_DENIED, {HTTP_ERR_ARGUMENT, "the URL names a user"}},
    {CURLE_COULDNT_RESOLVE_HOST, {HTTP_ERR_RESOLVE, "the host has no address"}},
    {CURLE_COULDNT_CONNECT, {HTTP_ERR_CONNECT, "no connection"}},
    {CURLE_SSL_CONNECT_ERROR, {HTTP_ERR_TLS, "TLS was not agreed on"}},
    {CURLE_SSL_CACERT_BADFILE, {HTTP_ERR_CREDENTIALS, "the CA file cannot be used"}},
    {CURLE_SSL_CERTPROBLEM,
     {HTTP_ERR_CREDENTIALS, "the client's certificate or key cannot be used"}},
    {CURLE_SEND_ERROR, {HTTP_ERR_SEND, "the request could not be sent"}},
    {CURLE_SEND_FAIL_REWIND, {HTTP_ERR_SEND, "the request could not be sent"}},
    {CURLE_GOT_NOTHING, kNoAnswer},
    {CURLE_PARTIAL_FILE, {HTTP_ERR_CUT, "the answer was cut"}},
    {CURLE_FILESIZE_EXCEEDED, {HTTP_ERR_TOO_LARGE, "the answer is larger than the limit"}},
    {CURLE_BAD_CONTENT_ENCODING, {HTTP_ERR_MALFORMED, "the answer is wrongly compressed"}},
    {CURLE_WEIRD_SERVER_REPLY, {HTTP_ERR_MALFORMED, "the answer is no HTTP"}},
    {CURLE_UNSUPPORTED_PROTOCOL, {HTTP_ERR_MALFORMED, "the answer is no HTTP"}},
    {CURLE_WRITE_ERROR, {HTTP_ERR_MALFORMED, "the answer cannot be read"}},
    {CURLE_OUT_OF_MEMORY, {HTTP_ERR_NO_MEMORY, "no memory"}},
};

struct VerdictRow {
    long verdict;
    Fault fault;
};
const VerdictRow kVerdicts[] = {
    // The transfer library's word for a sound chain with another name.
    {X509_V_ERR_UNSPECIFIED,
     {HTTP_ERR_CERT_WRONG_HOST, "the server's certificate is for another host"}},
    {X509_V_ERR_HOSTNAME_MISMATCH,
     {HTTP_ERR_CERT_WRONG_HOST, "the server's certificate is for another host"}},
    {X509_V_ERR_IP_ADDRESS_MISMATCH,
     {HTTP_ERR_CERT_WRONG_HOST, "the server's certificate is for another host"}},
    {X509_V_ERR_CERT_HAS_EXPIRED, {HTTP_ERR_CERT_EXPIRED, "the server's certificate has expired"}},
    {X509_V_ERR_CERT_NOT_YET_VALID,
     {HTTP_ERR_CERT_NOT_YET_VALID, "the server's certificate is not yet valid"}},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT,
     {HTTP_ERR_CERT_UNKNOWN_CA, "the server's certificate is not of the installation's CA"}},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY,
     {HTTP_ERR_CERT_UNKNOWN_CA, "the server's certificate is not of the installation's CA"}},
    {X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE,
     {HTTP_ERR_CERT_UNKNOWN_CA, "the server's certificate is not of the installation's CA"}},
    {X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT,
     {HTTP_ERR_CERT_UNKNOWN_CA, "the server's certificate is signed by itself"}},
    {X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN,
     {HTTP_ERR_CERT_UNKNOWN_CA, "the server's certificate is not of the installation's CA"}},
};

// What a server says about a client's certificate, in the TLS library's words. With TLS 1.3
// it says so after the handshake, in place of an answer.
constexpr std::string_view kAlerts[] = {
    "alert certificate required", "alert bad certificate",     "alert unsupported certificate",
    "alert certificate revoked",  "alert certificate expired", "alert certificate unknown",
    "alert unknown ca",           "alert access denied",
};

bool IsAboutTheClient(std::string_view words) {
    return std::any_of(std::begin(kAlerts), std::end(kAlerts), [&](std::string_view alert) {
        return words.find(alert) != std::string_view::npos;
    });
}

Fault TimeoutOf(const Outcome& outcome) {
    if (outcome.issued == 0) {
        return {HTTP_ERR_CONNECT_TIMEOUT, "no connection in time"};
    }
    return outcome.in_full ? Fault{HTTP_ERR_TIMEOUT, "the time-out has passed"}
                           : Fault{HTTP_ERR_STALLED, "next to nothing was transferred"};
}

Fault LastFaultOf(const Outcome& outcome, std::string_view words) {
    if (outcome.too_large) {
        return {HTTP_ERR_TOO_LARGE, "the answer is larger than the limit"};
    }
    if (outcome.no_memory) {
        return {HTTP_ERR_NO_MEMORY, "no memory for the answer"};
    }
    if (outcome.not_repeated) {
        return kNoAnswer;
    }
    if (outcome.result == CURLE_OPERATION_TIMEDOUT) {
        return TimeoutOf(outcome);
    }
    if (outcome.result == CURLE_PEER_FAILED_VERIFICATION) {
        for (const VerdictRow& row : kVerdicts) {
            if (row.verdict == outcome.verified) {
                return row.fault;
            }
        }
        return {HTTP_ERR_CERT_REFUSED, "the server's certificate does not verify"};
    }
    if (IsAboutTheClient(words)) {
        return {HTTP_ERR_CLIENT_REFUSED, "the server refuses this client's certificate"};
    }
    if (outcome.result == CURLE_OK) {
        return outcome.ended_headers ? Fault{HTTP_ERR_CUT, "the answer does not say where it ends"}
                                     : Fault{HTTP_ERR_CUT, "the answer was cut"};
    }
    if (outcome.result == CURLE_RECV_ERROR) {
        if (words.find("chunked-encoding") != std::string_view::npos) {
            return {HTTP_ERR_MALFORMED, "the answer is wrongly chunked"};
        }
        return outcome.answered ? Fault{HTTP_ERR_CUT, "the answer was cut"} : kNoAnswer;
    }
    for (const ResultRow& row : kResults) {
        if (row.result == outcome.result) {
            return row.fault;
        }
    }
    return {HTTP_ERR_OTHER, "the exchange failed"};
}

}  // namespace

Fault FaultOf(const Outcome& outcome, std::string_view words) {
    const Fault fault = LastFaultOf(outcome, words);
    // A kept connection was closed on the request, and no other one came about. That must not
    // read as if the server had never got it: who is told so may well send it again.
    const bool reads_as_unsent = fault.code < HTTP_ERR_TIMEOUT;
    return outcome.left && reads_as_unsent ? kNoAnswer : fault;
}

}  // namespace kelp::http
