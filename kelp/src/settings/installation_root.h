// Where the platform is installed.
#pragma once

#include <string>

namespace kelp::settings {

// What OSS_ROOT says now, without slashes at its end ("/" stays); "" when it is not set.
std::string InstallationRoot();

// The platform's configuration in it.
inline std::string ConfigurationPathIn(const std::string& root) {
    return root + "/etc/kelp.json";
}

}  // namespace kelp::settings
