// kelp/dao/configured.h - the databases that the installation's etc/kelp.json names.
//
//     dao::CSqlSession session;
//     dao::CExecStatus status = dao::OpenConfigured(session, "MCDB");
//
// thread-safe.
#pragma once

#include <string>

#include "kelp/dao/session.h"

namespace dao {

// Opens `session` on the database `name` of the configuration (docs/formats/databases.md)
// with its user and password, which are wiped before the call returns. A relative path of
// a SQLite URL counts from the installation root. `options.user` and `options.password` are
// ignored. DAO_ERR_NO_DATABASE when the configuration cannot be read or has no such database;
// otherwise what Open gives. Does not throw.
KELP_API CExecStatus OpenConfigured(CSqlSession& session, const std::string& name,
                                    SessionOptions options = {}) noexcept;

// The numbers by which the platform knows the kinds of server, unless configured otherwise.
inline constexpr int kServerTypePostgresql = 3;
inline constexpr int kServerTypeSqlite = 6;

// The platform's number for the kind of server that its main database runs on. The first of:
// what SetDBServerType set; the "type" of the database "MCDB" in etc/kelp.json, a number,
// "sqlite" or "postgresql"; kServerTypeSqlite. A changed file counts from the next call.
KELP_API int GetDBServerType_OnlyForFrame() noexcept;

// For programs that know better than the configuration; 0 asks the configuration again.
KELP_API void SetDBServerType(int number) noexcept;

}  // namespace dao
