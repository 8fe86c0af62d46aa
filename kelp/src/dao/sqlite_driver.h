// What the parts of the SQLite driver share.
#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>
#include <string_view>

#include "kelp/dao/result.h"
#include "kelp/dao/status.h"

namespace kelp::db {

struct SqliteUrl {
    std::string path;  // ":memory:" or a file
    int flags = 0;     // of sqlite3_open_v2
};

// What a sqlite: URL says; nothing, with the reason in `why`, when it says it wrongly.
std::optional<SqliteUrl> ParseSqliteUrl(std::string_view url, std::string& why);

// Our code for one of SQLite's extended result codes.
int SqliteErrCode(int native_code);

// Binds `value` to parameter `index`; texts and blocks are not copied. An SQLite code; for what
// SQLite cannot hold SQLITE_MISMATCH.
int BindSqlite(sqlite3_stmt* statement, int index, const TEValue& value);

// The type that a column is declared with.
struct SqliteColumn {
    refl::Enum::DataTypeEnum type = refl::Enum::DT_EMPTY;
    bool is_unsigned = false;
};
SqliteColumn DeclaredType(const char* declaration);

// The cell of the row the statement stands on; adds what it holds to `bytes`.
void ReadSqlite(sqlite3_stmt* statement, int column, bool is_unsigned, TEValue& cell,
                std::size_t& bytes);

}  // namespace kelp::db
