#include "kelpd/config/host.h"

#include <arpa/inet.h>

#include <algorithm>

namespace kelpd {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsAlnum(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsLabel(std::string_view label) {
    return !label.empty() && label.size() <= 63 && IsAlnum(label.front()) &&
           IsAlnum(label.back()) &&
           std::all_of(label.begin(), label.end(), [](char c) { return IsAlnum(c) || c == '-'; });
}

}  // namespace

HostKind KindOfHost(std::string_view host) {
    const std::string text(host);
    in6_addr address;
    if (inet_pton(AF_INET, text.c_str(), &address) == 1 ||
        inet_pton(AF_INET6, text.c_str(), &address) == 1) {
        return text.find('\0') == text.npos ? HostKind::kAddress : HostKind::kNeither;
    }
    if (host.empty() || host.size() > 253) {
        return HostKind::kNeither;
    }
    std::string_view label;
    for (std::string_view rest = host;;) {
        const std::size_t dot = rest.find('.');
        label = rest.substr(0, dot);
        if (!IsLabel(label)) {
            return HostKind::kNeither;
        }
        if (dot == rest.npos) {
            break;
        }
        rest.remove_prefix(dot + 1);
    }
    const bool numeric = std::all_of(label.begin(), label.end(), IsDigit);
    return numeric ? HostKind::kNeither : HostKind::kName;
}

}  // namespace kelpd
