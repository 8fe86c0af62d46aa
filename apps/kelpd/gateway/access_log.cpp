#include "kelpd/gateway/access_log.h"

#include <charconv>
#include <string>

#include "kelp/log.h"

namespace kelpd {
namespace {

constexpr std::size_t kLongest = 256;

void AppendNumber(std::string& line, std::uint64_t number) {
    char digits[24];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// Quoted, so that no value can look like the next field.
void AppendQuoted(std::string& line, std::string_view text) {
    line += '"';
    for (const char c : text.substr(0, kLongest)) {
        if (c == '"' || c == '\\') {
            line += '\\';
        }
        line += c;
    }
    line += '"';
}

// The grammar of a request allows neither blanks nor quotes' escapes here; "-" is nothing.
void AppendWord(std::string& line, std::string_view text) {
    line += text.empty() ? "-" : text.substr(0, kLongest);
}

}  // namespace

void LogAccess(const Access& access) {
    thread_local std::string line;
    line = "access peer=";
    AppendWord(line, access.peer);
    line += " client=";
    AppendQuoted(line, access.client);
    line += " method=";
    AppendWord(line, access.method);
    line += " path=";
    AppendWord(line, access.target.substr(0, access.target.find('?')));
    line += " status=";
    AppendNumber(line, static_cast<std::uint64_t>(access.status));
    line += " octets=";
    AppendNumber(line, access.octets);
    line += " us=";
    AppendNumber(line, access.microseconds);
    LogProcess::Info(line, LocationInfo::getLocationUnavailable());
}

}  // namespace kelpd
