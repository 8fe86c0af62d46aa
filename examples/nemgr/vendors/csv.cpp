#include "nemgr/vendors/csv.h"

namespace nemgr::vendors {

bool CsvReader::Next(std::vector<std::string>& fields) {
    fields.clear();
    if (rest_.empty()) {
        return false;
    }
    while (TakeField(fields.emplace_back())) {
    }
    return true;
}

// True when a comma, and so a further field, follows.
bool CsvReader::TakeField(std::string& field) {
    bool quoted = !rest_.empty() && rest_[0] == '"';
    std::size_t at = quoted ? 1 : 0;
    for (; at < rest_.size(); ++at) {
        const char c = rest_[at];
        if (quoted && c == '"') {
            const bool doubled = at + 1 < rest_.size() && rest_[at + 1] == '"';
            if (!doubled) {
                quoted = false;
                continue;
            }
            ++at;
        } else if (!quoted && (c == ',' || c == '\n')) {
            break;
        } else if (!quoted && c == '\r' && at + 1 < rest_.size() && rest_[at + 1] == '\n') {
            continue;
        }
        field += c;
    }
    const bool more = at < rest_.size() && rest_[at] == ',';
    rest_.remove_prefix(at < rest_.size() ? at + 1 : at);
    return more;
}

}  // namespace nemgr::vendors
