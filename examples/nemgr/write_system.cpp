// nemgr/write_system.cpp - the command kWriteSystem: a write that the element may refuse.

#include <utility>
#include <vector>

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/element.h"
#include "nemgr/serve.h"
#include "nemgr/text.h"

namespace nemgr {
namespace {

const snmp::Oid kSysContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const snmp::Oid kSysLocation{1, 3, 6, 1, 2, 1, 1, 6, 0};

void WriteSystem(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"contact", "location", "element", "community", "version"});
    std::vector<std::pair<snmp::Oid, std::string>> values;
    if (const auto contact = arguments.Text("contact")) {
        values.emplace_back(kSysContact, *contact);
    }
    if (const auto location = arguments.Text("location")) {
        values.emplace_back(kSysLocation, *location);
    }
    if (values.empty()) {
        throw CommandFailure(Result::kBadArgument, "neither contact nor location is given");
    }
    const snmp::Peer peer = PeerOf(arguments, Access::kWrite);
    try {
        snmp::Session session(peer);
        session.Set(values);
        const auto now = session.Get({kSysContact, kSysLocation});
        answer["sysContact"] = DisplayText(snmp::OctetsOf(now[0].value));
        answer["sysLocation"] = DisplayText(snmp::OctetsOf(now[1].value));
        answer["##RowCount"] = 1;
    } catch (const snmp::Error& e) {
        throw FailureOf(e, peer);
    }
}

const Command<WriteSystem> g_writeSystem(kWriteSystem);

}  // namespace
}  // namespace nemgr
