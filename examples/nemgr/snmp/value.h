// nemgr/snmp/value.h - what a variable of an element holds.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "nemgr/snmp/oid.h"

struct variable_list;  // of net-snmp

namespace nemgr::snmp {

/// monostate: the element has no such variable; integers, signed; counters, gauges and
/// time ticks (1/100 s); octets, addresses included; object identifiers.
using Value = std::variant<std::monostate, std::int64_t, std::uint64_t, std::string, Oid>;

/// A variable and its value.
struct Binding {
    Oid oid;
    Value value;
};

/// Copies out of net-snmp's list of an answer.
Binding BindingOf(const variable_list& variable);

/// The number, or `otherwise` when `value` is none.
double NumberOf(const Value& value, double otherwise);

/// The octets, an object identifier's digits, or nothing.
std::string OctetsOf(const Value& value);

}  // namespace nemgr::snmp
