// The server that all contestants ask: a process with a thread a connection that answers
// every request with the same body, as fast as OpenSSL lets it.
#pragma once

#include <sys/types.h>

#include <string>

namespace bench {

class TlsServer {
  public:
    /// Makes certificates in `folder` and starts the process. To be made before any thread.
    TlsServer(const std::string& folder, std::string body);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    const std::string& url() const { return url_; }
    /// How many TLS handshakes it has completed.
    long Handshakes() const;

  private:
    struct Shared;

    Shared* shared_;
    pid_t process_;
    std::string url_;
};

}  // namespace bench
