#include "kelpd/init/init.h"

#include <csignal>
#include <ostream>

#include "kelpd/config/host.h"
#include "kelpd/init/certificates.h"
#include "kelpd/init/staging.h"
#include "kelpd/init/templates.h"
#include "kelpd/status.h"

namespace kelpd {
namespace {

// What only the installation's user may read: the settings hold database passwords.
constexpr std::string_view kPrivate = "oss/etc/kelp.json";

// How many network elements processes make ready for, as when nobody says: they choose the
// number of their worker threads by it.
constexpr int kManagedElements = 80000;

// A stop signal waits until the folder is there or removed again.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t stops;
        sigemptyset(&stops);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            sigaddset(&stops, number);
        }
        pthread_sigmask(SIG_BLOCK, &stops, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

std::string ShellWord(const std::string& text) {
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + "'";
}

void RequireHosts(const std::vector<std::string>& hosts) {
    for (const std::string& host : hosts) {
        if (KindOfHost(host) == HostKind::kNeither) {
            throw Refusal(kUsage, "--host '" + host + "' is neither a host name nor an address");
        }
    }
}

std::map<std::string, std::string> Values(const InitOptions& options) {
    std::string node = "localhost";
    std::string addresses = "{\"IP\": \"127.0.0.1\"}";
    for (const std::string& host : options.hosts) {
        if (KindOfHost(host) == HostKind::kAddress) {
            addresses += ", {\"IP\": \"" + host + "\"}";
        } else if (node == "localhost") {
            node = host;
        }
    }
    return {{"port", std::to_string(options.port)},
            {"node", node},
            {"node-addresses", addresses},
            {"version", KELPD_VERSION}};
}

void WriteIdentity(Staging& staging, const std::string& name, const Identity& identity) {
    staging.Write("oss/etc/ssl/" + name + ".crt", identity.certificate_pem, 0644);
    staging.Write("oss/etc/ssl/" + name + ".key", identity.key_pem, 0600);
}

void WriteCertificates(Staging& staging, const std::vector<std::string>& hosts,
                       const std::string& node) {
    std::vector<std::string> answers_to = {"localhost", "127.0.0.1", "::1"};
    answers_to.insert(answers_to.end(), hosts.begin(), hosts.end());
    const Authority authority = Authority::Create(node);
    WriteIdentity(staging, "ca", authority.Own());
    WriteIdentity(staging, "server", authority.Issue(Use::kServer, node, answers_to));
    WriteIdentity(staging, "client", authority.Issue(Use::kClient, "kelp client", {}));
}

}  // namespace

void Init(const InitOptions& options, std::ostream& out) {
    RequireHosts(options.hosts);
    const SignalsHeld held;
    Staging staging(options.folder);
    const auto values = Values(options);
    for (const Template& file : Templates()) {
        staging.Write(std::string(file.path), Fill(file.text, values),
                      file.path == kPrivate ? 0600 : 0644);
    }
    WriteCertificates(staging, options.hosts, values.at("node"));
    staging.MakeFolder("oss/var/run", 0700);
    staging.MakeFolder("oss/var/log", 0750);
    staging.Publish();
    const std::string oss = staging.target() + "/oss";
    out << "export OSS_ROOT=" << ShellWord(oss) << '\n'
        << "export MGMTSIZE=" << kManagedElements << '\n';
}

}  // namespace kelpd
