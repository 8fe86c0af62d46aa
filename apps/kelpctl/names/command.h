// kelpctl/names/command.h - kelpctl uid and kelpctl guid: names of resources in logs.
//
// Thread rule: thread-compatible.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kelpctl {

struct NameOptions {
    enum class Action { kUidParse, kUidBuild, kGuid } action = Action::kUidParse;
    std::string text;                ///< what to take apart; "-": a line of standard input
    std::vector<std::string> pairs;  ///< key=value
    std::string parent;              ///< what the built identifier begins with
    bool json = false;
};

/// Does what was asked for and returns the exit status.
int RunNames(const NameOptions& options);

/// The pairs of an identifier, in columns or as a JSON document, each with a line end.
/// Nothing, with `why`, when `text` is none.
std::optional<std::string> ShowUid(const std::string& text, bool json, std::string& why);

/// The identifier of `pairs` below `parent`, with a line end. Nothing, with `why`, when it
/// would not read back as them.
std::optional<std::string> BuildUid(const std::string& parent,
                                    const std::vector<std::string>& pairs, std::string& why);

/// The 16 bytes that `text` names, in several spellings; of a text too short, each 32 digits
/// that it may stand for. Nothing, with `why`, when it stands for none.
std::optional<std::string> ShowGuid(const std::string& text, std::string& why);

}  // namespace kelpctl
