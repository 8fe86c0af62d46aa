// nemgr/read_system.cpp - the command kReadSystem: a single row.

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/element.h"
#include "nemgr/inventory/elements.h"
#include "nemgr/serve.h"
#include "nemgr/text.h"

namespace nemgr {
namespace {

const snmp::Oid kSystem{1, 3, 6, 1, 2, 1, 1};

snmp::Oid Scalar(unsigned long number) {
    return snmp::Append(snmp::Append(kSystem, number), 0);
}

void ReadSystem(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"element", "community", "version"});
    const snmp::Peer peer = PeerOf(arguments, Access::kRead);
    try {
        snmp::Session session(peer);
        const auto values =
            session.Get({Scalar(1), Scalar(2), Scalar(3), Scalar(4), Scalar(5), Scalar(6)});
        const auto text = [&](int i) { return DisplayText(snmp::OctetsOf(values[i].value)); };
        answer["sysDescr"] = text(0);
        answer["sysObjectID"] = text(1);
        answer["sysUpTime"] = snmp::NumberOf(values[2].value, 0) / 100;
        answer["sysContact"] = text(3);
        answer["sysName"] = text(4);
        answer["sysLocation"] = text(5);
        answer["##RowCount"] = 1;
        inventory::RememberSystem(NameOf(peer), answer);
    } catch (const snmp::Error& e) {
        throw FailureOf(e, peer);
    }
}

const Command<ReadSystem> g_readSystem(kReadSystem);

}  // namespace
}  // namespace nemgr
