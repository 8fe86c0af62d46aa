// kelpd/net/tls_context.h - the gateway's side of TLS: who it is and whom it lets in.
//
// TLS 1.2 at least. A peer without a certificate that the installation's own authority signed
// for clients gets no further than the handshake.
//
// immutable, hence thread-safe, once it is made
#pragma once

#include <memory>
#include <string>

#include "kelpd/config/config.h"
#include "kelpd/net/channel.h"

struct ssl_ctx_st;

namespace kelpd {

class TlsContext {
  public:
    /// Reads the files. Throws Refusal (kKeys) naming the one at fault: unreadable, open to
    /// others, a key of another certificate, a certificate that has expired or that the
    /// authority has not signed.
    explicit TlsContext(const Config& config);
    ~TlsContext();
    TlsContext(const TlsContext&) = delete;
    TlsContext& operator=(const TlsContext&) = delete;

    std::unique_ptr<Channel> Accept(int socket) const;
    /// Days until the gateway's certificate expires.
    int days_left() const { return days_left_; }

  private:
    ssl_ctx_st* context_;
    int days_left_ = 0;
};

}  // namespace kelpd
