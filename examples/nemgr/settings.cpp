#include "nemgr/settings.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace nemgr {
namespace {

Settings& Mutable() {
    static Settings settings;
    return settings;
}

}  // namespace

const Settings& TheSettings() {
    return Mutable();
}

bool ParseSettings(int argc, const char* const* argv, int& status) {
    Settings& settings = Mutable();
    CLI::App app("An element manager: reads and writes network elements over SNMP.", "nemgr");
    app.option_defaults()->always_capture_default();
    app.add_option("--run-dir", settings.run_dir, "directory of the processes' sockets");
    app.add_option("--handle", settings.proc_handle, "process handle: which instance this is")
        ->check(CLI::Range(1, 65535));
    app.add_option("--element", settings.element, "element of commands that name none");
    app.add_option("--community", settings.community, "SNMP community for reading");
    app.add_option("--write-community", settings.write_community, "SNMP community for writing");
    app.add_option("--snmp-timeout-ms", settings.snmp_timeout_ms, "wait for one SNMP answer")
        ->check(CLI::Range(10, 60000));
    app.add_option("--snmp-retries", settings.snmp_retries, "repetitions of a lost SNMP packet")
        ->check(CLI::Range(0, 10));
    app.add_option("--element-timeout-ms", settings.element_timeout_ms,
                   "limit for all that one command asks of its element")
        ->check(CLI::Range(10, 600000));
    app.add_option("--registry", settings.registry, "directory with the IEEE registry");
    app.add_option("--database", settings.database,
                   "database of the installation's etc/kelp.json that keeps the inventory; "
                   "without one it is kept in memory");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        status = app.exit(e) == 0 ? 0 : 2;
        return false;
    }
    return true;
}

}  // namespace nemgr
