// nemgr/vendors/registry.h - who owns which prefix of hardware addresses.
//
// The IEEE sells prefixes of 24, 28 and 36 bits and publishes the buyers as files, which
// Debian ships in its package ieee-data.
//
// Thread rule: immutable once loaded.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace nemgr::vendors {

struct Vendor {
    std::string block;       ///< "MA-L", "MA-M", "MA-S" or "IAB"
    std::string assignment;  ///< the prefix: 6, 7 or 9 upper-case hexadecimal digits
    std::string organization;
    std::string postal_address;
};

class Registry {
  public:
    /// Reads the registry's files in `directory`, in which at least one must be. A line
    /// that is no record is left out. When nothing can be read the registry is empty and
    /// fault() says why.
    void Load(const std::string& directory);

    /// Adds the records of one file's text.
    void Add(const std::string& text);

    bool empty() const { return vendors_.empty(); }
    std::size_t size() const { return vendors_.size(); }
    const std::string& fault() const { return fault_; }

    /// In the order of their assignments.
    const std::vector<Vendor>& vendors() const { return vendors_; }

  private:
    std::vector<Vendor> vendors_;
    std::string fault_ = "not loaded";
};

/// The upper-case digits of `text` without the ':', '-' and '.' that may stand between
/// them; nothing when anything else is in it or there are more than 12.
std::optional<std::string> PrefixDigits(const std::string& text);

/// Which files there are in `directory`, how large and how old; equal as long as nobody has
/// changed them. Empty when there are none.
std::string Fingerprint(const std::string& directory);

}  // namespace nemgr::vendors
