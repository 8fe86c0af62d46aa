// kelpctl/names/options.h - the command line of kelpctl uid and kelpctl guid.
//
// Thread rule: thread-compatible.
#pragma once

#include <CLI/CLI.hpp>

#include "kelpctl/names/command.h"

namespace kelpctl {

class NamesCommandLine {
  public:
    /// Adds `uid` with what is below it and `guid` to `app`, which must not outlive this.
    explicit NamesCommandLine(CLI::App& app);

    bool Parsed() const { return uid_->parsed() || guid_->parsed(); }
    /// What was asked for.
    NameOptions Options() const;

  private:
    CLI::App* uid_;
    CLI::App* build_;
    CLI::App* guid_;
    NameOptions options_;
};

}  // namespace kelpctl
