#include "http/options.h"

#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <string_view>
#include <system_error>

#include "base/clock.h"
#include "base/mutex.h"
#include "kelp/http.h"
#include "settings/configuration.h"
#include "settings/installation_root.h"

namespace kelp::http {
namespace {

using settings::Configuration;
using Kind = Configuration::Value::Kind;

struct Refusal {
    int code;
    std::string why;
};

struct FileRow {
    const char* name;
    std::string TlsFiles::*member;
    const char* otherwise;  // below the root
};
const FileRow kFiles[] = {
    {"ca", &TlsFiles::ca, "etc/ssl/ca.crt"},
    {"certificate", &TlsFiles::certificate, "etc/ssl/client.crt"},
    {"key", &TlsFiles::key, "etc/ssl/client.key"},
};

struct LimitRow {
    const char* name;
    std::int64_t Limits::*member;
    std::int64_t least, most;
};
constexpr LimitRow kLimits[] = {
    {"http/responseLimitBytes", &Limits::response_bytes, 1, std::int64_t{1} << 30},
    {"http/connectTimeoutMs", &Limits::connect_ms, 1, 3600000},
    {"http/lowSpeedBytes", &Limits::low_speed_bytes, 0, 1 << 20},
    {"http/lowSpeedSeconds", &Limits::low_speed_s, 1, 3600},
    {"http/idleConnections", &Limits::idle_connections, 0, 1000},
    {"http/idleSeconds", &Limits::idle_s, 1, 3600},
};

// The files that `group` ("tls/") names, those of `otherwise` where it is silent.
TlsFiles ReadFiles(const Configuration& configuration, const std::string& group,
                   const TlsFiles& otherwise) {
    TlsFiles files;
    for (const FileRow& row : kFiles) {
        const auto* const value = configuration.Find(group + row.name);
        if (value == nullptr) {
            files.*row.member = otherwise.*row.member;
        } else if (value->kind != Kind::kText) {
            throw Refusal{UFHTTPMSGMGR::HTTP_ERR_SETTINGS,
                          value->place + ": \"" + row.name + "\" is no path"};
        } else {
            const bool relative = !value->text.empty() && value->text.front() != '/';
            files.*row.member = relative ? configuration.Root() + '/' + value->text : value->text;
        }
    }
    // A certificate in an empty name is the administrator's word for "none"; then no key is
    // needed. There is no such word for the CA.
    if (files.certificate.empty()) {
        files.key.clear();
    }
    return files;
}

void ReadLimit(const Configuration& configuration, const LimitRow& row, Limits& limits) {
    const auto* const value = configuration.Find(row.name);
    if (value == nullptr) {
        return;
    }
    std::int64_t number = 0;
    const char* const end = value->text.data() + value->text.size();
    const auto [stopped, error] = std::from_chars(value->text.data(), end, number);
    if (value->kind != Kind::kInteger || error != std::errc() || stopped != end ||
        number < row.least || number > row.most) {
        throw Refusal{UFHTTPMSGMGR::HTTP_ERR_SETTINGS,
                      value->place + ": \"" + row.name + "\" is no integer from " +
                          std::to_string(row.least) + " to " + std::to_string(row.most)};
    }
    limits.*row.member = number;
}

void LookAt(const TlsFiles& tls, std::vector<std::uint64_t>& identities) {
    if (tls.ca.empty()) {
        throw Refusal{UFHTTPMSGMGR::HTTP_ERR_CREDENTIALS, "the CA file's path is empty"};
    }
    for (const FileRow& row : kFiles) {
        const std::string& path = tls.*row.member;
        struct stat file {};
        if (path.empty() && row.member != &TlsFiles::ca && tls.certificate.empty()) {
            continue;
        }
        if (::stat(path.c_str(), &file) != 0) {
            throw Refusal{UFHTTPMSGMGR::HTTP_ERR_CREDENTIALS,
                          "\"" + path + "\": " + std::generic_category().message(errno)};
        }
        if (!S_ISREG(file.st_mode) || file.st_size == 0) {
            throw Refusal{UFHTTPMSGMGR::HTTP_ERR_CREDENTIALS,
                          "\"" + path + "\": empty, or no regular file"};
        }
        for (const auto part :
             {static_cast<std::uint64_t>(file.st_dev), static_cast<std::uint64_t>(file.st_ino),
              static_cast<std::uint64_t>(file.st_size),
              static_cast<std::uint64_t>(file.st_ctim.tv_sec),
              static_cast<std::uint64_t>(file.st_ctim.tv_nsec)}) {
            identities.push_back(part);
        }
    }
}

// Every name that stands below "tls/channels/".
std::vector<std::string> ChannelNames(const Configuration& configuration) {
    constexpr std::string_view kGroup = "tls/channels/";
    std::vector<std::string> names;
    const auto& values = configuration.All();
    for (auto value = values.lower_bound(kGroup);
         value != values.end() && value->first.starts_with(kGroup); ++value) {
        const std::size_t end = value->first.find('/', kGroup.size());
        const std::string name = value->first.substr(kGroup.size(), end - kGroup.size());
        if (end != std::string::npos && (names.empty() || names.back() != name)) {
            names.push_back(name);
        }
    }
    return names;
}

struct Latest {
    Mutex mutex;
    std::shared_ptr<const Options> options KELP_GUARDED_BY(mutex);
    std::string root KELP_GUARDED_BY(mutex);
    std::int64_t looked_at KELP_GUARDED_BY(mutex) = 0;
};

// Never destroyed: threads may send while static objects go.
Latest& TheLatest() {
    static auto* const latest = new Latest;
    return *latest;
}

}  // namespace

Options ReadOptions(const Configuration& configuration) {
    Options options;
    try {
        if (configuration.GetState() == Configuration::State::kNoRoot ||
            configuration.GetState() == Configuration::State::kMalformed) {
            throw Refusal{UFHTTPMSGMGR::HTTP_ERR_SETTINGS, configuration.Why()};
        }
        TlsFiles standard;
        for (const FileRow& row : kFiles) {
            standard.*row.member = configuration.Root() + '/' + row.otherwise;
        }
        options.tls = ReadFiles(configuration, "tls/", standard);
        for (const LimitRow& row : kLimits) {
            ReadLimit(configuration, row, options.limits);
        }
        LookAt(options.tls, options.files);
        for (const std::string& name : ChannelNames(configuration)) {
            const TlsFiles files =
                ReadFiles(configuration, "tls/channels/" + name + '/', options.tls);
            LookAt(files, options.files);
            options.channels.emplace(name, files);
        }
    } catch (const Refusal& refusal) {
        options.code = refusal.code;
        options.why = refusal.why;
    }
    return options;
}

std::shared_ptr<const Options> CurrentOptions() {
    Latest& latest = TheLatest();
    const std::string root = settings::InstallationRoot();
    MutexLock lock(latest.mutex);
    const std::int64_t now = base::SystemMonotonicNs();
    if (latest.options != nullptr && latest.options->code == 0 && latest.root == root &&
        now - latest.looked_at < base::kSecond) {
        return latest.options;
    }
    // The file holds other services' settings as well: what ends the kept connections is a
    // change of what they stand on.
    auto fresh = std::make_shared<const Options>(ReadOptions(*Configuration::Current()));
    if (latest.options == nullptr || latest.root != root || *latest.options != *fresh) {
        latest.options = std::move(fresh);
    }
    latest.root = root;
    latest.looked_at = now;
    return latest.options;
}

}  // namespace kelp::http
