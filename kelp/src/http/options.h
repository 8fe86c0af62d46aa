// What the installation says about HTTP: whom to trust, who this client is, how long and how
// much. docs/http.md is the manual.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelp::settings {
class Configuration;
}

namespace kelp::http {

/// Absolute paths. Without a certificate the client shows none.
struct TlsFiles {
    std::string ca;
    std::string certificate;
    std::string key;

    bool operator==(const TlsFiles&) const = default;
};

struct Limits {
    std::int64_t response_bytes = std::int64_t{64} << 20;
    std::int64_t connect_ms = 10000;
    std::int64_t low_speed_bytes = 10;  // a second, over
    std::int64_t low_speed_s = 60;
    std::int64_t idle_connections = 64;
    std::int64_t idle_s = 60;  // then a kept connection is not used any more

    bool operator==(const Limits&) const = default;
};

/// immutable
struct Options {
    int code = 0;     // of HttpMsgCode: the installation cannot be used,
    std::string why;  // and the reason
    TlsFiles tls;
    std::map<std::string, TlsFiles, std::less<>> channels;
    Limits limits;
    std::vector<std::uint64_t> files;  // identities of all TLS files

    bool operator==(const Options&) const = default;

    const TlsFiles& ForChannel(std::string_view channel) const {
        const auto found = channels.find(channel);
        return found == channels.end() ? tls : found->second;
    }
};

/// What `configuration` says. Files are looked at, not opened.
Options ReadOptions(const settings::Configuration& configuration);

/// What the environment and the files say. The same object as long as nothing of it changes,
/// which is looked for at most once a second: whoever holds an older one holds what is replaced.
/// thread-safe.
std::shared_ptr<const Options> CurrentOptions();

}  // namespace kelp::http
