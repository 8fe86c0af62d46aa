// kelpctl/paraset/options.h - the command line of kelpctl paraset.
//
// Thread rule: thread-compatible.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "kelpctl/paraset/command.h"

namespace kelpctl {

/// The three commands below `paraset`, as CLI11 fills them in.
class ParaSetCommandLine {
  public:
    /// Adds `paraset` and what is below it to `app`, which must not outlive this.
    explicit ParaSetCommandLine(CLI::App& app);

    bool Parsed() const { return paraset_->parsed(); }
    /// What was asked for. Nothing, with `why`, when the options contradict one another.
    std::optional<ParaSetOptions> Options(std::string& why) const;

  private:
    void AddForm(CLI::App& command);

    CLI::App* paraset_;
    CLI::App* encode_;
    CLI::App* decode_;
    CLI::App* show_;
    ParaSetOptions options_;
    std::optional<int> key_;
    std::optional<int> type_;
    std::optional<int> desc_;
    std::optional<int> tag_;
    bool request_ = false;
    bool response_ = false;
};

}  // namespace kelpctl
