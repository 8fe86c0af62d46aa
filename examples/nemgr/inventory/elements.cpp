#include "nemgr/inventory/elements.h"

#include <ctime>

#include "nemgr/inventory/database.h"

namespace nemgr::inventory {
namespace {

constexpr const char* kWriting = "the inventory cannot be written";

long long Now() {
    return std::time(nullptr);
}

TEValue TextOf(FrameUtil::CParaSet& node) {
    return {node.asString()};
}

}  // namespace

void RememberSystem(const std::string& address, FrameUtil::CParaSet& system) {
    const auto session = Lease();
    Require(session->Exec("INSERT INTO element"
                          " (address, sysName, sysDescr, sysContact, sysLocation, sysUpTime, seen)"
                          " VALUES ($1, $2, $3, $4, $5, $6, $7)"
                          " ON CONFLICT (address) DO UPDATE SET sysName = excluded.sysName,"
                          " sysDescr = excluded.sysDescr, sysContact = excluded.sysContact,"
                          " sysLocation = excluded.sysLocation, sysUpTime = excluded.sysUpTime,"
                          " seen = excluded.seen",
                          {address, TextOf(system["sysName"]), TextOf(system["sysDescr"]),
                           TextOf(system["sysContact"]), TextOf(system["sysLocation"]),
                           system["sysUpTime"].asDouble(), Now()}),
            kWriting);
}

void RememberInterfaces(const std::string& address, FrameUtil::CParaSet& interfaces) {
    const auto session = Lease();
    dao::CTransaction change(*session);
    Require(change.GetStatus(), kWriting);
    Require(session->Exec("INSERT INTO element (address, seen) VALUES ($1, $2)"
                          " ON CONFLICT (address) DO UPDATE SET seen = excluded.seen",
                          {address, Now()}),
            kWriting);
    Require(session->Exec("DELETE FROM interface WHERE address = $1", {address}), kWriting);
    dao::CStatement insert;
    Require(session->Prepare("INSERT INTO interface"
                             " (address, ifIndex, ifDescr, ifType, ifMtu, ifSpeed, ifPhysAddress)"
                             " VALUES ($1, $2, $3, $4, $5, $6, $7)",
                             insert),
            kWriting);
    for (int row = 0; row < interfaces.GetRowCount(); ++row) {
        FrameUtil::CParaSet cells("row");
        interfaces.GetRow(row, cells);
        Require(insert.Exec({address, cells["ifIndex"].asInt(), TextOf(cells["ifDescr"]),
                             cells["ifType"].asInt(), cells["ifMtu"].asInt(),
                             cells["ifSpeed"].asDouble(), TextOf(cells["ifPhysAddress"])}),
                kWriting);
    }
    Require(change.Commit(), kWriting);
}

bool Forget(const std::string& address) {
    const auto session = Lease();
    dao::CTransaction change(*session);
    Require(change.GetStatus(), kWriting);
    Require(session->Exec("DELETE FROM interface WHERE address = $1", {address}), kWriting);
    const dao::CExecStatus status =
        session->Exec("DELETE FROM element WHERE address = $1", {address});
    Require(status, kWriting);
    Require(change.Commit(), kWriting);
    return status.GetAffectedRows() != 0;
}

}  // namespace nemgr::inventory
