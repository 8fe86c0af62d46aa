// kelpd/config/node_list.h - the nodes of the installation, by which its processes tell whom
// they trust without a token.
//
// thread-safe
#pragma once

#include <string>

namespace kelpd {

/// Looks at manager/etc/sysconf/nodelists.json beside `root`, whose form docs/kelpd.md has.
/// Throws Refusal (kConfiguration) naming the file, the line and what is wrong with it. It is
/// not an error if the file is not there: nobody is trusted then.
void RequireSoundNodeList(const std::string& root);

}  // namespace kelpd
