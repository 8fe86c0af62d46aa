// An installation root of one test's, which OSS_ROOT names while it exists.
//
//     InstallationRoot root;
//     root.Configure(R"({"databases": {"MCDB": {"user": "u"}}})");
//
// one thread.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "support/temp_folder.h"

class InstallationRoot {
  public:
    InstallationRoot() {
        if (const char* before = ::getenv("OSS_ROOT")) {
            m_before = before;
        }
        std::filesystem::create_directories(Path("etc"));
        ::setenv("OSS_ROOT", m_folder.Path().c_str(), 1);
    }
    ~InstallationRoot() {
        if (m_before) {
            ::setenv("OSS_ROOT", m_before->c_str(), 1);
        } else {
            ::unsetenv("OSS_ROOT");
        }
    }
    InstallationRoot(const InstallationRoot&) = delete;
    InstallationRoot& operator=(const InstallationRoot&) = delete;

    std::string Path(const std::string& name) const { return m_folder.Path(name); }
    std::string ConfigurationPath() const { return Path("etc/kelp.json"); }

    // Writes etc/kelp.json.
    void Configure(std::string_view text, mode_t mode = 0600) const {
        std::ofstream(ConfigurationPath(), std::ios::binary) << text;
        ::chmod(ConfigurationPath().c_str(), mode);
    }

  private:
    TempFolder m_folder;
    std::optional<std::string> m_before;
};
