#include <algorithm>
#include <utility>

#include "frameutil/strutil.h"
#include "kelpctl/names/command.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using FrameUtil::StrUIDFactory;
using FrameUtil::StrUIDParser;
using FrameUtil::UIDFault;
using Pairs = std::vector<std::pair<std::string, std::string>>;

// False, with `why`, when `text` is no identifier.
bool ReadPairs(const std::string& text, Pairs& pairs, std::string& why) {
    StrUIDParser parser;
    UIDFault fault;
    if (!parser.Parse(text.c_str(), &fault)) {
        why = "'" + app::ShowText(text) + "' is no identifier: at character " +
              std::to_string(fault.offset + 1) + ": " + fault.reason;
        return false;
    }
    while (parser.Next()) {
        pairs.emplace_back(parser.Type(), parser.StrValue());
    }
    return true;
}

// Identifiers hold printable ASCII only.
std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + '"';
}

std::string Json(const std::string& text, const Pairs& pairs) {
    std::string json = "{\"class\":" + Quoted(pairs.empty() ? "" : pairs.back().first) +
                       ",\"parent\":" + Quoted(StrUIDParser::GetParentFDN(text.c_str())) +
                       ",\"pairs\":[";
    const char* before = "";
    for (const auto& [key, value] : pairs) {
        json.append(before).append("[").append(Quoted(key)).append(",").append(Quoted(value));
        json += ']';
        before = ",";
    }
    return json + "]}\n";
}

std::string Columns(const Pairs& pairs) {
    std::size_t width = 0;
    for (const auto& pair : pairs) {
        width = std::max(width, pair.first.size());
    }
    std::string columns;
    for (const auto& [key, value] : pairs) {
        columns.append(key).append(width + 2 - key.size(), ' ').append(value).append("\n");
    }
    return columns;
}

}  // namespace

std::optional<std::string> ShowUid(const std::string& text, bool json, std::string& why) {
    Pairs pairs;
    if (!ReadPairs(text, pairs, why)) {
        return std::nullopt;
    }
    return json ? Json(text, pairs) : Columns(pairs);
}

std::optional<std::string> BuildUid(const std::string& parent,
                                    const std::vector<std::string>& pairs, std::string& why) {
    Pairs wanted;
    if (!ReadPairs(parent, wanted, why)) {
        return std::nullopt;
    }
    StrUIDFactory factory;
    factory.AppendFDN(parent.c_str());
    for (const std::string& pair : pairs) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos) {
            why = "malformed pair '" + app::ShowText(pair) + "': expected key=value";
            return std::nullopt;
        }
        wanted.emplace_back(pair.substr(0, equals), pair.substr(equals + 1));
        const auto& [key, value] = wanted.back();
        StrUIDFactory alone;
        const std::string text = alone.Append(key.c_str(), value.c_str()).GetStr();
        StrUIDParser parser;
        UIDFault fault;
        if (text.empty() || !parser.Parse(text.c_str(), &fault)) {
            why = "malformed pair '" + app::ShowText(pair) + "': " +
                  (text.empty() ? "a key is no number and of printable ASCII" : fault.reason);
            return std::nullopt;
        }
        factory.Append(key.c_str(), value.c_str());
    }
    const std::string built = factory.GetStr();
    Pairs read;
    if (!ReadPairs(built, read, why)) {
        return std::nullopt;
    }
    if (read != wanted) {
        why = "'" + app::ShowText(built) + "' would not read back as these pairs";
        return std::nullopt;
    }
    return built + "\n";
}

}  // namespace kelpctl
