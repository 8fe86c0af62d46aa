// kelpctl - calls commands of processes on the message bus, and converts what they
// exchange. See docs/kelpctl.md.

#include <exception>
#include <iostream>

#include "kelpctl/call.h"
#include "kelpctl/commands.h"
#include "kelpctl/list.h"
#include "kelpctl/names/command.h"
#include "kelpctl/options.h"
#include "kelpctl/paraset/command.h"
#include "kelpctl/status.h"

namespace {

int Run(int argc, const char* const* argv) {
    int status = kelpctl::kOk;
    const auto options = kelpctl::ParseOptions(argc, argv, status);
    if (!options) {
        return status;
    }
    if (options->action == kelpctl::Options::Action::kParaSet) {
        return kelpctl::RunParaSet(options->paraset);
    }
    if (options->action == kelpctl::Options::Action::kNames) {
        return kelpctl::RunNames(options->names);
    }
    std::vector<kelpctl::Process> processes;
    for (const std::string& file : options->commands_files) {
        std::string why;
        if (!kelpctl::ReadCommandsFile(file, processes.emplace_back(), why)) {
            std::cerr << "kelpctl: " << why << '\n';
            return kelpctl::kUsage;
        }
    }
    if (options->action == kelpctl::Options::Action::kList) {
        kelpctl::PrintList(processes, std::cout);
        return kelpctl::kOk;
    }
    return kelpctl::Call(*options, processes);
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        return Run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "kelpctl: " << e.what() << '\n';
        return kelpctl::kUnreadable;
    }
}
