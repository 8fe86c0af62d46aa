#include "http/handle.h"

#include <poll.h>

#include <mutex>
#include <new>

#include "http/sigpipe.h"

namespace kelp::http {
namespace {

CURL* NewEasy() {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* const easy = initialised == CURLE_OK ? curl_easy_init() : nullptr;
    if (easy == nullptr) {
        throw std::bad_alloc();
    }
    return easy;
}

curl_socket_t SocketOf(CURL* easy) {
    curl_socket_t socket = CURL_SOCKET_BAD;
    return curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &socket) == CURLE_OK ? socket
                                                                               : CURL_SOCKET_BAD;
}

}  // namespace

Handle::Handle(std::shared_ptr<const Options> options, const TlsFiles& files,
               std::shared_ptr<Share> share, std::string_view authority)
    : options_(std::move(options)),
      files_(&files),
      share_(std::move(share)),
      authority_(authority),
      easy_(NewEasy()) {
    try {
        SetFixedOptions();
    } catch (...) {
        curl_easy_cleanup(easy_);
        throw;
    }
}

Handle::~Handle() {
    const WithoutSigPipe quiet;  // closing says good-bye to a server that may be gone
    curl_easy_cleanup(easy_);
}

void Handle::SetFixedOptions() {
    const Limits& limits = options_->limits;
    Set(easy_, CURLOPT_ERRORBUFFER, error_);
    Set(easy_, CURLOPT_SHARE, share_->get());
    Set(easy_, CURLOPT_NOSIGNAL, 1L);

    // Whom to trust: the installation's CA and nothing that the machine trusts besides. What
    // stands in the CA file counts only as a root: a server's certificate put there by mistake
    // does not become its own issuer.
    Set(easy_, CURLOPT_CAINFO, files_->ca.c_str());
    Set(easy_, CURLOPT_CAPATH, nullptr);
    Set(easy_, CURLOPT_SSL_VERIFYPEER, 1L);
    Set(easy_, CURLOPT_SSL_VERIFYHOST, 2L);
    Set(easy_, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    Set(easy_, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NO_PARTIALCHAIN));
    if (!files_->certificate.empty()) {
        Set(easy_, CURLOPT_SSLCERT, files_->certificate.c_str());
        Set(easy_, CURLOPT_SSLKEY, files_->key.c_str());
    }

    // Only where the caller said, only as it said.
    Set(easy_, CURLOPT_PROTOCOLS_STR, "https");
    Set(easy_, CURLOPT_FOLLOWLOCATION, 0L);
    Set(easy_, CURLOPT_PROXY, "");
    Set(easy_, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    Set(easy_, CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
    Set(easy_, CURLOPT_PATH_AS_IS, 1L);
    Set(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    // Unpacked octets go through the same limit as plain ones.
    Set(easy_, CURLOPT_ACCEPT_ENCODING, "gzip");

    Set(easy_, CURLOPT_LOW_SPEED_LIMIT, static_cast<long>(limits.low_speed_bytes));
    Set(easy_, CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits.low_speed_s));
    Set(easy_, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits.response_bytes));
    Set(easy_, CURLOPT_MAXCONNECTS, 1L);
    Set(easy_, CURLOPT_MAXAGE_CONN, static_cast<long>(limits.idle_s));
    Set(easy_, CURLOPT_TCP_KEEPALIVE, 1L);
}

bool Handle::HasConnection() const {
    return SocketOf(easy_) != CURL_SOCKET_BAD;
}

bool Handle::HasQuietConnection() const {
    const curl_socket_t socket = SocketOf(easy_);
    if (socket == CURL_SOCKET_BAD) {
        return false;
    }
    pollfd look{socket, POLLIN, 0};
    return ::poll(&look, 1, 0) == 0;
}

}  // namespace kelp::http
