// kelpctl/options.h - the command line.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kelpctl/arguments.h"
#include "kelpctl/names/command.h"
#include "kelpctl/paraset/command.h"
#include "kelpctl/table_text.h"

namespace kelpctl {

struct Options {
    enum class Action { kCall, kList, kParaSet, kNames } action = Action::kCall;
    std::vector<std::string> commands_files;
    std::string target;
    std::string command;
    std::vector<std::string> pairs;
    std::string arguments_file;  ///< empty: none
    std::string run_dir;         ///< empty: where the platform looks by itself
    int timeout_seconds = 10;
    std::int32_t user_id = 0;
    std::size_t most_rows = kAllRows;
    bool json = false;
    bool verbose = false;
    ParaSetOptions paraset;  ///< for kParaSet
    NameOptions names;       ///< for kNames
};

/// Reads the command line and KELPCTL_COMMANDS. Nothing when the program ends here: help
/// or version were asked for and printed, or something is wrong and was said in one line
/// on standard error; then `status` is the exit status.
std::optional<Options> ParseOptions(int argc, const char* const* argv, int& status);

}  // namespace kelpctl
