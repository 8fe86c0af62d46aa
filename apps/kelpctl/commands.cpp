#include "kelpctl/commands.h"

#include <algorithm>
#include <limits>

#include "support/file.h"
#include "support/json.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

constexpr std::int64_t kMost16 = std::numeric_limits<std::uint16_t>::max();
constexpr std::int64_t kMost32 = std::numeric_limits<std::uint32_t>::max();

bool ParseCommand(const Json::Value& entry, Command& command, std::string& why) {
    const auto name = app::JsonText(entry, "name");
    const auto code = app::JsonInteger(entry, "code", 0, kMost32);
    if (!name || name->empty() || !code) {
        why = "a command without a \"name\" or a \"code\" of 32 bits";
        return false;
    }
    command.name = *name;
    command.code = static_cast<std::uint32_t>(*code);
    command.help = app::JsonText(entry, "help").value_or("");
    const Json::Value* arguments = app::JsonMember(entry, "arguments");
    if (arguments != nullptr && arguments->isObject()) {
        for (const std::string& argument : arguments->getMemberNames()) {
            command.arguments.emplace_back(
                argument, app::JsonText(*arguments, argument.c_str()).value_or(""));
        }
    }
    return true;
}

bool ParseResults(const Json::Value& results, Process& process, std::string& why) {
    if (!results.isObject()) {
        why = "\"results\" is no object";
        return false;
    }
    for (const std::string& code : results.getMemberNames()) {
        const auto number = app::ParseInteger(code, std::numeric_limits<std::int32_t>::min(),
                                              std::numeric_limits<std::int32_t>::max());
        const auto text = app::JsonText(results, code.c_str());
        if (!number || !text) {
            why = "result '" + app::ShowText(code) + "' is no number with a text";
            return false;
        }
        process.results[*number] = *text;
    }
    return true;
}

}  // namespace

const Command* Process::Find(const std::string& wanted) const {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const Command& c) { return c.name == wanted; });
    return found == commands.end() ? nullptr : &*found;
}

const Command* Process::Find(std::uint32_t code) const {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const Command& c) { return c.code == code; });
    return found == commands.end() ? nullptr : &*found;
}

bool ParseCommands(const std::string& text, Process& process, std::string& why) {
    const auto root = app::ParseJson(text, &why);
    if (!root) {
        return false;
    }
    const auto name = app::JsonText(*root, "name");
    const auto type = app::JsonInteger(*root, "procType", 1, kMost16);
    const Json::Value* commands = app::JsonMember(*root, "commands");
    if (!name || name->empty() || !type || commands == nullptr || !commands->isArray()) {
        why = "no object with a \"name\", a \"procType\" of 16 bits and a list \"commands\"";
        return false;
    }
    Process read{*name, static_cast<std::uint16_t>(*type), {}, {}};
    for (const Json::Value& entry : *commands) {
        if (!ParseCommand(entry, read.commands.emplace_back(), why)) {
            return false;
        }
    }
    const Json::Value* results = app::JsonMember(*root, "results");
    if (results != nullptr && !ParseResults(*results, read, why)) {
        return false;
    }
    process = std::move(read);
    return true;
}

bool ReadCommandsFile(const std::string& path, Process& process, std::string& why) {
    std::string text;
    if (!app::ReadFile(path, app::kJsonLimitBytes, text, why)) {
        return false;
    }
    if (!ParseCommands(text, process, why)) {
        why = path + ": " + why;
        return false;
    }
    return true;
}

std::optional<Target> FindTarget(const std::string& text, const std::vector<Process>& processes,
                                 std::string& why) {
    const std::size_t dot = text.rfind('.');
    const std::string who = text.substr(0, dot);
    Target target;
    const auto type = app::ParseInteger(who, 1, kMost16);
    for (const Process& process : processes) {
        if (type ? process.proc_type == *type : process.name == who) {
            target.process = &process;
            target.proc_type = process.proc_type;
            break;
        }
    }
    if (type) {
        target.proc_type = static_cast<std::uint16_t>(*type);
    } else if (target.process == nullptr) {
        why = "unknown process '" + app::ShowText(who) +
              "': neither a process type from 1 to 65535 nor named by a commands file";
        return std::nullopt;
    }
    if (dot != std::string::npos) {
        const auto handle = app::ParseInteger(text.substr(dot + 1), 0, kMost16);
        if (!handle) {
            why = "bad handle in '" + app::ShowText(text) + "': not a number from 0 to 65535";
            return std::nullopt;
        }
        target.handle = static_cast<std::uint16_t>(*handle);
    }
    return target;
}

std::optional<std::uint32_t> FindCommand(const std::string& text, const Target& target,
                                         std::string& why) {
    if (const auto code = app::ParseInteger(text, 0, kMost32)) {
        return static_cast<std::uint32_t>(*code);
    }
    const Command* command = target.process != nullptr ? target.process->Find(text) : nullptr;
    if (command == nullptr) {
        why = "unknown command '" + app::ShowText(text) +
              "': neither a code of 32 bits nor named by a commands file of that process";
        return std::nullopt;
    }
    return command->code;
}

}  // namespace kelpctl
