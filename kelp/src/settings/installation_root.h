// Where the platform is installed.
#pragma once

#include <string>

namespace kelp::settings {

// What is wrong without one, and what to do about it.
inline constexpr const char* kRootIsNotSet =
    "OSS_ROOT is not set: run 'kelpd init DIR' and export what it prints";
inline constexpr const char* kMakeARoot = "run 'kelpd init DIR' to make an installation root";

// What OSS_ROOT says now, without slashes at its end ("/" stays); "" when it is not set.
std::string InstallationRoot();

// The platform's configuration in it.
inline std::string ConfigurationPathIn(const std::string& root) {
    return root + "/etc/kelp.json";
}

}  // namespace kelp::settings
