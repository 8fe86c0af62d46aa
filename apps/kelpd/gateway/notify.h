// kelpd/gateway/notify.h - tells the supervisor that started the process what it is at.
//
// thread-safe
#pragma once

#include <string_view>

namespace kelpd {

/// Sends `state` ("READY=1") to the socket that NOTIFY_SOCKET names. Without the variable, or
/// when nobody listens, nothing happens.
void NotifySupervisor(std::string_view state);

}  // namespace kelpd
