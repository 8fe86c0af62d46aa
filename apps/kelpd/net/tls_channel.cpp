#include "kelpd/net/tls_channel.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <sys/socket.h>

#include <cerrno>
#include <new>
#include <system_error>

#include "kelpd/net/tls_error.h"

namespace kelpd {
namespace {

class TlsChannel final : public Channel {
  public:
    TlsChannel(SSL_CTX* context, int socket) : ssl_(SSL_new(context)), socket_(socket) {
        if (ssl_ == nullptr || SSL_set_fd(ssl_, socket) != 1) {
            SSL_free(ssl_);
            throw std::bad_alloc();
        }
        SSL_set_accept_state(ssl_);
    }
    ~TlsChannel() override { SSL_free(ssl_); }
    TlsChannel(const TlsChannel&) = delete;
    TlsChannel& operator=(const TlsChannel&) = delete;

    Io Handshake() override { return Judge(SSL_do_handshake(ssl_)); }

    Done Read(char* buffer, std::size_t size) override {
        std::size_t count = 0;
        const Io io = Judge(SSL_read_ex(ssl_, buffer, size, &count));
        return {io, count};
    }

    Done Write(const char* octets, std::size_t size) override {
        std::size_t count = 0;
        const Io io = Judge(SSL_write_ex(ssl_, octets, size, &count));
        return {io, count};
    }

    bool HasPending() const override { return SSL_has_pending(ssl_) == 1; }

    Io EndWriting() override {
        const int result = SSL_shutdown(ssl_);
        const Io io = result >= 0 ? Io::kDone : Judge(result);
        if (io == Io::kDone) {
            ::shutdown(socket_, SHUT_WR);
        }
        return io;
    }

    std::string PeerName() const override {
        const X509* const certificate = SSL_get0_peer_certificate(ssl_);
        if (certificate == nullptr) {
            return {};
        }
        const X509_NAME* const subject = X509_get_subject_name(certificate);
        const int at = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
        if (at < 0) {
            return {};
        }
        unsigned char* text = nullptr;
        const int size =
            ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at)));
        std::string name;
        if (size >= 0) {
            name.assign(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
            OPENSSL_free(text);
        }
        return name;
    }

    const std::string& why() const override { return why_; }

  private:
    Io Judge(int result) {
        if (result > 0) {
            return Io::kDone;
        }
        const int number = errno;
        switch (SSL_get_error(ssl_, result)) {
            case SSL_ERROR_WANT_READ:
                return Io::kWantRead;
            case SSL_ERROR_WANT_WRITE:
                return Io::kWantWrite;
            case SSL_ERROR_ZERO_RETURN:
                return Io::kEnd;
            case SSL_ERROR_SYSCALL:
                ERR_clear_error();
                why_ = std::generic_category().message(number);
                return Io::kFailed;
            default:
                break;
        }
        const bool cut = ERR_GET_REASON(ERR_peek_error()) == SSL_R_UNEXPECTED_EOF_WHILE_READING;
        why_ = cut ? "the peer closed the connection" : TakeTlsErrors();
        ERR_clear_error();
        return Io::kFailed;
    }

    SSL* const ssl_;
    const int socket_;
    std::string why_;
};

}  // namespace

std::unique_ptr<Channel> MakeTlsChannel(ssl_ctx_st* context, int socket) {
    return std::make_unique<TlsChannel>(context, socket);
}

}  // namespace kelpd
