// kelpd/config/config.h - what etc/kelp.json says to the daemon.
//
//     const Config config = ReadConfig("/opt/nms/oss");
//
// Members that are missing have the defaults below; members of other services are left
// alone. An unknown member of "gateway" or "limits" is refused: it is a misspelling.
//
// immutable
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kelpd/config/limits.h"

namespace kelpd {

/// Paths are absolute.
struct Config {
    std::string root;  ///< the installation root, OSS_ROOT
    std::string file;  ///< etc/kelp.json, for messages
    std::string listen = "127.0.0.1";
    std::uint16_t port = 18443;
    unsigned threads = 0;  ///< 0: as many as there are processors, four at most
    std::string ca_file;
    std::string certificate_file;
    std::string key_file;
    std::string health_socket;
    std::string run_folder;
    std::string log_file;  ///< empty: standard error
    std::string rest_groups_file;
    Limits limits;
};

/// Throws Refusal (kConfiguration) naming the file, the line and the member at fault.
Config ReadConfig(const std::string& root);

/// The same from the file's text, for a root that need not be there.
Config ParseConfig(const std::string& root, std::string_view text);

}  // namespace kelpd
