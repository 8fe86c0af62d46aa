// nemgr/list_inventory.cpp - the commands kListElements, kListInterfaces and kForgetElement:
// what the database knows, read with the cursor and answered as rows.

#include <array>
#include <ctime>
#include <string>

#include "nemgr/arguments.h"
#include "nemgr/commands.h"
#include "nemgr/element.h"
#include "nemgr/inventory/database.h"
#include "nemgr/inventory/elements.h"
#include "nemgr/results.h"
#include "nemgr/serve.h"

namespace nemgr {
namespace {

std::string Utc(long long seconds) {
    const std::time_t time = seconds;
    std::tm parts{};
    std::array<char, 32> text{};
    gmtime_r(&time, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

void ListElements(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {});
    FrameUtil::CFrmTableObject elements;
    inventory::Select(*inventory::Lease(),
                      "SELECT e.address, e.sysName, e.sysLocation, e.seen, COUNT(i.ifIndex)"
                      " FROM element e LEFT JOIN interface i ON i.address = e.address"
                      " GROUP BY e.address, e.sysName, e.sysLocation, e.seen ORDER BY e.address",
                      {}, elements);
    answer["##RowCount"] = 0;  // also of an empty inventory
    for (int number = 0; elements() != nullptr; ++number) {
        std::string address;
        std::string name;
        std::string location;
        long seen = 0;
        int interfaces = 0;
        elements >> address >> name >> location >> seen >> interfaces;
        FrameUtil::CParaSet row("row");
        row["element"] = address;
        row["sysName"] = name;
        row["sysLocation"] = location;
        row["interfaces"] = interfaces;
        row["seen"] = Utc(seen);
        answer.AddRow(number, row);
    }
}

// The element as the inventory knows it.
std::string AddressOf(const Arguments& arguments) {
    return NameOf(PeerOf(arguments, Access::kRead));
}

[[noreturn]] void FailAsUnknown(const std::string& address) {
    throw CommandFailure(Result::kUnknownElement, address);
}

void ListInterfaces(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"element"});
    const std::string address = AddressOf(arguments);
    FrameUtil::CFrmTableObject interfaces;
    {
        const auto session = inventory::Lease();
        inventory::Select(*session, "SELECT address FROM element WHERE address = $1", {address},
                          interfaces);
        if (interfaces.GetRowCount() == 0) {
            FailAsUnknown(address);
        }
        inventory::Select(*session,
                          "SELECT ifIndex, ifDescr, ifType, ifMtu, ifSpeed, ifPhysAddress"
                          " FROM interface WHERE address = $1 ORDER BY ifIndex",
                          {address}, interfaces);
    }
    answer["##RowCount"] = 0;
    for (int number = 0; interfaces() != nullptr; ++number) {
        int index = 0;
        int type = 0;
        int mtu = 0;
        double speed = 0;
        std::string descr;
        std::string phys_address;
        interfaces >> index >> descr >> type >> mtu >> speed >> phys_address;
        FrameUtil::CParaSet row("row");
        row["ifIndex"] = index;
        row["ifDescr"] = descr;
        row["ifType"] = type;
        row["ifMtu"] = mtu;
        row["ifSpeed"] = speed;
        row["ifPhysAddress"] = phys_address;
        answer.AddRow(number, row);
    }
}

void ForgetElement(FrameUtil::CParaSet& request, FrameUtil::CParaSet& answer) {
    const Arguments arguments(request, {"element"});
    const std::string address = AddressOf(arguments);
    if (!inventory::Forget(address)) {
        FailAsUnknown(address);
    }
    answer["element"] = address;
    answer["##RowCount"] = 1;
}

const Command<ListElements> g_listElements(kListElements);
const Command<ListInterfaces> g_listInterfaces(kListInterfaces);
const Command<ForgetElement> g_forgetElement(kForgetElement);

}  // namespace
}  // namespace nemgr
