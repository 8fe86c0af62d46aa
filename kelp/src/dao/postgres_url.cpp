#include <algorithm>

#include "dao/postgres_driver.h"
#include "dao/sql_text.h"

namespace kelp::db {

namespace {

constexpr std::string_view kSecretSettings[] = {"password", "sslpassword"};

struct FreeOptions {
    void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};

// The user, the password and the host of a URL are told apart by single characters. One too
// many and a piece of the password would pass for the host, and be named in messages.
bool AuthorityIsClear(std::string_view url) {
    std::string_view authority = url.substr(url.find("//") + 2);
    authority = authority.substr(0, authority.find_first_of("/?"));
    return std::count(authority.begin(), authority.end(), '@') <= 1;
}

// The limits that the server watches itself.
std::string ServerOptions(const dao::SessionOptions& options) {
    return "-c statement_timeout=" + std::to_string(std::max(options.statement_timeout_ms, 0)) +
           // 0 would be "for ever": not to wait is the shortest wait there is.
           " -c lock_timeout=" + std::to_string(std::max(options.lock_timeout_ms, 1)) +
           " -c extra_float_digits=1 -c standard_conforming_strings=on -c bytea_output=hex" +
           " -c DateStyle=ISO";
}

}  // namespace

PgTarget::~PgTarget() {
    for (auto& [name, value] : settings) {
        Wipe(value);
    }
}

std::string_view PgTarget::Get(std::string_view name) const {
    for (const auto& [known, value] : settings) {
        if (known == name) {
            return value;
        }
    }
    return {};
}

void PgTarget::Set(std::string_view name, std::string_view value) {
    for (auto& [known, present] : settings) {
        if (known == name) {
            Wipe(present);
            present = value;
            return;
        }
    }
    settings.emplace_back(name, value);
}

void PgTarget::Hide(std::string& text) const {
    for (const std::string_view name : kSecretSettings) {
        HideSecret(text, Get(name));
    }
}

std::unique_ptr<PgTarget> ParsePostgresUrl(const std::string& url,
                                           const dao::SessionOptions& options, std::string& why) {
    // libpq's own words on a malformed URL repeat the URL, so they cannot be passed on.
    constexpr const char* kMalformed =
        "the postgresql: URL is malformed, or libpq does not know "
        "one of its parameters";
    if (!AuthorityIsClear(url)) {
        why = "the postgresql: URL has more than one @: write %40 for those in a name or password";
        return nullptr;
    }
    if (url.find('\0') != std::string::npos) {
        why = kMalformed;
        return nullptr;
    }
    char* complaint = nullptr;
    const std::unique_ptr<PQconninfoOption, FreeOptions> parsed(
        PQconninfoParse(url.c_str(), &complaint));
    if (complaint != nullptr) {
        PQfreemem(complaint);
    }
    if (parsed == nullptr) {
        why = kMalformed;
        return nullptr;
    }
    auto target = std::make_unique<PgTarget>();
    target->settings.reserve(64);  // nothing moves: a short text would leave a copy behind
    target->Set("application_name", "kelp");
    target->Set("keepalives_idle", "30");
    target->Set("keepalives_interval", "10");
    target->Set("keepalives_count", "3");
    for (PQconninfoOption* option = parsed.get(); option->keyword != nullptr; ++option) {
        if (option->val != nullptr) {
            target->Set(option->keyword, option->val);
            std::fill_n(option->val, std::string_view(option->val).size(), '\xCC');
        }
    }
    if (!options.user.empty()) {
        target->Set("user", options.user);
    }
    if (!options.password.empty()) {
        target->Set("password", options.password);
    }
    target->Set("client_encoding", "UTF8");
    const std::string asked(target->Get("options"));
    target->Set("options", asked + (asked.empty() ? "" : " ") + ServerOptions(options));
    const std::string_view host = target->Get("host");
    const std::string_view port = target->Get("port");
    target->where = "postgresql://" + std::string(host.empty() ? target->Get("hostaddr") : host) +
                    (port.empty() ? "" : ":") + std::string(port) + "/" +
                    std::string(target->Get("dbname"));
    return target;
}

}  // namespace kelp::db
