// kelpd/init/init.h - a new installation root.
//
// one thread
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace kelpd {

struct InitOptions {
    std::string folder;
    std::vector<std::string> hosts;  ///< names and addresses beside those of the loopback
    std::uint16_t port = 0;          ///< of the gateway
};

/// Writes the installation and prints to `out` what a shell has to export. Throws Refusal;
/// nothing has been made then.
void Init(const InitOptions& options, std::ostream& out);

}  // namespace kelpd
