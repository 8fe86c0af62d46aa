#include "nemgr/vendors/registry.h"

#include <algorithm>
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

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

Registry& Mutable() {
    static Registry registry;
    return registry;
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

std::vector<const Vendor*> Registry::FindPrefix(const std::string& digits) const {
    std::vector<const Vendor*> found;
    for (const Vendor& vendor : vendors_) {
        if (StartsWith(vendor.assignment, digits) || StartsWith(digits, vendor.assignment)) {
            found.push_back(&vendor);
        }
    }
    return found;
}

std::vector<const Vendor*> Registry::FindName(const std::string& name) const {
    std::vector<const Vendor*> found;
    for (const Vendor& vendor : vendors_) {
        const std::string& whole = vendor.organization;
        if (whole.size() >= name.size() &&
            std::equal(name.begin(), name.end(), whole.begin(),
                       [](char a, char b) { return Upper(a) == Upper(b); })) {
            found.push_back(&vendor);
        }
    }
    return found;
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

const Registry& TheRegistry() {
    return Mutable();
}

void LoadTheRegistry(const std::string& directory) {
    Mutable().Load(directory);
}

}  // namespace nemgr::vendors
