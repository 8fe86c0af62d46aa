// kelpctl/call.h - kelpctl call.
#pragma once

#include <vector>

#include "kelpctl/commands.h"
#include "kelpctl/options.h"

namespace kelpctl {

/// Sends the command, prints its answer to standard output and what went wrong, in one
/// line, to standard error. Result: the exit status.
int Call(const Options& options, const std::vector<Process>& processes);

}  // namespace kelpctl
