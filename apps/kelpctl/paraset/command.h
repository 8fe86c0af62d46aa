// kelpctl/paraset/command.h - kelpctl paraset encode, decode and show.
//
// Thread rule: one thread.
#pragma once

#include <string>

#include "kelpctl/paraset/coding.h"

namespace kelpctl {

struct ParaSetOptions {
    enum class Action { kEncode, kDecode, kShow } action = Action::kEncode;
    Form form;
    EncodeOptions encode;
    std::string description;  ///< file; empty: none given
    bool described = false;   ///< the form needs a description
    bool hex = false;         ///< octets are hexadecimal text
    std::string input = "-";  ///< "-": standard input
    std::string output;       ///< empty or "-": standard output
};

/// Reads, converts and writes; what went wrong is one line on standard error. Result: the
/// exit status.
int RunParaSet(const ParaSetOptions& options);

}  // namespace kelpctl
