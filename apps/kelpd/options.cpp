#include "kelpd/options.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "kelpd/status.h"

namespace kelpd {
namespace {

constexpr std::uint16_t kDefaultPort = 18443;

constexpr const char* kFooter = R"(
Exit status:
  0  done, or stopped by a signal
  1  the system failed
  2  wrong usage
  3  no installation root, or one of its files is missing or malformed
  4  the address cannot be listened on
  5  a key or certificate is missing, unreadable, unfit, or open to others
  6  the root belongs to another user, or others may write to it
  7  another kelpd serves the root
  8  init: the directory is not empty
)";

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& status) {
    Options options;
    options.init.port = kDefaultPort;
    CLI::App app("The platform on a single node.", "kelpd");
    app.footer(kFooter);
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("kelpd ") + KELPD_VERSION);

    CLI::App* init = app.add_subcommand("init", "write a new installation root");
    init->footer(kFooter);
    init->add_option("directory", options.init.folder, "where: new, or empty")->required();
    init->add_option("--host", options.init.hosts,
                     "name or address that the gateway is reached by, beside the loopback's; "
                     "may be repeated")
        ->type_name("NAME")
        ->allow_extra_args(false);
    init->add_option("--port", options.init.port, "port of the gateway")
        ->check(CLI::Range(1, 65535))
        ->capture_default_str();

    CLI::App* run = app.add_subcommand("run", "serve the installation root");
    run->footer(kFooter);
    run->add_option("--root", options.root, "the installation root (default: OSS_ROOT)")
        ->type_name("DIR");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        status = app.exit(asked);
        return std::nullopt;
    } catch (const CLI::ParseError& e) {
        const std::string what = e.what();
        std::cerr << "kelpd: " << what.substr(0, what.find('\n')) << " (see kelpd --help)\n";
        status = kUsage;
        return std::nullopt;
    }
    options.action = init->parsed() ? Options::Action::kInit : Options::Action::kRun;
    return options;
}

}  // namespace kelpd
