// An environment variable for the length of a test.
//
//     const EnvironmentVariable size("MGMTSIZE", "1500");
//     const EnvironmentVariable none("MGMTSIZE", nullptr);   // unset
//
// one thread: the environment is the whole process's.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const char* value) : m_name(name) {
        if (const char* before = std::getenv(name); before != nullptr) {
            m_before = before;
        }
        Set(value);
    }
    ~EnvironmentVariable() { Set(m_before ? m_before->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    void Set(const char* value) {
        if (value == nullptr) {
            ::unsetenv(m_name.c_str());
        } else {
            ::setenv(m_name.c_str(), value, 1);
        }
    }

    std::string m_name;
    std::optional<std::string> m_before;
};
