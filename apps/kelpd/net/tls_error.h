// kelpd/net/tls_error.h - what the TLS library complained of.
//
// thread-safe
#pragma once

#include <string>

namespace kelpd {

/// The newest complaint that this thread's queue holds, as one line; the queue is empty
/// afterwards, so that it does not explain a later failure. "unknown error" when there is none.
std::string TakeTlsErrors();

}  // namespace kelpd
