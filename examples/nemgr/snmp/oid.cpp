#include "nemgr/snmp/oid.h"

#include <algorithm>

namespace nemgr::snmp {

std::string OidText(const Oid& oid) {
    std::string text;
    for (const unsigned long number : oid) {
        text += (text.empty() ? "" : ".") + std::to_string(number);
    }
    return text;
}

bool StartsWith(const Oid& oid, const Oid& prefix) {
    return oid.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), oid.begin());
}

Oid Append(Oid oid, unsigned long number) {
    oid.push_back(number);
    return oid;
}

}  // namespace nemgr::snmp
