// frameutil/sql.h - SQL statements and stored procedures by their error codes, the kind of
// database server, and the credentials that the configuration holds for a database.
//
//     dao::CSqlSession session;
//     dao::OpenConfigured(session, "MCDB");
//     FrameUtil::TESqlManager sql(&session);
//     dao::CExecResult rows;
//     if (sql.ExecSql(std::string("SELECT id, name FROM ne"), rows) != 0) {
//         FrameUtil::GetDBErrCode(rows, "the elements cannot be read");
//     }
//
// Thread rule: a TESqlManager is used on the thread that owns its session; the functions are
// thread-safe.
#pragma once

#include <string>

#include "frameutil/export.h"
#include "kelp/dao.h"
#include "kelp/value.h"

namespace FrameUtil {

/// Runs statements and stored procedures on a session that belongs to somebody else.
///
/// Every operation returns the error code of the execution's status: 0, or one of
/// dao::ErrCodeEnum (kelp/dao/status.h); DAO_ERR_ARGUMENT when there is no session. Nothing
/// is logged here and nothing throws. Where there is a `result`, it then holds the rows and
/// the status; after a failure the status alone.
class FRAMEUTIL_API TESqlManager {
  public:
    /// `session` must live as long as this object is used; null is allowed.
    explicit TESqlManager(dao::CSqlSession* session) noexcept : m_pSession(session) {}

    /// Runs one statement and throws its rows away. The data access log knows it as
    /// "sqlmanager.cpp:ExecSql:29".
    int ExecSql(const std::string& sql) noexcept;
    /// The same.
    int ExecSql(const CStdString& sql) noexcept;
    /// Runs one statement, whose rows go into `result`; known as "sqlmanager.cpp:ExecSql:35".
    int ExecSql(const std::string& sql, dao::CExecResult& result) noexcept;

    /// Runs the stored procedure `name` without parameters; its rows are thrown away.
    int ExecProc(const std::string& name) noexcept;
    /// The same with the status in `result`, and with `withRows` the rows as well.
    int ExecProc(const std::string& name, dao::CExecResult& result, bool withRows) noexcept;

  private:
    dao::CSqlSession* m_pSession;
};

/// The error code of the status that `result` holds. When it is not 0 and `text` not null,
/// `text` is logged as a warning at dbapi.cpp:GetDBErrCode:41.
FRAMEUTIL_API int GetDBErrCode(const dao::CExecResult& result, const char* text) noexcept;
/// The same for a status; the warning's line is 50.
FRAMEUTIL_API int GetDBErrCode(const dao::CExecStatus& status, const char* text) noexcept;

/// The library's number for the kind of server that the platform's main database runs on, from
/// the platform's number (dao::GetDBServerType_OnlyForFrame): 1 gives 0, 2 gives 1, 7 gives 2,
/// 3 (PostgreSQL) gives 3, 6 (SQLite) gives 4, every other one 5.
FRAMEUTIL_API int GetDbType() noexcept;

/// A database's user. Both texts may be empty. When it is destroyed, assigned to or moved from,
/// every character of the password that it held is overwritten with 0xCC before the storage is
/// released; what a caller assigns to `password` directly is wiped at the end as well, but not
/// what stood there before.
struct FRAMEUTIL_API s_DBUserInfo {
    std::string user;
    std::string password;

    s_DBUserInfo() = default;
    s_DBUserInfo(const s_DBUserInfo&) = default;
    s_DBUserInfo(s_DBUserInfo&& other) noexcept;
    s_DBUserInfo& operator=(const s_DBUserInfo& other);
    s_DBUserInfo& operator=(s_DBUserInfo&& other) noexcept;
    ~s_DBUserInfo();
};

/// The user and the password that the configuration holds for the database `dbName`. Empty
/// where it holds none; empty, with one trace, when it cannot be read or does not know the
/// database ("[FrameGetUserInfo] sysConf.getDBServerInfoByDBName return error:%d.").
///
/// With a server whose GetDbType() is 2 both are empty whatever the configuration holds,
/// deliberately: there the server itself knows who connects, so callers connect without
/// credentials. Throws only std::bad_alloc.
FRAMEUTIL_API s_DBUserInfo FrameGetUserInfo(const std::string& dbName);

}  // namespace FrameUtil
