#include "nemgr/snmp/address.h"

#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <memory>

namespace nemgr::snmp {
namespace {

constexpr std::size_t kMostHost = 255;
constexpr const char* kDefaultPort = "161";

bool IsPort(const std::string& text) {
    const bool digits =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits && !text.empty() && text.size() <= 5 && std::stoi(text) >= 1 &&
           std::stoi(text) <= 65535;
}

}  // namespace

std::optional<HostPort> ParseHostPort(const std::string& text) {
    const bool bracketed = !text.empty() && text[0] == '[';
    const std::size_t host_end = bracketed ? text.find(']') : text.find(':');
    if (bracketed && host_end == std::string::npos) {
        return std::nullopt;
    }
    HostPort where;
    where.host = bracketed ? text.substr(1, host_end - 1) : text.substr(0, host_end);
    const std::string rest = host_end == std::string::npos ? "" : text.substr(host_end + bracketed);
    where.port = rest.empty() ? kDefaultPort : rest.substr(1);
    const bool host_fits = !where.host.empty() && where.host.size() <= kMostHost &&
                           where.host.find_first_of(" \t\r\n/[]") == std::string::npos;
    if (!host_fits || (!rest.empty() && rest[0] != ':') || !IsPort(where.port)) {
        return std::nullopt;
    }
    return where;
}

std::optional<std::string> Resolve(const HostPort& where, std::string& why) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    int error = getaddrinfo(where.host.c_str(), where.port.c_str(), &hints, &found);
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> list(found, freeaddrinfo);
    char host[NI_MAXHOST] = "";
    if (error == 0) {
        error = getnameinfo(list->ai_addr, list->ai_addrlen, host, sizeof host, nullptr, 0,
                            NI_NUMERICHOST);
    }
    if (error != 0) {
        why = gai_strerror(error);
        return std::nullopt;
    }
    return list->ai_family == AF_INET6 ? "udp6:[" + std::string(host) + "]:" + where.port
                                       : "udp:" + std::string(host) + ":" + where.port;
}

}  // namespace nemgr::snmp
