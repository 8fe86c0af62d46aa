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

    /// Those whose assignment begins with `digits` (see PrefixDigits), or that own the
    /// longer prefix or whole address `digits`; in the order of their assignments.
    std::vector<const Vendor*> FindPrefix(const std::string& digits) const;

    /// Those whose organization begins with `name`, the case of ASCII letters aside.
    std::vector<const Vendor*> FindName(const std::string& name) const;

  private:
    std::vector<Vendor> vendors_;
    std::string fault_ = "not loaded";
};

/// The upper-case digits of `text` without the ':', '-' and '.' that may stand between
/// them; nothing when anything else is in it or there are more than 12.
std::optional<std::string> PrefixDigits(const std::string& text);

/// The process's registry; empty until it is loaded.
const Registry& TheRegistry();
/// To be called before there are threads.
void LoadTheRegistry(const std::string& directory);

}  // namespace nemgr::vendors
