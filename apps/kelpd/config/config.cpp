#include "kelpd/config/config.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>

#include "kelpd/config/host.h"
#include "kelpd/status.h"
#include "support/file.h"
#include "support/json.h"
#include "support/utf8.h"

namespace kelpd {
namespace {

constexpr std::int64_t kMostConnections = 1000000;
constexpr std::int64_t kMostBytes = std::int64_t{1} << 30;
constexpr std::int64_t kMostMs = 86400000;
// What stops the service waits ten seconds before it kills.
constexpr std::int64_t kMostStopMs = 9000;

struct Number {
    const char* name;
    std::int64_t least;
    std::int64_t most;
    std::function<void(Config&, std::int64_t)> set;
};

Number Size(const char* name, std::int64_t least, std::int64_t most, std::size_t Limits::*member) {
    return {name, least, most, [member](Config& config, std::int64_t value) {
                config.limits.*member = static_cast<std::size_t>(value);
            }};
}

Number Time(const char* name, std::int64_t most, std::chrono::milliseconds Limits::*member) {
    return {name, 1, most, [member](Config& config, std::int64_t value) {
                config.limits.*member = std::chrono::milliseconds(value);
            }};
}

const Number kLimits[] = {
    Size("connections", 1, kMostConnections, &Limits::connections),
    Size("connectionsPerAddress", 1, kMostConnections, &Limits::connections_per_address),
    Size("headerBytes", 256, 1 << 20, &Limits::header_bytes),
    Size("headerCount", 1, 10000, &Limits::header_count),
    Size("bodyBytes", 0, kMostBytes, &Limits::body_bytes),
    Time("handshakeMs", kMostMs, &Limits::handshake),
    Time("headerMs", kMostMs, &Limits::header),
    Time("bodyMs", kMostMs, &Limits::body),
    Time("writeMs", kMostMs, &Limits::write),
    Time("idleMs", kMostMs, &Limits::idle),
    Time("stopMs", kMostStopMs, &Limits::stop),
};

const Number kGatewayNumbers[] = {
    {"port", 1, 65535, [](Config& c, std::int64_t v) { c.port = static_cast<std::uint16_t>(v); }},
    {"threads", 0, 64, [](Config& c, std::int64_t v) { c.threads = static_cast<unsigned>(v); }},
};

// "section" or "section.name", as messages name a member.
std::string Quoted(const std::string& section, const std::string& name = "") {
    std::string text(1, '"');
    text += section;
    if (!name.empty()) {
        text += '.';
        text += name;
    }
    text += '"';
    return text;
}

class SettingsReader {
  public:
    SettingsReader(Config& config, const Json::Value& root, std::string_view text)
        : config_(config), root_(root), text_(text) {}

    /// Refuses the file for what stands at `value`.
    [[noreturn]] void Fail(const Json::Value& value, const std::string& what) const {
        throw Refusal(
            kConfiguration,
            config_.file + ":" + std::to_string(app::JsonLine(value, text_)) + ": " + what);
    }

    /// The member `name` of the document, an empty object when it is missing.
    const Json::Value& Section(const char* name) const {
        static const Json::Value kNone(Json::objectValue);
        const Json::Value* section = app::JsonMember(root_, name);
        if (section != nullptr && !section->isObject()) {
            Fail(*section, Quoted(name) + " is no object");
        }
        return section == nullptr ? kNone : *section;
    }

    template <std::size_t N>
    void Numbers(const char* section, const Number (&numbers)[N]) {
        for (const Number& number : numbers) {
            const Json::Value* const member = app::JsonMember(Section(section), number.name);
            if (member == nullptr) {
                continue;
            }
            const auto value =
                app::JsonInteger(Section(section), number.name, number.least, number.most);
            if (!value) {
                Fail(*member, Quoted(section, number.name) + " is no whole number from " +
                                  std::to_string(number.least) + " to " +
                                  std::to_string(number.most));
            }
            number.set(config_, *value);
        }
    }

    /// The text at section.name, or `fallback` when it is missing.
    std::string Text(const char* section, const char* name, const char* fallback) const {
        const Json::Value* const member = app::JsonMember(Section(section), name);
        if (member == nullptr) {
            return fallback;
        }
        const auto text = app::JsonText(Section(section), name);
        if (!text || text->find('\0') != text->npos) {
            Fail(*member, Quoted(section, name) + " is no text");
        }
        return *text;
    }

    std::string Address(const char* section, const char* name, const char* fallback) const {
        std::string address = Text(section, name, fallback);
        if (KindOfHost(address) != HostKind::kAddress) {
            Fail(Section(section)[name], Quoted(section, name) + " is no IPv4 or IPv6 address");
        }
        return address;
    }

    /// A path, below the root unless it begins with a slash.
    std::string Path(const char* section, const char* name, const char* fallback) const {
        std::string path = PathOrNone(section, name, fallback);
        if (path.empty()) {
            Fail(Section(section)[name], Quoted(section, name) + " is empty");
        }
        return path;
    }

    /// The same, or "".
    std::string PathOrNone(const char* section, const char* name, const char* fallback) const {
        const std::string path = Text(section, name, fallback);
        return path.empty() || path.front() == '/' ? path : config_.root + "/" + path;
    }

    void KnowsOnly(const char* section, const std::function<bool(const std::string&)>& known) {
        const Json::Value& members = Section(section);
        for (const std::string& name : members.getMemberNames()) {
            if (!known(name)) {
                Fail(members[name], "unknown member " + Quoted(section, app::ShowText(name)));
            }
        }
    }

  private:
    Config& config_;
    const Json::Value& root_;
    const std::string_view text_;
};

template <std::size_t N>
bool Names(const Number (&numbers)[N], const std::string& name) {
    return std::any_of(std::begin(numbers), std::end(numbers),
                       [&](const Number& number) { return name == number.name; });
}

}  // namespace

Config ParseConfig(const std::string& root, std::string_view text) {
    Config config;
    config.root = root;
    config.file = root + "/etc/kelp.json";
    std::string why;
    const auto document = app::ParseJson(text, &why);
    if (!document || !document->isObject()) {
        throw Refusal(kConfiguration, config.file + ": " + (document ? "no JSON object" : why));
    }
    SettingsReader reader(config, *document, text);
    reader.KnowsOnly("limits", [](const std::string& name) { return Names(kLimits, name); });
    reader.KnowsOnly("gateway", [](const std::string& name) {
        return name == "baseUrl" || name == "listen" || Names(kGatewayNumbers, name);
    });
    reader.Numbers("limits", kLimits);
    reader.Numbers("gateway", kGatewayNumbers);
    config.listen = reader.Address("gateway", "listen", "127.0.0.1");
    config.ca_file = reader.Path("tls", "ca", "etc/ssl/ca.crt");
    config.certificate_file = reader.Path("tls", "serverCertificate", "etc/ssl/server.crt");
    config.key_file = reader.Path("tls", "serverKey", "etc/ssl/server.key");
    config.run_folder = reader.Path("bus", "runDir", "var/run");
    config.health_socket = reader.Path("health", "socket", "var/run/kelpd.health.sock");
    config.log_file = reader.PathOrNone("log", "file", "var/log/kelpd.log");
    config.rest_groups_file = reader.Path("restGroups", "file", "etc/rest_groups.json");
    return config;
}

Config ReadConfig(const std::string& root) {
    std::string text;
    std::string why;
    if (!app::ReadRegularFile(root + "/etc/kelp.json", app::kJsonLimitBytes, text, why)) {
        throw Refusal(kConfiguration,
                      why + ": not an installation root: run 'kelpd init DIR' to make one");
    }
    return ParseConfig(root, text);
}

}  // namespace kelpd
