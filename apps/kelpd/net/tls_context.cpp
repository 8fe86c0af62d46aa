#include "kelpd/net/tls_context.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "kelpd/config/guard.h"
#include "kelpd/net/tls_channel.h"
#include "kelpd/net/tls_error.h"
#include "kelpd/status.h"

namespace kelpd {
namespace {

constexpr const char* kCiphersBefore13 = "ECDHE+AESGCM:ECDHE+CHACHA20";
constexpr unsigned char kSessionScope[] = "kelpd gateway";
constexpr const char* kNewRoot = "run 'kelpd init DIR' for a root with new certificates";

[[noreturn]] void Fail(const std::string& what) {
    throw Refusal(kKeys, what + ": " + TakeTlsErrors());
}

// The certificate must convince clients: signed by the authority, for servers, and of today.
void Verify(SSL_CTX* context, const Config& config) {
    const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> check(
        X509_STORE_CTX_new(), X509_STORE_CTX_free);
    X509* const certificate = SSL_CTX_get0_certificate(context);
    STACK_OF(X509)* chain = nullptr;  // of authorities between the two
    SSL_CTX_get0_chain_certs(context, &chain);
    if (!check || X509_STORE_CTX_init(check.get(), SSL_CTX_get_cert_store(context), certificate,
                                      chain) != 1) {
        Fail(config.certificate_file);
    }
    X509_STORE_CTX_set_purpose(check.get(), X509_PURPOSE_SSL_SERVER);
    if (X509_verify_cert(check.get()) != 1) {
        const int error = X509_STORE_CTX_get_error(check.get());
        TakeTlsErrors();
        throw Refusal(kKeys, "the certificate " + config.certificate_file + " is of no use: " +
                                 X509_verify_cert_error_string(error) + ": " + kNewRoot);
    }
}

int DaysLeft(const X509* certificate) {
    int days = 0;
    int seconds = 0;
    ASN1_TIME_diff(&days, &seconds, nullptr, X509_get0_notAfter(certificate));
    return days;
}

}  // namespace

TlsContext::TlsContext(const Config& config) : context_(SSL_CTX_new(TLS_server_method())) {
    if (context_ == nullptr) {
        Fail("no TLS");
    }
    // The destructor does not run for an object whose constructor threw.
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> guard(context_, SSL_CTX_free);
    SSL_CTX_set_min_proto_version(context_, TLS1_2_VERSION);
    SSL_CTX_set_options(context_, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION |
                                      SSL_OP_CIPHER_SERVER_PREFERENCE | SSL_OP_PRIORITIZE_CHACHA);
    // Idle connections give their buffers back; a record is read with one system call.
    SSL_CTX_set_mode(context_, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER |
                                   SSL_MODE_RELEASE_BUFFERS);
    SSL_CTX_set_read_ahead(context_, 1);
    SSL_CTX_set_session_cache_mode(context_, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_session_id_context(context_, kSessionScope, sizeof kSessionScope - 1);
    if (SSL_CTX_set_cipher_list(context_, kCiphersBefore13) != 1) {
        Fail("no ciphers");
    }
    RequireOwnKey(config.key_file);
    if (SSL_CTX_use_certificate_chain_file(context_, config.certificate_file.c_str()) != 1) {
        Fail("cannot read the certificate " + config.certificate_file);
    }
    if (SSL_CTX_use_PrivateKey_file(context_, config.key_file.c_str(), SSL_FILETYPE_PEM) != 1) {
        Fail("cannot use the key " + config.key_file);
    }
    if (SSL_CTX_load_verify_file(context_, config.ca_file.c_str()) != 1) {
        Fail("cannot read the authority's certificate " + config.ca_file);
    }
    Verify(context_, config);
    SSL_CTX_set_client_CA_list(context_, SSL_load_client_CA_file(config.ca_file.c_str()));
    SSL_CTX_set_verify(context_, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    days_left_ = DaysLeft(SSL_CTX_get0_certificate(context_));
    static_cast<void>(guard.release());
}

TlsContext::~TlsContext() {
    SSL_CTX_free(context_);
}

std::unique_ptr<Channel> TlsContext::Accept(int socket) const {
    return MakeTlsChannel(context_, socket);
}

}  // namespace kelpd
