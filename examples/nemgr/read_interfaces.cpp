// nemgr/read_interfaces.cpp - the command kReadInterfaces: a table, built row by row.

#include <limits>
#include <map>

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/element.h"
#include "nemgr/inventory/elements.h"
#include "nemgr/rates.h"
#include "nemgr/serve.h"
#include "nemgr/snmp/walk.h"
#include "nemgr/text.h"

namespace nemgr {
namespace {

const snmp::Oid kSysUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};
const snmp::Oid kInterfaces{1, 3, 6, 1, 2, 1, 2, 2, 1};            // ifEntry
const snmp::Oid kMoreOnInterfaces{1, 3, 6, 1, 2, 1, 31, 1, 1, 1};  // ifXEntry

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

using Column = std::map<long, snmp::Value>;

// The columns that a row is made of, by ifIndex.
struct Columns {
    Column index, descr, type, mtu, speed, address;
    Column in, out, wide_in, wide_out;
};

Columns ReadColumns(snmp::Session& session) {
    const auto read = [&](const snmp::Oid& table, unsigned long column) {
        return ReadColumn(session, snmp::Append(table, column));
    };
    Columns columns;
    columns.index = read(kInterfaces, 1);
    columns.descr = read(kInterfaces, 2);
    columns.type = read(kInterfaces, 3);
    columns.mtu = read(kInterfaces, 4);
    columns.speed = read(kInterfaces, 5);
    columns.address = read(kInterfaces, 6);
    columns.in = read(kInterfaces, 10);
    columns.out = read(kInterfaces, 16);
    columns.wide_in = read(kMoreOnInterfaces, 6);
    columns.wide_out = read(kMoreOnInterfaces, 10);
    return columns;
}

const snmp::Value& Cell(const Column& column, long index) {
    static const snmp::Value none;
    const auto found = column.find(index);
    return found != column.end() ? found->second : none;
}

double Number(const Column& column, long index) {
    return snmp::NumberOf(Cell(column, index), kUnknown);
}

// What does not fit the row's integers is an element's fault, and shows as 0.
int Integer(const Column& column, long index) {
    const auto* value = std::get_if<std::int64_t>(&Cell(column, index));
    const bool fits = value != nullptr && *value >= std::numeric_limits<int>::min() &&
                      *value <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(*value) : 0;
}

std::string Octets(const Column& column, long index) {
    return snmp::OctetsOf(Cell(column, index));
}

Counters CountersOf(const Columns& columns, long index) {
    const bool wide = columns.wide_in.count(index) != 0 && columns.wide_out.count(index) != 0;
    return {Number(wide ? columns.wide_in : columns.in, index),
            Number(wide ? columns.wide_out : columns.out, index), wide};
}

void FillRow(FrameUtil::CParaSet& row, const Columns& columns, long index, const Counters& counters,
             const Rates& rates) {
    row["ifIndex"] = index;
    row["ifDescr"] = DisplayText(Octets(columns.descr, index));
    row["ifType"] = Integer(columns.type, index);
    row["ifMtu"] = Integer(columns.mtu, index);
    row["ifSpeed"] = Number(columns.speed, index);
    row["ifPhysAddress"] = HexText(Octets(columns.address, index));
    row["ifInOctets"] = counters.in;
    row["ifOutOctets"] = counters.out;
    row["ifInRate"] = rates.in;
    row["ifOutRate"] = rates.out;
}

RateHistory& TheHistory() {
    static RateHistory history;
    return history;
}

void ReadInterfaces(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"element", "community", "version"});
    const snmp::Peer peer = PeerOf(arguments, Access::kRead);
    try {
        snmp::Session session(peer);
        Reading reading;
        reading.uptime_s = snmp::NumberOf(session.Get({kSysUpTime})[0].value, 0) / 100;
        const Columns columns = ReadColumns(session);
        for (const auto& [index, value] : columns.index) {
            reading.interfaces[index] = CountersOf(columns, index);
        }
        const auto rates = TheHistory().Update(peer.address, reading);
        answer["##RowCount"] = 0;  // also of an element without interfaces
        int row_number = 0;
        for (const auto& [index, counters] : reading.interfaces) {
            FrameUtil::CParaSet row("row");
            FillRow(row, columns, index, counters, rates.at(index));
            answer.AddRow(row_number++, row);
        }
        inventory::RememberInterfaces(NameOf(peer), answer);
    } catch (const snmp::Error& e) {
        throw FailureOf(e, peer);
    }
}

const Command<ReadInterfaces> g_readInterfaces(kReadInterfaces);

}  // namespace
}  // namespace nemgr
