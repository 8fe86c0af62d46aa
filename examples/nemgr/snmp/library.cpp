#include "nemgr/snmp/library.h"

// The order of these two is net-snmp's rule.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

namespace nemgr::snmp {

// Deliberately not init_snmp(): that reads configuration and MIB files and makes
// directories for certificates. Preparing a session sets up what versions 1 and 2c need,
// once for the process.
Library::Library() {
    snmp_disable_log();
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_session session;
    snmp_sess_init(&session);
}

}  // namespace nemgr::snmp
