// kelpd/net/tls_channel.h - TLS straight on a socket: no buffers between the two.
//
// one thread
#pragma once

#include <memory>

#include "kelpd/net/channel.h"

struct ssl_ctx_st;

namespace kelpd {

/// The accepting side. Throws std::bad_alloc when the library has no memory.
std::unique_ptr<Channel> MakeTlsChannel(ssl_ctx_st* context, int socket);

}  // namespace kelpd
