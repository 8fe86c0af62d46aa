// A database behind one connection, as the session's core sees it. A driver executes what
// it is told, one statement at a time, and knows nothing of reconnection policy, limits,
// caches or the log: those are the core's.
//
// one thread. What a driver throws is std::bad_alloc alone.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "kelp/dao/session.h"

namespace kelp::db {

// A statement that a driver knows by its text.
struct Prepared {
    Prepared() = default;
    virtual ~Prepared() = default;
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;

    std::string sql;
    std::string first_word;      // upper-case letters
    bool wanted_again = false;   // worth what preparing costs beyond one execution
    int parameters = 0;          // how many it has, where the driver knows
    bool may_use_fewer = false;  // of the parameters that it is given
};

enum class Step { kRow, kEnd, kFailed };

// How a stored procedure is called.
struct ProcedureCall {
    std::string sql;           // a statement, or several with `is_script`
    bool is_script = false;    // each of its statements may use all of the parameters
    bool returns_rows = true;  // false: what comes back is no result
};

class Driver {
  public:
    Driver() = default;
    virtual ~Driver() = default;
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    virtual int ServerType() const = 0;
    // For people: where, without credentials.
    virtual const std::string& Where() const = 0;

    // Connects, dropping a connection that there was and what was prepared on it.
    virtual dao::CExecStatus Connect() = 0;
    // Whether the connection can be used, as far as can be told without asking the server:
    // by what the last statement met, and with `look` also by what has arrived since, which
    // costs a system call.
    virtual bool Connected(bool look) = 0;
    virtual bool InTransaction() const = 0;
    // Asks the server for a sign of life.
    virtual dao::CExecStatus Ping() = 0;

    // A statement to run `sql`. With `rest`, `sql` may hold several: the first is taken and
    // the offset of what follows goes into `rest`; `out` is null when only blanks were left.
    virtual dao::CExecStatus Prepare(std::string_view sql, std::size_t* rest,
                                     std::shared_ptr<Prepared>& out) = 0;
    // Finds out now whether the statement can be prepared, for one that is wanted again.
    virtual dao::CExecStatus PrepareNow(Prepared& statement, std::int64_t deadline) = 0;
    // Begins a statement, which must end by Finish. The parameters live until then.
    virtual dao::CExecStatus Start(Prepared& statement, const dao::CParams& params,
                                   std::int64_t deadline) = 0;
    // Puts the next row into `row`, replacing what it held, and adds to `bytes` what its texts
    // and blocks hold. kFailed: Finish says why.
    virtual Step Fetch(dao::CRow& row, std::size_t& bytes) = 0;
    // Of the statement that runs, known after the first Fetch.
    virtual void Columns(std::vector<dao::CColumn>& columns) = 0;
    // Ends the statement; what it has not given yet is given up. Its status, with the rows
    // that it touched.
    virtual dao::CExecStatus Finish() = 0;

    virtual bool ScriptIsOneCall() const = 0;  // else the core runs the statements one by one
    virtual dao::CExecStatus Script(std::string_view sql, std::int64_t deadline) = 0;
    virtual const char* BeginSql(dao::CSqlSession::Access access) const = 0;
    // How the procedure of that name and that many parameters is called.
    virtual dao::CExecStatus FindProcedure(const std::string& name, std::size_t parameters,
                                           std::int64_t deadline, ProcedureCall& call) = 0;
    virtual void SetStatementTimeout(int milliseconds) = 0;
};

// The driver for a URL, not connected; null with the reason in `why`.
std::unique_ptr<Driver> MakeDriver(const std::string& url, const dao::SessionOptions& options,
                                   dao::CExecStatus& why);
std::unique_ptr<Driver> MakeSqliteDriver(std::string_view url, const dao::SessionOptions& options,
                                         dao::CExecStatus& why);
std::unique_ptr<Driver> MakePostgresDriver(const std::string& url,
                                           const dao::SessionOptions& options,
                                           dao::CExecStatus& why);

// A failure that was found on this side.
inline dao::CExecStatus Refusal(int code, std::string text) {
    return dao::CExecStatus(code, 0, "", std::move(text));
}

}  // namespace kelp::db
