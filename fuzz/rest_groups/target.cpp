// Any octets as the gateway's answer about REST groups: what is taken has sound keys, spelled
// out as an answer again it reads the same, and none of it holds more memory than allowed.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "kelp/log.h"
#include "platform/restgroup_body.h"
#include "require.h"
#include "support/heap_meter.h"

namespace {

using FrameUtil::ReadRestGroups;
using FrameUtil::RestGroups;

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        char escape[8];
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20) {
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
            quoted += escape;
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string Spelled(const RestGroups& groups) {
    std::string body = "{\"groupmap\":{";
    for (const auto& [process, handles] : groups) {
        body += (body.back() == '{' ? "" : ",") + Quoted(std::to_string(process)) + ":{";
        for (const auto& [handle, name] : handles) {
            body += (body.back() == '{' ? "" : ",") + Quoted(std::to_string(handle)) + ':' +
                    Quoted(name);
        }
        body += '}';
    }
    return body + "}}";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kelp::log::SetLevel(kelp::log::Level::kOff);
    const std::string body(reinterpret_cast<const char*>(data), size);
    RestGroups groups = {{1, {{1, "from before"}}}};
    const std::size_t before = support::HeapInUse();
    const bool taken = ReadRestGroups(body, groups);
    Require(support::HeapInUse() <= before + 256 * size + support::kHeapNoise,
            "the groups hold too much memory");
    Require(taken || groups.empty(), "a refused answer leaves groups behind");
    for (const auto& [process, handles] : groups) {
        Require(process > 0 && !handles.empty(), "a process that must not be there");
        Require(handles.begin()->first >= 0, "a handle that must not be there");
    }
    if (taken) {
        RestGroups again;
        Require(ReadRestGroups(Spelled(groups), again), "a spelled answer is refused");
        Require(again == groups, "a spelled answer reads differently");
    }
    return 0;
}
