#include "dao/core.h"

#include <cstdio>

#include "dao/sql_text.h"
#include "kelp/log.h"

namespace kelp::db {

namespace {

constexpr std::size_t kMostSqlOctets = std::size_t{16} << 20;
constexpr std::size_t kCellOctets = sizeof(TEValue);

dao::CExecStatus NoMemory() {
    return Refusal(dao::DAO_ERR_NO_MEMORY, "out of memory");  // short: it needs none itself
}

std::string Named(const dao::CSqlID& id) {
    if (*id.GetSource() == '\0' && *id.GetFunction() == '\0') {
        return "unnamed";
    }
    return std::string(id.GetSource()) + ":" + id.GetFunction() + ":" +
           std::to_string(id.GetLine());
}

std::string Hex(int code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

// Whether a statement that begins with `word` may be of the kind that the caller says.
bool IsOfType(std::string_view word, dao::SqlTypeEnum type) {
    if (word == "WITH") {
        return true;
    }
    switch (type) {
        case dao::SQL_SELECT:
            return word == "SELECT" || word == "VALUES" || word == "TABLE";
        case dao::SQL_INSERT:
            return word == "INSERT" || word == "REPLACE";
        case dao::SQL_UPDATE:
            return word == "UPDATE";
        case dao::SQL_DELETE:
            return word == "DELETE";
        case dao::SQL_ANY:
            return true;
    }
    return false;
}

bool ChangesTables(std::string_view first_word) {
    return first_word == "CREATE" || first_word == "ALTER" || first_word == "DROP";
}

}  // namespace

dao::CExecStatus Core::OutOfMemory() noexcept {
    if (m_driver != nullptr && m_cursor == 0) {
        static_cast<void>(m_driver->Finish());
        m_failed = m_in_transaction;
    }
    return NoMemory();
}

void Core::Report(const dao::CSqlID& id, const char* what, const dao::CExecStatus& status,
                  std::int64_t started) noexcept {
    const bool timed = m_options.slow_statement_ms > 0;
    const std::int64_t took_ms = timed ? (QuickNow() - started) / base::kMillisecond : 0;
    const bool slow = timed && took_ms >= m_options.slow_statement_ms;
    if (m_log == nullptr || (status.IsOk() && !slow)) {
        return;
    }
    try {
        const std::string where = "[dao] " + Where() + ": " + what + " " + Named(id);
        if (slow) {
            LogProcess::Warn(where + " took " + std::to_string(took_ms) + " ms",
                             LocationInfo("dao", "", 0));
        }
        if (!status.IsOk()) {
            const char* const state = status.GetSqlState();
            m_log->Warn(where + " failed: " + Hex(status.GetErrCode()) + " " + status.GetErrText() +
                        (*state != '\0' ? std::string(" (") + state + ")" : std::string()));
        }
    } catch (const std::bad_alloc&) {
        LogProcess::Warn("[dao] out of memory", LocationInfo("dao", "", 0));
    }
}

dao::CExecStatus Core::Open(const std::string& url, const dao::SessionOptions& options) noexcept {
    Close();
    try {
        m_log = std::make_unique<base::LimitedLog>("dao");
        dao::CExecStatus status;
        std::unique_ptr<Driver> driver = MakeDriver(url, options, status);
        std::string where = "a database";
        if (driver != nullptr) {
            where = driver->Where();
            status = driver->Connect();
        }
        if (!status.IsOk()) {
            m_log->Warn("[dao] " + where + ": opening failed: " + Hex(status.GetErrCode()) + " " +
                        status.GetErrText());
            return status;
        }
        m_options = options;
        Wipe(m_options.password);
        m_cache.SetCapacity(options.cached_statements);
        m_driver = std::move(driver);
        return status;
    } catch (const std::bad_alloc&) {
        return NoMemory();
    }
}

void Core::Close() noexcept {
    if (m_driver == nullptr) {
        return;
    }
    CloseAnyCursor();
    m_cache.Clear();
    m_procedures.clear();
    m_driver.reset();  // which rolls an open transaction back
    m_in_transaction = m_failed = m_lost = false;
}

bool Core::IsBroken() const noexcept {
    return m_driver == nullptr || m_lost || !m_driver->Connected(true);
}

std::int64_t Core::Deadline() const {
    return m_options.statement_timeout_ms <= 0
               ? base::kNever
               : m_now + m_options.statement_timeout_ms * base::kMillisecond;
}

// Whether a statement may run now; connects anew where that is needed.
dao::CExecStatus Core::Ready(std::string_view first_word) {
    if (m_driver == nullptr) {
        return Refusal(dao::DAO_ERR_ARGUMENT, "the session is not open");
    }
    if (m_cursor != 0) {
        return Refusal(dao::DAO_ERR_STATE, "a cursor of the session is open");
    }
    // In a transaction a lost connection cannot be mended: the statement finds out itself.
    const bool connected = m_driver->Connected(!m_in_transaction);
    if (!m_lost && m_in_transaction && !connected) {
        m_lost = m_failed = true;
    }
    if (m_lost) {
        return Refusal(dao::DAO_ERR_CONNECTION_LOST,
                       "the connection was lost in the transaction: roll it back");
    }
    if (m_failed && !IsRollback(first_word)) {
        return Refusal(dao::DAO_ERR_STATE,
                       "a statement of the transaction has failed: roll it back");
    }
    if (connected) {
        return {};
    }
    m_procedures.clear();
    return m_driver->Connect();
}

void Core::Note(const dao::CExecStatus& status, std::string_view first_word, bool was_in) {
    if (!m_driver->Connected(false)) {
        m_lost = m_failed = was_in;
        m_in_transaction = was_in;
        return;
    }
    m_in_transaction = m_driver->InTransaction();
    if (ChangesTables(first_word)) {
        // A server keeps the types that parameters had when a statement was prepared.
        m_cache.Clear();
    }
    if (status.IsOk()) {
        // Also ROLLBACK TO: what it goes back to was sound.
        if (IsRollback(first_word) || !m_in_transaction) {
            m_failed = m_lost = false;
        }
    } else if (was_in) {
        // SQLite may have rolled back by itself: the caller still believes in its transaction.
        m_failed = true;
        m_in_transaction = true;
    }
}

dao::CExecStatus Core::Find(std::string_view sql, bool keep, std::shared_ptr<Prepared>& statement) {
    statement = m_cache.Find(sql);
    if (statement != nullptr) {
        statement->wanted_again = true;
        return {};
    }
    dao::CExecStatus status = m_driver->Prepare(sql, nullptr, statement);
    if (status.IsOk() && keep) {
        statement->sql = sql;
        m_cache.Add(statement);
    }
    return status;
}

dao::CExecStatus Core::DropRows() {
    std::size_t octets = 0;
    while (m_driver->Fetch(m_dropped, octets) == Step::kRow) {
    }
    return m_driver->Finish();
}

dao::CExecStatus Core::ReadRows(dao::CExecResult& result) {
    std::vector<dao::CColumn> columns;
    std::vector<dao::CRow> rows;
    std::size_t octets = 0;
    for (bool first = true;; first = false) {
        rows.emplace_back();
        const Step step = m_driver->Fetch(rows.back(), octets);
        if (first) {
            m_driver->Columns(columns);
        }
        if (step != Step::kRow) {
            break;
        }
        octets += columns.size() * kCellOctets;
        if (rows.size() > m_options.max_rows || octets > m_options.max_bytes) {
            const bool by_rows = rows.size() > m_options.max_rows;
            static_cast<void>(m_driver->Finish());
            return Refusal(dao::DAO_ERR_LIMIT,
                           by_rows ? "more than " + std::to_string(m_options.max_rows) + " rows"
                                   : "more than " + std::to_string(m_options.max_bytes) + " bytes");
        }
    }
    dao::CExecStatus status = m_driver->Finish();
    if (status.IsOk()) {
        rows.pop_back();
        result.Assign(std::move(columns), std::move(rows));
    }
    return status;
}

// One statement from beginning to end; Ready has been asked.
dao::CExecStatus Core::Run(Prepared& statement, const dao::CParams& params,
                           dao::CExecResult* result) {
    const bool was_in = m_in_transaction;
    dao::CExecStatus status = m_driver->Start(statement, params, Deadline());
    if (status.IsOk()) {
        status = result == nullptr ? DropRows() : ReadRows(*result);
    }
    Note(status, statement.first_word, was_in);
    return status;
}

dao::CExecStatus Core::RunText(std::string_view sql, const dao::CParams& params,
                               dao::CExecResult* result) {
    const std::string first_word = FirstWord(sql);
    dao::CExecStatus status = Ready(first_word);
    if (!status.IsOk()) {
        return status;
    }
    if (sql.size() > kMostSqlOctets || sql.find('\0') != std::string_view::npos) {
        return Refusal(dao::DAO_ERR_ARGUMENT, "the statement is too long or has a zero byte");
    }
    const bool was_in = m_in_transaction;
    std::shared_ptr<Prepared> statement;
    status = Find(sql, true, statement);
    if (!status.IsOk()) {
        Note(status, first_word, was_in);
        return status;
    }
    return Run(*statement, params, result);
}

dao::CExecStatus Core::Execute(const dao::CSqlID& id, dao::SqlTypeEnum type, std::string_view sql,
                               const dao::CParams& params, dao::CExecResult* result) noexcept {
    if (result != nullptr) {
        result->Clear();
    }
    return Guarded(id, "statement", [&]() -> dao::CExecStatus {
        if (type != dao::SQL_ANY && !IsOfType(FirstWord(sql), type)) {
            return Refusal(dao::DAO_ERR_ARGUMENT, "the statement is of another kind than said");
        }
        dao::CExecStatus status;
        return EndsFailedTransaction("", sql, status) ? status : RunText(sql, params, result);
    });
}

dao::CExecStatus Core::Execute(const dao::CSqlID& id, const std::shared_ptr<Prepared>& statement,
                               const dao::CParams& params, dao::CExecResult* result) noexcept {
    if (result != nullptr) {
        result->Clear();
    }
    return Guarded(id, "statement", [&]() -> dao::CExecStatus {
        dao::CExecStatus status;
        if (EndsFailedTransaction(statement->first_word, statement->sql, status)) {
            return status;
        }
        status = Ready(statement->first_word);
        return status.IsOk() ? Run(*statement, params, result) : status;
    });
}

dao::CExecStatus Core::Prepare(const dao::CSqlID& id, std::string_view sql,
                               std::shared_ptr<Prepared>& statement) noexcept {
    return Guarded(id, "preparing", [&]() -> dao::CExecStatus {
        const std::string first_word = FirstWord(sql);
        dao::CExecStatus status = Ready(first_word);
        if (!status.IsOk()) {
            return status;
        }
        const bool was_in = m_in_transaction;
        status = m_driver->Prepare(sql, nullptr, statement);
        if (status.IsOk()) {
            statement->wanted_again = true;
            status = m_driver->PrepareNow(*statement, Deadline());
        }
        if (!status.IsOk()) {
            statement = nullptr;
        }
        Note(status, status.IsOk() ? "" : first_word, was_in);
        return status;
    });
}

dao::CExecStatus Core::Ping() noexcept {
    return Guarded(dao::CSqlID(), "ping", [&]() -> dao::CExecStatus {
        dao::CExecStatus status = Ready("");
        if (!status.IsOk()) {
            return status;
        }
        const bool was_in = m_in_transaction;
        status = m_driver->Ping();
        Note(status, "", was_in);
        return status;
    });
}

dao::CExecStatus Core::EndTransaction(const char* sql) {
    if (m_driver == nullptr) {
        return Refusal(dao::DAO_ERR_ARGUMENT, "the session is not open");
    }
    const bool lost = m_lost || (m_in_transaction && !m_driver->Connected(true));
    const bool really_open = !lost && m_driver->InTransaction();
    m_failed = m_lost = false;
    m_in_transaction = really_open;
    return really_open ? RunText(sql, {}, nullptr) : dao::CExecStatus();
}

dao::CExecStatus Core::CommitNow() {
    const bool lost = m_lost || !m_driver->Connected(true);
    if (lost || m_failed) {
        static_cast<void>(EndTransaction("ROLLBACK"));
        return lost ? Refusal(dao::DAO_ERR_CONNECTION_LOST,
                              "the connection was lost: the transaction is rolled back")
                    : Refusal(dao::DAO_ERR_STATE,
                              "a statement of the transaction had failed: rolled back");
    }
    dao::CExecStatus status = EndTransaction("COMMIT");
    if (!status.IsOk()) {
        static_cast<void>(EndTransaction("ROLLBACK"));
    }
    return status;
}

// The end of a failed transaction that comes as a statement. SQLite would commit what it can,
// or knows of no transaction any more; so it is done here, as a server does it.
bool Core::EndsFailedTransaction(std::string_view first_word, std::string_view sql,
                                 dao::CExecStatus& status) {
    if (!m_failed || m_cursor != 0 || m_driver == nullptr) {
        return false;
    }
    const std::string word = first_word.empty() ? FirstWord(sql) : std::string(first_word);
    if (IsCommit(word)) {
        status = CommitNow();
        return true;
    }
    if (IsRollback(word) && !GoesBackToSavepoint(sql)) {
        status = EndTransaction("ROLLBACK");
        return true;
    }
    return false;
}

dao::CExecStatus Core::Begin(dao::CSqlSession::Access access) noexcept {
    return Guarded(dao::CSqlID(), "begin", [&]() -> dao::CExecStatus {
        if (m_driver == nullptr) {
            return Refusal(dao::DAO_ERR_ARGUMENT, "the session is not open");
        }
        if (m_in_transaction || m_failed) {
            return Refusal(dao::DAO_ERR_STATE, "a transaction is open already");
        }
        return RunText(m_driver->BeginSql(access), {}, nullptr);
    });
}

dao::CExecStatus Core::Commit() noexcept {
    return Guarded(dao::CSqlID(), "commit", [&]() -> dao::CExecStatus {
        if (m_driver == nullptr) {
            return Refusal(dao::DAO_ERR_ARGUMENT, "the session is not open");
        }
        if (m_cursor != 0) {
            return Refusal(dao::DAO_ERR_STATE, "a cursor of the session is open");
        }
        if (!m_in_transaction && !m_failed) {
            return Refusal(dao::DAO_ERR_STATE, "no transaction is open");
        }
        return CommitNow();
    });
}

dao::CExecStatus Core::Rollback() noexcept {
    CloseAnyCursor();
    return Guarded(dao::CSqlID(), "rollback", [&] { return EndTransaction("ROLLBACK"); });
}

bool Core::InTransaction() const noexcept {
    return m_in_transaction || m_failed;
}

void Core::SetStatementTimeout(int milliseconds) noexcept {
    m_options.statement_timeout_ms = milliseconds < 0 ? 0 : milliseconds;
    if (m_driver != nullptr) {
        m_driver->SetStatementTimeout(m_options.statement_timeout_ms);
    }
}

}  // namespace kelp::db
