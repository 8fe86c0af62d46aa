#include "dao/sqlite_driver.h"
#include "dao/url.h"

namespace kelp::db {

std::optional<SqliteUrl> ParseSqliteUrl(std::string_view url, std::string& why) {
    std::string_view rest = url.substr(std::string_view("sqlite:").size());
    SqliteUrl parsed;
    parsed.flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    if (rest == ":memory:") {
        parsed.path = rest;
        return parsed;
    }
    const std::size_t query = rest.find('?');
    if (query != std::string_view::npos) {
        const std::string_view mode = rest.substr(query + 1);
        if (mode == "mode=ro") {
            parsed.flags = SQLITE_OPEN_READONLY;
        } else if (mode == "mode=rw") {
            parsed.flags = SQLITE_OPEN_READWRITE;
        } else if (mode != "mode=rwc") {
            why = "a sqlite: URL takes mode=ro, mode=rw or mode=rwc behind the ?, nothing else";
            return std::nullopt;
        }
        rest = rest.substr(0, query);
    }
    if (rest.substr(0, 2) == "//") {
        rest.remove_prefix(2);
        if (rest.empty() || rest.front() != '/') {
            why = "a sqlite:// URL names no host: it goes on with an absolute path";
            return std::nullopt;
        }
    }
    const std::optional<std::string> path = PercentDecoded(rest);
    // A name that begins with a colon has, or may get, a meaning of its own for SQLite.
    if (!path || path->empty() || path->front() == ':' || path->find('\0') != std::string::npos) {
        why = "a sqlite: URL has a file's path or is sqlite::memory:";
        return std::nullopt;
    }
    parsed.path = *path;
    return parsed;
}

}  // namespace kelp::db
