#include "dao/url.h"

#include "dao/driver.h"

namespace kelp::db {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::optional<std::string> PercentDecoded(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0 || high + low == 0) {
            return std::nullopt;
        }
        plain += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return plain;
}

bool HasScheme(std::string_view url, std::string_view scheme) {
    return url.substr(0, scheme.size()) == scheme;
}

bool HoldsPassword(std::string_view url) {
    const std::size_t query = url.find('?');
    if (query != std::string_view::npos &&
        url.substr(query).find("password=") != std::string_view::npos) {
        return true;
    }
    const std::string_view head = url.substr(0, query);
    const std::size_t authority = head.find("//");
    const std::size_t at = head.rfind('@');
    return authority != std::string_view::npos && at != std::string_view::npos && at > authority &&
           head.substr(authority, at - authority).find(':') != std::string_view::npos;
}

std::unique_ptr<Driver> MakeDriver(const std::string& url, const dao::SessionOptions& options,
                                   dao::CExecStatus& why) {
    if (HasScheme(url, "sqlite:")) {
        return MakeSqliteDriver(url, options, why);
    }
    if (HasScheme(url, "postgresql://") || HasScheme(url, "postgres://")) {
        return MakePostgresDriver(url, options, why);
    }
    why = Refusal(dao::DAO_ERR_ARGUMENT,
                  "a database URL begins with sqlite: or postgresql://, this one does not");
    return nullptr;
}

}  // namespace kelp::db
