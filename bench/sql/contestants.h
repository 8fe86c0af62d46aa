// Who writes and reads the rows: ours, and each database's C interface.
#pragma once

#include <memory>
#include <string>

namespace bench {

class Contestant {
  public:
    Contestant() = default;
    virtual ~Contestant() = default;
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;

    // All rows in one transaction, by one prepared statement.
    virtual void Insert() = 0;
    // All rows into memory, and each cell looked at: their digest.
    virtual unsigned long Select() = 0;
    // Empties the table.
    virtual void Empty() = 0;
};

std::unique_ptr<Contestant> MakeOurs(const std::string& url);
std::unique_ptr<Contestant> MakeSqlite(const std::string& path);
std::unique_ptr<Contestant> MakePostgres(const std::string& url);

}  // namespace bench
