#include "kelpd/http/target.h"

#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpd {
namespace {

enum class PlusIs { kPlus, kBlank };

bool Decode(std::string_view text, PlusIs plus, std::string& decoded) {
    decoded.clear();
    bool ascii = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            const bool whole = text.size() - i > 2;
            const int high = whole ? app::HexDigit(text[i + 1]) : -1;
            const int low = whole ? app::HexDigit(text[i + 2]) : -1;
            if (high < 0 || low < 0) {
                return false;
            }
            c = static_cast<char>(high * 16 + low);
            i += 2;
        } else if (c == '+' && plus == PlusIs::kBlank) {
            c = ' ';
        }
        const auto octet = static_cast<unsigned char>(c);
        if (octet < 0x20 || octet == 0x7F) {
            return false;
        }
        ascii = ascii && octet < 0x80;
        decoded += c;
    }
    return ascii || app::InvalidUtf8At(decoded) == std::string_view::npos;
}

/// Takes what stands before the first `separator` off `rest`.
std::string_view Take(std::string_view& rest, char separator) {
    const std::size_t at = rest.find(separator);
    const std::string_view taken = rest.substr(0, at);
    rest = at == rest.npos ? std::string_view() : rest.substr(at + 1);
    return taken;
}

bool ParsePath(std::string_view path, std::vector<std::string>& segments) {
    if (path.empty() || path.front() != '/') {
        return false;
    }
    if (path.size() == 1) {
        return true;
    }
    for (bool more = true; more;) {
        path.remove_prefix(1);
        const std::size_t slash = path.find('/');
        more = slash != path.npos;
        const std::string_view part = path.substr(0, slash);
        std::string& segment = segments.emplace_back();
        if (segments.size() > kMostSegments || !Decode(part, PlusIs::kPlus, segment) ||
            segment.empty() || segment == "." || segment == ".." ||
            segment.find_first_of("/\\") != segment.npos) {
            return false;
        }
        path = more ? path.substr(slash) : std::string_view();
    }
    return true;
}

bool ParseQuery(std::string_view text, std::vector<std::pair<std::string, std::string>>& query) {
    while (!text.empty()) {
        std::string_view value = Take(text, '&');
        if (value.empty()) {
            continue;
        }
        auto& [name, decoded] = query.emplace_back();
        const std::string_view key = Take(value, '=');
        if (query.size() > kMostParameters || !Decode(key, PlusIs::kBlank, name) ||
            !Decode(value, PlusIs::kBlank, decoded)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool ParseTarget(std::string_view text, Target& target) {
    target.segments.clear();
    target.query.clear();
    if (text.find('#') != text.npos) {
        return false;
    }
    const std::string_view path = Take(text, '?');
    return ParsePath(path, target.segments) && ParseQuery(text, target.query);
}

}  // namespace kelpd
