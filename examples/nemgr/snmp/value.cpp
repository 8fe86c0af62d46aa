#include "nemgr/snmp/value.h"

// The order of these two is net-snmp's rule.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

namespace nemgr::snmp {
namespace {

Value ValueOf(const variable_list& variable) {
    switch (variable.type) {
        case ASN_INTEGER:
            return std::int64_t{*variable.val.integer};
        case ASN_COUNTER:
        case ASN_GAUGE:
        case ASN_TIMETICKS:
            // Numbers of 32 bits that the library keeps in a signed long.
            return static_cast<std::uint64_t>(*variable.val.integer) & 0xffffffffU;
        case ASN_COUNTER64:
            return static_cast<std::uint64_t>(variable.val.counter64->high) << 32 |
                   (variable.val.counter64->low & 0xffffffffU);
        case ASN_OCTET_STR:
        case ASN_IPADDRESS:
        case ASN_OPAQUE:
            return std::string(reinterpret_cast<const char*>(variable.val.string),
                               variable.val_len);
        case ASN_OBJECT_ID:
            return Oid(variable.val.objid, variable.val.objid + variable.val_len / sizeof(oid));
        default:  // null, and "no such object", "no such instance", "end of the MIB"
            return std::monostate();
    }
}

}  // namespace

Binding BindingOf(const variable_list& variable) {
    return {Oid(variable.name, variable.name + variable.name_length), ValueOf(variable)};
}

double NumberOf(const Value& value, double otherwise) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        return static_cast<double>(*integer);
    }
    if (const auto* natural = std::get_if<std::uint64_t>(&value)) {
        return static_cast<double>(*natural);
    }
    return otherwise;
}

std::string OctetsOf(const Value& value) {
    if (const auto* octets = std::get_if<std::string>(&value)) {
        return *octets;
    }
    const auto* identifier = std::get_if<Oid>(&value);
    return identifier != nullptr ? OidText(*identifier) : std::string();
}

}  // namespace nemgr::snmp
