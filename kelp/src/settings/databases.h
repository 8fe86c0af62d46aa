// The databases of etc/kelp.json, for those who report what is wrong with them themselves.
#pragma once

#include <map>
#include <string>

namespace kelp::settings {

using DatabaseInfo = std::map<std::string, std::string>;

// The path of etc/kelp.json; "" when OSS_ROOT is not set.
std::string ConfigurationPath();

// As SysConfigure::getDBServerInfoByDBName, with the reason of a failure in `why` instead of
// the log. Throws std::bad_alloc.
int ReadDatabase(const std::string& name, DatabaseInfo& info, std::string& why);

// Overwrites every value.
void WipeValues(DatabaseInfo& info) noexcept;

}  // namespace kelp::settings
