#include "nemgr/vendors/registry.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "nemgr/vendors/csv.h"

namespace nemgr::vendors {
namespace {

constexpr const char* kFiles[] = {"oui.csv", "mam.csv", "oui36.csv", "iab.csv"};
constexpr std::size_t kFields = 4;  // block, assignment, organization, postal address
constexpr std::size_t kMostDigits = 12;

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

}  // namespace

void Registry::Load(const std::string& directory) {
    vendors_.clear();
    fault_ = "no registry file in " + directory;
    for (const char* name : kFiles) {
        std::ifstream file(directory + "/" + name, std::ios::binary);
        std::ostringstream text;
        if (file && text << file.rdbuf()) {
            Add(text.str());
        }
    }
}

void Registry::Add(const std::string& text) {
    CsvReader reader(text);
    for (std::vector<std::string> fields; reader.Next(fields);) {
        const auto digits = fields.size() == kFields ? PrefixDigits(fields[1]) : std::nullopt;
        if (!digits || digits->empty()) {
            continue;  // the line with the columns' names, for one
        }
        vendors_.push_back(
            {std::move(fields[0]), *digits, std::move(fields[2]), std::move(fields[3])});
    }
    // Stable: one prefix has several owners, and they stay in the file's order.
    std::stable_sort(vendors_.begin(), vendors_.end(),
                     [](const Vendor& a, const Vendor& b) { return a.assignment < b.assignment; });
}

std::optional<std::string> PrefixDigits(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (c == ':' || c == '-' || c == '.') {
            continue;
        }
        digits += Upper(c);
        if (!IsHexDigit(digits.back()) || digits.size() > kMostDigits) {
            return std::nullopt;
        }
    }
    return digits;
}

std::string Fingerprint(const std::string& directory) {
    std::ostringstream text;
    for (const char* name : kFiles) {
        const std::filesystem::path path = std::filesystem::path(directory) / name;
        std::error_code missing;
        const auto size = std::filesystem::file_size(path, missing);
        const auto time = std::filesystem::last_write_time(path, missing);
        if (!missing) {
            text << path.string() << ' ' << size << ' ' << time.time_since_epoch().count() << '\n';
        }
    }
    return text.str();
}

}  // namespace nemgr::vendors
