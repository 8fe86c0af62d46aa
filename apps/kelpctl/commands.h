// kelpctl/commands.h - the files that give processes and commands their names.
//
// A commands file is one JSON object:
//
//     {"name": "nemgr", "procType": 3001,
//      "commands": [{"name": "readSystem", "code": 30010, "help": "...",
//                    "arguments": {"element": "host:port of the element"}}],
//      "results": {"20": "the element does not answer"}}
//
// "help", "arguments" and "results" may be left out. A target and a command may always be
// given as numbers instead.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelpctl {

struct Command {
    std::string name;
    std::uint32_t code = 0;
    std::string help;
    std::vector<std::pair<std::string, std::string>> arguments;  ///< name, meaning
};

/// A type of process: what one commands file describes.
struct Process {
    std::string name;
    std::uint16_t proc_type = 0;
    std::vector<Command> commands;
    std::map<std::int64_t, std::string> results;  ///< result code, its text

    const Command* Find(const std::string& name) const;
    const Command* Find(std::uint32_t code) const;
};

/// Reads one commands file. False, with `why` naming file and fault, when it is none.
bool ReadCommandsFile(const std::string& path, Process& process, std::string& why);

/// The same from its text; `why` names no file.
bool ParseCommands(const std::string& text, Process& process, std::string& why);

/// Where a request goes.
struct Target {
    std::uint16_t proc_type = 0;
    std::uint16_t handle = 0;          ///< 0: the only or the lowest running instance
    const Process* process = nullptr;  ///< what describes it, if anything does
};

/// The target that `text` spells: a process's name or type, then, if wanted, a dot and a
/// handle: "nemgr", "3001", "nemgr.2". Nothing, with `why`, when there is no such name.
std::optional<Target> FindTarget(const std::string& text, const std::vector<Process>& processes,
                                 std::string& why);

/// The code of the command that `text` names or spells; nothing, with `why`, for an
/// unknown name or a number that is no 32-bit code.
std::optional<std::uint32_t> FindCommand(const std::string& text, const Target& target,
                                         std::string& why);

}  // namespace kelpctl
