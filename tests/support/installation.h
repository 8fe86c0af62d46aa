// An installation root of one test's own: OSS_ROOT names it while the object exists.
//
//     Installation installation(R"({"gateway": {"baseUrl": "https://127.0.0.1:8443"}})");
//
// one thread.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "support/temp_folder.h"

class Installation {
  public:
    // Without `settings` there is no etc/kelp.json.
    explicit Installation(const std::optional<std::string>& settings = std::nullopt) {
        if (const char* const before = ::getenv("OSS_ROOT")) {
            m_before = before;
        }
        std::filesystem::create_directories(m_folder.Path("etc"));
        if (settings) {
            Configure(*settings);
        }
        ::setenv("OSS_ROOT", m_folder.Path().c_str(), 1);
    }
    ~Installation() {
        if (m_before) {
            ::setenv("OSS_ROOT", m_before->c_str(), 1);
        } else {
            ::unsetenv("OSS_ROOT");
        }
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    // Replaces etc/kelp.json in one step, as an administrator's tool would.
    void Configure(const std::string& settings) {
        const std::string fresh = m_folder.Path("etc/kelp.json.new");
        std::ofstream(fresh, std::ios::binary) << settings;
        std::filesystem::rename(fresh, File());
    }
    std::string File() const { return m_folder.Path("etc/kelp.json"); }
    std::string Path(const std::string& name) const { return m_folder.Path(name); }

  private:
    TempFolder m_folder;
    std::optional<std::string> m_before;
};
