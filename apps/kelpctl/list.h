// kelpctl/list.h - kelpctl list.
#pragma once

#include <ostream>
#include <vector>

#include "kelpctl/commands.h"

namespace kelpctl {

/// Writes each process with its commands, their codes, help and arguments.
void PrintList(const std::vector<Process>& processes, std::ostream& out);

}  // namespace kelpctl
