// What is behind a session: one driver and the rules that hold on every database. It connects
// anew, refuses what may not be done now, keeps prepared statements, bounds results, and tells
// the log about failures and slow statements.
//
// Design notes. One thread at a time, without a lock. Sessions, statements and cursors share
// it; a session that closes takes the driver out, and the others then find none. A driver's
// statement runs from Begin of a Call to its Finish; only a cursor leaves one open between
// calls, and while it does (m_cursor) everything else is refused.
#pragma once

#include <time.h>

#include <memory>
#include <new>
#include <string>
#include <unordered_map>

#include "base/rate_limit.h"
#include "dao/driver.h"
#include "dao/statement_cache.h"

namespace kelp::db {

class Core : public std::enable_shared_from_this<Core> {
  public:
    Core() = default;
    ~Core() { Close(); }
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    dao::CExecStatus Open(const std::string& url, const dao::SessionOptions& options) noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return m_driver != nullptr; }
    // As far as can be told without asking.
    bool IsBroken() const noexcept;
    dao::CExecStatus Ping() noexcept;
    std::string Where() const { return m_driver == nullptr ? "" : m_driver->Where(); }
    int ServerType() const noexcept { return m_driver == nullptr ? 0 : m_driver->ServerType(); }

    // With `result` the rows go there, else they are dropped.
    dao::CExecStatus Execute(const dao::CSqlID& id, dao::SqlTypeEnum type, std::string_view sql,
                             const dao::CParams& params, dao::CExecResult* result) noexcept;
    dao::CExecStatus Execute(const dao::CSqlID& id, const std::shared_ptr<Prepared>& statement,
                             const dao::CParams& params, dao::CExecResult* result) noexcept;
    dao::CExecStatus Script(const dao::CSqlID& id, std::string_view sql) noexcept;
    dao::CExecStatus Procedure(const dao::CSqlID& id, const std::string& name,
                               const dao::CParams& params, dao::CExecResult* result) noexcept;
    dao::CExecStatus Prepare(const dao::CSqlID& id, std::string_view sql,
                             std::shared_ptr<Prepared>& statement) noexcept;

    dao::CExecStatus OpenCursor(const dao::CSqlID& id, std::string_view sql,
                                std::shared_ptr<Prepared> statement, const dao::CParams& params,
                                dao::CCursorTable& cursor) noexcept;
    bool FetchCursor(dao::CCursorTable& cursor) noexcept;
    void CloseCursor(unsigned long long ticket) noexcept;
    void CloseAnyCursor() noexcept;

    dao::CExecStatus Begin(dao::CSqlSession::Access access) noexcept;
    dao::CExecStatus Commit() noexcept;
    dao::CExecStatus Rollback() noexcept;
    bool InTransaction() const noexcept;
    void SetStatementTimeout(int milliseconds) noexcept;

  private:
    // Runs one call from outside: nothing is thrown out of it, and what failed or was slow is
    // told to the log once.
    template <typename Work>
    dao::CExecStatus Guarded(const dao::CSqlID& id, const char* what, Work work) noexcept {
        const std::int64_t started = m_now = QuickNow();
        dao::CExecStatus status;
        try {
            status = work();
        } catch (const std::bad_alloc&) {
            status = OutOfMemory();
        }
        Report(id, what, status, started);
        return status;
    }
    // The monotonic clock to the kernel's tick of a few milliseconds: limits and durations are
    // told in milliseconds, and an INSERT takes less than a microsecond.
    static std::int64_t QuickNow() {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        return static_cast<std::int64_t>(now.tv_sec) * base::kSecond + now.tv_nsec;
    }
    // Ends what was being done.
    dao::CExecStatus OutOfMemory() noexcept;
    void Report(const dao::CSqlID& id, const char* what, const dao::CExecStatus& status,
                std::int64_t started) noexcept;

    std::int64_t Deadline() const;
    dao::CExecStatus Ready(std::string_view first_word);
    dao::CExecStatus Find(std::string_view sql, bool keep, std::shared_ptr<Prepared>& statement);
    dao::CExecStatus Run(Prepared& statement, const dao::CParams& params, dao::CExecResult* result);
    dao::CExecStatus RunText(std::string_view sql, const dao::CParams& params,
                             dao::CExecResult* result);
    dao::CExecStatus DropRows();
    dao::CExecStatus ReadRows(dao::CExecResult& result);
    dao::CExecStatus RunParts(std::string_view sql, const dao::CParams& params,
                              dao::CExecResult* result);
    dao::CExecStatus AllOrNothing(std::string_view sql, const dao::CParams& params,
                                  dao::CExecResult* result);
    dao::CExecStatus FindProcedure(const std::string& name, std::size_t parameters,
                                   ProcedureCall& call);
    dao::CExecStatus CallProcedure(const std::string& name, const dao::CParams& params,
                                   dao::CExecResult* result);
    dao::CExecStatus EndTransaction(const char* sql);
    dao::CExecStatus CommitNow();
    bool EndsFailedTransaction(std::string_view first_word, std::string_view sql,
                               dao::CExecStatus& status);
    // What a statement's end means for the transaction it was in.
    void Note(const dao::CExecStatus& status, std::string_view first_word, bool was_in);

    std::int64_t m_now = 0;  // when the call began
    std::unique_ptr<Driver> m_driver;
    dao::SessionOptions m_options;
    std::unique_ptr<base::LimitedLog> m_log;
    StatementCache m_cache;
    dao::CRow m_dropped;                                          // the row that nobody wants
    std::unordered_map<std::string, ProcedureCall> m_procedures;  // by name and parameter count

    bool m_in_transaction = false;  // after the last statement, the server's death regardless
    bool m_failed = false;          // a statement of it failed, or its connection is lost
    bool m_lost = false;            // the latter

    unsigned long long m_cursor = 0;  // the open cursor's ticket; 0: none
    unsigned long long m_last_ticket = 0;
    std::shared_ptr<Prepared> m_cursor_statement;
    std::vector<TEValue> m_cursor_params;
    dao::CSqlID m_cursor_id;
    std::int64_t m_cursor_started = 0;
    std::int64_t m_cursor_deadline = 0;
    bool m_cursor_in_transaction = false;
};

}  // namespace kelp::db
