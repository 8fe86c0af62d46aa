// Data access: SQL on SQLite and PostgreSQL through one set of classes.
//
//     dao::CSqlSession session;
//     dao::CExecStatus status = session.Open("sqlite:///var/lib/nemgr/inventory.db");
//     dao::CExecResult rows = session.Query("SELECT name, mtu FROM port WHERE ne = $1", {17});
//     for (std::size_t i = 0; i < rows.GetRowCount(); ++i) {
//         Use(rows.At(i, 0).As_std_string(), rows.At(i, 1).As_long());
//     }
//     if (rows.GetErrCode() != dao::DAO_OK) ...      // rows.GetStatus() says what happened
//
// What is where: status.h (codes), result.h (rows in memory), session.h (sessions,
// prepared statements, transactions, cursors, stored procedures), pool.h (sessions for many
// threads), configured.h (the databases of etc/kelp.json). docs/databases.md tells it by
// task.
//
// Nothing here throws for what happens outside: a failure is a status with a code of ours,
// the database's own code and its text, and one log line that names the database. Neither
// ever holds the password. std::bad_alloc becomes DAO_ERR_NO_MEMORY, except in copies and
// constructors of values that the caller makes itself.
//
// Thread rule: each class says its own; a session and all that came from it belong to one
// thread at a time.
#pragma once

#include "kelp/dao/configured.h"
#include "kelp/dao/pool.h"
#include "kelp/dao/result.h"
#include "kelp/dao/session.h"
#include "kelp/dao/status.h"
