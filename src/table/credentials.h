// What the configuration knows of a database, without leaving a password in freed memory.
#pragma once

#include <map>
#include <string>

namespace FrameUtil {

// Overwrites every character with 0xCC; the length stays. Of an empty text, the storage that
// it still has: a moved-from short text keeps its characters.
void WipeText(std::string& text) noexcept;

// The key/value map of a database. Its values under "user", "password", "adminUser" and
// "adminPassword" are wiped before it goes. one thread.
class DatabaseInfo {
  public:
    DatabaseInfo() = default;
    // Wipes, though not everything need have been read.
    ~DatabaseInfo();
    DatabaseInfo(const DatabaseInfo&) = delete;
    DatabaseInfo& operator=(const DatabaseInfo&) = delete;

    // The platform's code, 0 when `dbName` is known.
    int Read(const std::string& dbName);
    // "" for a key that is missing.
    const std::string& operator[](const char* key) { return m_values[key]; }

  private:
    std::map<std::string, std::string> m_values;
};

// What a process needs to reach the main database.
struct MainDBInfo {
    std::string lib;
    std::string serviceName;
    std::string user;
    std::string password;
    std::string dbName;

    MainDBInfo() = default;
    MainDBInfo(const MainDBInfo&) = default;
    MainDBInfo& operator=(const MainDBInfo&) = default;
    // Wipes the password.
    ~MainDBInfo() { WipeText(password); }
};

// Fills `info` for the database "MCDB". The configuration's code; `info` is untouched unless
// that is 0.
int ReadMainDBInfo(MainDBInfo& info);

}  // namespace FrameUtil
