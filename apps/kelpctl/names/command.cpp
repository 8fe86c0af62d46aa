#include "kelpctl/names/command.h"

#include <iostream>

#include "kelpctl/status.h"
#include "support/file.h"

namespace kelpctl {
namespace {

constexpr std::size_t kMostBytes = 1 << 20;

// The text on the command line, or a line of standard input without its end.
bool ReadText(const std::string& argument, std::string& text, std::string& why) {
    if (argument != "-") {
        text = argument;
        return true;
    }
    if (!app::ReadFile("-", kMostBytes, text, why)) {
        return false;
    }
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    if (text.find('\0') != std::string::npos) {
        why = "standard input: a zero octet";
        return false;
    }
    return true;
}

std::optional<std::string> Output(const NameOptions& options, std::string& why) {
    if (options.action == NameOptions::Action::kUidBuild) {
        return BuildUid(options.parent, options.pairs, why);
    }
    std::string text;
    if (!ReadText(options.text, text, why)) {
        return std::nullopt;
    }
    return options.action == NameOptions::Action::kGuid ? ShowGuid(text, why)
                                                        : ShowUid(text, options.json, why);
}

}  // namespace

int RunNames(const NameOptions& options) {
    std::string why;
    const auto output = Output(options, why);
    if (!output) {
        std::cerr << "kelpctl: " << why << '\n';
        return kUsage;
    }
    std::cout << *output;
    return kOk;
}

}  // namespace kelpctl
