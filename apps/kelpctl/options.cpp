#include "kelpctl/options.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <limits>

#include "kelpctl/names/options.h"
#include "kelpctl/paraset/options.h"
#include "kelpctl/status.h"

namespace kelpctl {
namespace {

constexpr const char* kFooter = R"(
Arguments: key=value is an integer if it looks like one (42), a double if it looks like
one with a decimal point (1.5), else text (also 007); key:=json takes a JSON text, number,
true or false (key:="42" is text).

Exit status:
  0        the command succeeded ("##retCode" 0)
  10..125  the command's own "##retCode"
  1        any other "##retCode" but 0
  2        wrong usage: command line, file, unknown name, malformed argument
  3        the process is not running, cannot be reached or ended meanwhile
  4        no answer within the time-out
  5        the process's platform answered instead of the command: it knows no such
           command, refused the request, or the command failed inside it
  6        the answer is no common response
(kelpctl paraset has its own, see kelpctl paraset --help)
)";

void AddFiles(CLI::App& app, Options& options) {
    app.add_option("--commands", options.commands_files,
                   "file that names a process and its commands; may be repeated "
                   "(KELPCTL_COMMANDS: such files, with ':' between)")
        ->type_name("FILE")
        ->allow_extra_args(false);
}

void DescribeCall(CLI::App& call, Options& options) {
    AddFiles(call, options);
    call.add_option("target", options.target, "process: name or type, and .handle if wanted")
        ->required();
    call.add_option("command", options.command, "command: name or code")->required();
    call.add_option("argument", options.pairs, "key=value or key:=json");
    call.add_option("--args", options.arguments_file,
                    "file with a JSON object of further arguments; -: standard input")
        ->type_name("FILE");
    call.add_option("--timeout", options.timeout_seconds, "seconds to wait for the answer")
        ->check(CLI::Range(1, 86400))
        ->capture_default_str();
    call.add_option("--run-dir", options.run_dir, "directory of the processes' sockets");
    call.add_option("--user", options.user_id, "\"##UserID\" of the request")
        ->capture_default_str();
    call.add_option("--rows", options.most_rows, "rows of a table to show at most")
        ->check(CLI::Range(std::size_t{1}, std::numeric_limits<std::size_t>::max()))
        ->type_name("N");
    call.add_flag("--json", options.json, "print the answer as JSON");
    call.add_flag("--verbose,-v", options.verbose, "say what went over the wire");
}

void SplitFiles(const char* list, std::vector<std::string>& files) {
    for (std::string_view rest = list != nullptr ? list : ""; !rest.empty();) {
        const std::size_t colon = rest.find(':');
        if (colon != 0) {
            files.emplace_back(rest.substr(0, colon));
        }
        rest.remove_prefix(colon == std::string_view::npos ? rest.size() : colon + 1);
    }
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& status) {
    Options options;
    CLI::App app(
        "Calls commands of processes on the platform's message bus, and converts what they "
        "exchange.",
        "kelpctl");
    app.footer(kFooter);
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("kelpctl ") + KELPCTL_VERSION);
    CLI::App* call = app.add_subcommand("call", "send a command and print its answer");
    call->footer(kFooter);
    DescribeCall(*call, options);
    CLI::App* list = app.add_subcommand("list", "print what the commands files name");
    AddFiles(*list, options);
    const ParaSetCommandLine paraset(app);
    const NamesCommandLine names(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        status = app.exit(asked);
        return std::nullopt;
    } catch (const CLI::ParseError& e) {
        std::cerr << "kelpctl: " << FirstLine(e.what()) << " (see kelpctl --help)\n";
        status = kUsage;
        return std::nullopt;
    }
    if (paraset.Parsed()) {
        std::string why;
        auto asked = paraset.Options(why);
        if (!asked) {
            std::cerr << "kelpctl: " << why << " (see kelpctl paraset --help)\n";
            status = kUsage;
            return std::nullopt;
        }
        options.action = Options::Action::kParaSet;
        options.paraset = *std::move(asked);
        return options;
    }
    if (names.Parsed()) {
        options.action = Options::Action::kNames;
        options.names = names.Options();
        return options;
    }
    options.action = list->parsed() ? Options::Action::kList : Options::Action::kCall;
    // No thread runs yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    SplitFiles(std::getenv("KELPCTL_COMMANDS"), options.commands_files);
    return options;
}

}  // namespace kelpctl
