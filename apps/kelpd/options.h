// kelpd/options.h - the command line.
//
// thread-compatible
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kelpd/init/init.h"

namespace kelpd {

struct Options {
    enum class Action { kInit, kRun } action = Action::kRun;
    InitOptions init;
    std::string root;  ///< run: the installation root; empty: OSS_ROOT
};

/// Nothing when the program ends here: help or version were asked for and printed, or
/// something is wrong and was said in one line on standard error; then `status` is the exit
/// status.
std::optional<Options> ParseOptions(int argc, const char* const* argv, int& status);

}  // namespace kelpd
