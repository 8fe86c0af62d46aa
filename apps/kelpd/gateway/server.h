// kelpd/gateway/server.h - the daemon at work: its listeners, its threads, its end.
//
// one thread
#pragma once

#include <string>

#include "kelpd/config/config.h"

namespace kelpd {

/// Serves until a stop signal comes, then until what runs is answered; returns the exit
/// status. Prints one line to standard output once it serves. Throws Refusal when it cannot
/// begin.
int Serve(const Config& config);

}  // namespace kelpd
