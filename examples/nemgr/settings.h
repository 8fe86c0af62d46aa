// nemgr/settings.h - what nemgr is started with.
#pragma once

#include <cstdint>
#include <string>

namespace nemgr {

struct Settings {
    std::string run_dir;            ///< empty: where the platform looks by itself
    std::uint16_t proc_handle = 1;  ///< instance
    std::string element = "127.0.0.1:161";
    std::string community = "public";
    std::string write_community = "private";
    int snmp_timeout_ms = 1000;  ///< for the answer to one packet
    int snmp_retries = 1;
    int element_timeout_ms = 20000;  ///< for all that one command asks of its element
    std::string registry = "/usr/share/ieee-data";
    /// Of the installation's configuration; empty: one in memory, for as long as nemgr runs.
    std::string database;
};

/// Immutable once the workers run.
const Settings& TheSettings();

/// Reads the command line into TheSettings(). False when the program ends here, with exit
/// status `status`: what there was to say has been printed.
bool ParseSettings(int argc, const char* const* argv, int& status);

}  // namespace nemgr
