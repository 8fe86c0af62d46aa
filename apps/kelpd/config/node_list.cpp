#include "kelpd/config/node_list.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "kelpd/config/host.h"
#include "kelpd/status.h"
#include "support/file.h"
#include "support/json.h"

namespace kelpd {
namespace {

struct Fault {
    const Json::Value* at;
    const char* what;
};

constexpr Fault kSound = {nullptr, nullptr};

Fault FaultOfNode(const Json::Value& node) {
    const auto name = app::JsonText(node, "hostname");
    if (!name) {
        return {&node, "the node has no text \"hostname\""};
    }
    const Json::Value* addresses = app::JsonMember(node, "IPAddresses");
    if (addresses == nullptr || !addresses->isArray()) {
        return {&node, "the node has no list \"IPAddresses\""};
    }
    for (const Json::Value& address : *addresses) {
        const auto ip = app::JsonText(address, "IP");
        if (!ip || KindOfHost(*ip) != HostKind::kAddress) {
            return {&address, "this is no object with an IPv4 or IPv6 address \"IP\""};
        }
    }
    return kSound;
}

Fault FaultOfNodes(const Json::Value& document) {
    const Json::Value* nodes = app::JsonMember(document, "nodeList");
    if (nodes == nullptr || !nodes->isArray()) {
        return {&document, "no object with a list \"nodeList\""};
    }
    for (const Json::Value& node : *nodes) {
        if (const Fault fault = FaultOfNode(node); fault.at != nullptr) {
            return fault;
        }
    }
    return kSound;
}

}  // namespace

void RequireSoundNodeList(const std::string& root) {
    const std::string file = root + "/../manager/etc/sysconf/nodelists.json";
    if (::access(file.c_str(), F_OK) != 0 && errno == ENOENT) {
        return;
    }
    std::string text;
    std::string why;
    if (!app::ReadRegularFile(file, app::kJsonLimitBytes, text, why)) {
        throw Refusal(kConfiguration, why);
    }
    const auto document = app::ParseJson(text, &why);
    if (!document) {
        throw Refusal(kConfiguration, file + ": " + why);
    }
    if (const Fault fault = FaultOfNodes(*document); fault.at != nullptr) {
        throw Refusal(kConfiguration, file + ":" + std::to_string(app::JsonLine(*fault.at, text)) +
                                          ": " + fault.what);
    }
}

}  // namespace kelpd
