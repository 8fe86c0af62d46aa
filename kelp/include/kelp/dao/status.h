// kelp/dao/status.h - how a database operation ended.
//
//     dao::CExecStatus status = session.Exec("INSERT INTO ne VALUES ($1)", {17});
//     if (status.GetErrCode() == dao::DAO_ERR_CONSTRAINT) ...
//
// thread-compatible.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "kelp/export.h"

namespace dao {

// The codes of this service: the same for every database, and never renumbered.
enum ErrCodeEnum : int {
    DAO_OK = 0,
    DAO_ERR_ARGUMENT = 0x43500001,         // a malformed URL, a wrong number of parameters, a
                                           // session that is not open, a COPY
    DAO_ERR_CONNECT = 0x43500002,          // the database cannot be reached or opened
    DAO_ERR_LOGIN = 0x43500003,            // it refuses the user or the password
    DAO_ERR_CONNECTION_LOST = 0x43500004,  // it went away; whether the statement was done
                                           // is unknown
    DAO_ERR_SYNTAX = 0x43500005,           // bad SQL: syntax, unknown table, column, function
    DAO_ERR_CONSTRAINT = 0x43500006,       // unique, foreign key, check, not null
    DAO_ERR_LOCKED = 0x43500007,           // somebody else holds the lock for too long
    DAO_ERR_TIMEOUT = 0x43500008,          // the statement took longer than its limit
    DAO_ERR_FULL = 0x43500009,             // no space left for the database
    DAO_ERR_IO = 0x4350000A,               // the database's storage fails or is damaged
    DAO_ERR_READ_ONLY = 0x4350000B,        // a write to what may only be read
    DAO_ERR_PERMISSION = 0x4350000C,       // the user may not do this
    DAO_ERR_DATA = 0x4350000D,             // a value that the database cannot take or convert
    DAO_ERR_NO_PROCEDURE = 0x4350000E,     // no stored procedure of that name and that many
                                           // parameters
    DAO_ERR_LIMIT = 0x4350000F,            // the result has more rows or bytes than allowed
    DAO_ERR_NO_MEMORY = 0x43500010,        // this process or the server ran out of memory
    DAO_ERR_POOL_TIMEOUT = 0x43500011,     // no session of the pool became free in time
    DAO_ERR_STATE = 0x43500012,            // not now: a cursor is open, a transaction has failed,
                                           // is open already or is not open
    DAO_ERR_CONFLICT = 0x43500013,         // lost against another transaction: repeat the whole
                                           // transaction
    DAO_ERR_TOO_MANY = 0x43500014,         // the server has no connection left
    DAO_ERR_NO_DATABASE = 0x43500015,      // the configuration has no such database
    DAO_ERR_OTHER = 0x435000FF,            // everything else: see the native code and the text
};

// The outcome of one operation: a code of ours and what the database said itself.
class KELP_API CExecStatus {
  public:
    // Success.
    CExecStatus() noexcept = default;
    // A failure. `sql_state` is cut after five characters; without memory the text is "".
    CExecStatus(int code, int native_code, std::string_view sql_state, std::string text) noexcept;

    // 0 (DAO_OK) or one of ErrCodeEnum.
    int GetErrCode() const noexcept { return m_code; }
    bool IsOk() const noexcept { return m_code == DAO_OK; }
    // SQLite's extended result code; 0 for PostgreSQL, which has GetSqlState(), and when the
    // failure was found on this side.
    int GetNativeCode() const noexcept { return m_native_code; }
    // The five characters that SQL calls the state ("23505"); "" when there is none.
    const char* GetSqlState() const noexcept { return m_sql_state; }
    // What went wrong, for people; "" after success. The database's own words, without
    // credentials.
    const std::string& GetErrText() const noexcept;
    // How many rows an INSERT, UPDATE or DELETE touched; 0 for every other statement.
    long long GetAffectedRows() const noexcept { return m_affected_rows; }

    void SetAffectedRows(long long rows) noexcept { m_affected_rows = rows; }

  private:
    int m_code = DAO_OK;
    int m_native_code = 0;
    long long m_affected_rows = 0;
    char m_sql_state[6] = {};
    // Shared, since a status is handed on often and rarely holds one.
    std::shared_ptr<const std::string> m_text;
};

}  // namespace dao
