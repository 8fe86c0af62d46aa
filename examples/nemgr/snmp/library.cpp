#include "nemgr/snmp/library.h"

#include <cstdlib>

// The order of these two is net-snmp's rule.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

namespace nemgr::snmp {
namespace {

constexpr const char* kName = "nemgr";

constexpr int kOn[] = {
    NETSNMP_DS_LIB_DONT_READ_CONFIGS,
    NETSNMP_DS_LIB_DONT_PERSIST_STATE,
    NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD,
    NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE,
    NETSNMP_DS_LIB_DISABLE_V3,
};

}  // namespace

Library::Library() {
    setenv("MIBS", "", 1);
    setenv("MIBDIRS", "", 1);
    snmp_disable_log();
    for (const int flag : kOn) {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, flag, 1);
    }
    init_snmp(kName);
}

Library::~Library() {
    snmp_shutdown(kName);
}

}  // namespace nemgr::snmp
