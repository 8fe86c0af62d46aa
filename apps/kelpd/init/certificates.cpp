#include "kelpd/init/certificates.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include "kelpd/config/host.h"
#include "kelpd/net/tls_error.h"
#include "kelpd/status.h"

namespace kelpd {
namespace {

template <auto Free>
struct Freer {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freer<X509_free>>;
using Bio = std::unique_ptr<BIO, Freer<BIO_free_all>>;
using Number = std::unique_ptr<BIGNUM, Freer<BN_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Freer<X509_EXTENSION_free>>;

constexpr long kDay = 24L * 60 * 60;
constexpr long kAuthorityDays = 3652;
constexpr long kIdentityDays = 825;
// Clocks of the machines that a certificate is used on may be a little behind.
constexpr long kGrace = 60L * 60;
constexpr int kSerialBits = 127;  // positive in twenty octets, and not to be guessed

void Require(bool done, const char* what) {
    if (!done) {
        throw Refusal(kFailed,
                      std::string("cannot make certificates: ") + what + ": " + TakeTlsErrors());
    }
}

Key NewKey() {
    Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
    Require(key != nullptr, "no key");
    return key;
}

void SetSerial(X509* certificate) {
    const Number serial(BN_new());
    Require(serial &&
                BN_rand(serial.get(), kSerialBits, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
                BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(certificate)) != nullptr,
            "no serial number");
}

void SetName(X509_NAME* name, const std::string& common_name) {
    // The attribute holds 64 characters at most; the names that count stand in an extension.
    const std::string text = common_name.substr(0, 64);
    Require(X509_NAME_add_entry_by_txt(name, "O", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>("kelp"), -1, -1,
                                       0) == 1 &&
                X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                           reinterpret_cast<const unsigned char*>(text.data()),
                                           static_cast<int>(text.size()), -1, 0) == 1,
            "no name");
}

void Extend(X509* certificate, X509* issuer, int id, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str()));
    Require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "no extension");
}

Certificate Blank(EVP_PKEY* key, const std::string& common_name, long days) {
    Certificate certificate(X509_new());
    Require(certificate && X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
                X509_set_pubkey(certificate.get(), key) == 1 &&
                X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kGrace) != nullptr &&
                X509_gmtime_adj(X509_getm_notAfter(certificate.get()), days * kDay) != nullptr,
            "no certificate");
    SetSerial(certificate.get());
    SetName(X509_get_subject_name(certificate.get()), common_name);
    return certificate;
}

std::string HostList(const std::vector<std::string>& hosts) {
    std::string list;
    for (const std::string& host : hosts) {
        list += list.empty() ? "" : ",";
        list += (KindOfHost(host) == HostKind::kAddress ? "IP:" : "DNS:") + host;
    }
    return list;
}

std::string TextOf(BIO* bio) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return std::string(data, static_cast<std::size_t>(size));
}

Identity Pem(X509* certificate, EVP_PKEY* key) {
    const Bio certificate_bio(BIO_new(BIO_s_mem()));
    const Bio key_bio(BIO_new(BIO_s_secmem()));
    Require(certificate_bio && key_bio &&
                PEM_write_bio_X509(certificate_bio.get(), certificate) == 1 &&
                PEM_write_bio_PKCS8PrivateKey(key_bio.get(), key, nullptr, nullptr, 0, nullptr,
                                              nullptr) == 1,
            "no text");
    return {TextOf(certificate_bio.get()), TextOf(key_bio.get())};
}

}  // namespace

struct Authority::Parts {
    Key key;
    Certificate certificate;
};

Authority::Authority(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
Authority::~Authority() = default;
Authority::Authority(Authority&&) noexcept = default;

Authority Authority::Create(const std::string& name) {
    auto parts = std::make_unique<Parts>();
    parts->key = NewKey();
    parts->certificate = Blank(parts->key.get(), "kelp authority of " + name, kAuthorityDays);
    X509* const own = parts->certificate.get();
    Require(X509_set_issuer_name(own, X509_get_subject_name(own)) == 1, "no issuer");
    // It signs end entities only: no authority below this one can be made.
    Extend(own, own, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    Extend(own, own, NID_key_usage, "critical,keyCertSign,cRLSign");
    Extend(own, own, NID_subject_key_identifier, "hash");
    Require(X509_sign(own, parts->key.get(), EVP_sha256()) > 0, "no signature");
    return Authority(std::move(parts));
}

Identity Authority::Issue(Use use, const std::string& common_name,
                          const std::vector<std::string>& hosts) const {
    const Key key = NewKey();
    const Certificate certificate = Blank(key.get(), common_name, kIdentityDays);
    X509* const own = certificate.get();
    X509* const issuer = parts_->certificate.get();
    Require(X509_set_issuer_name(own, X509_get_subject_name(issuer)) == 1, "no issuer");
    Extend(own, issuer, NID_basic_constraints, "critical,CA:FALSE");
    Extend(own, issuer, NID_key_usage, "critical,digitalSignature");
    Extend(own, issuer, NID_ext_key_usage, use == Use::kServer ? "serverAuth" : "clientAuth");
    Extend(own, issuer, NID_subject_key_identifier, "hash");
    Extend(own, issuer, NID_authority_key_identifier, "keyid:always");
    if (!hosts.empty()) {
        Extend(own, issuer, NID_subject_alt_name, HostList(hosts));
    }
    Require(X509_sign(own, parts_->key.get(), EVP_sha256()) > 0, "no signature");
    return Pem(own, key.get());
}

Identity Authority::Own() const {
    return Pem(parts_->certificate.get(), parts_->key.get());
}

}  // namespace kelpd
