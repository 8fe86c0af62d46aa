// Design notes. One connection without SQLite's own mutex, since a session belongs to one
// thread at a time. The file stays in the journal mode it has, a rollback journal unless
// somebody chose otherwise: SQLite before 3.51.3 can damage a database in WAL mode that two
// connections write or checkpoint at the same moment, and the sessions of a pool are such
// connections.
//
// A statement's time limit is watched by the progress handler and by the busy handler; both
// run on the session's thread.

#include "dao/sqlite_driver.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "dao/driver.h"
#include "dao/sql_text.h"

namespace kelp::db {

namespace {

constexpr int kOperationsBetweenLooks = 1000;

struct SqliteStatement final : Prepared {
    ~SqliteStatement() override { sqlite3_finalize(handle); }

    sqlite3_stmt* handle = nullptr;
    std::vector<int> number;  // of the caller's parameter, by SQLite's index; from 1
    std::vector<SqliteColumn> columns;
    int prepared_anew = 0;  // how often SQLite did so itself, when `columns` was read

    void ReadColumns() {
        columns.clear();
        const int count = sqlite3_column_count(handle);
        for (int i = 0; i < count; ++i) {
            columns.push_back(DeclaredType(sqlite3_column_decltype(handle, i)));
        }
        prepared_anew = sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_REPREPARE, 0);
    }
};

struct CloseSqlite {
    // What is prepared on it keeps it alive until that is finalised.
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};

class SqliteDriver final : public Driver {
  public:
    SqliteDriver(SqliteUrl url, const dao::SessionOptions& options)
        : m_url(std::move(url)),
          m_lock_timeout_ms(options.lock_timeout_ms),
          m_where(m_url.path == ":memory:"    ? "sqlite::memory:"
                  : m_url.path.front() == '/' ? "sqlite://" + m_url.path
                                              : "sqlite:" + m_url.path) {}
    ~SqliteDriver() override { SqliteDriver::Finish(); }

    int ServerType() const override { return 6; }
    const std::string& Where() const override { return m_where; }

    dao::CExecStatus Connect() override;
    bool Connected(bool) override { return m_db != nullptr; }
    bool InTransaction() const override {
        return m_db != nullptr && sqlite3_get_autocommit(m_db.get()) == 0;
    }
    dao::CExecStatus Ping() override { return Run("SELECT 1"); }
    dao::CExecStatus Prepare(std::string_view sql, std::size_t* rest,
                             std::shared_ptr<Prepared>& out) override;
    dao::CExecStatus PrepareNow(Prepared&, std::int64_t) override { return {}; }
    dao::CExecStatus Start(Prepared& statement, const dao::CParams& params,
                           std::int64_t deadline) override;
    Step Fetch(dao::CRow& row, std::size_t& bytes) override;
    void Columns(std::vector<dao::CColumn>& columns) override;
    dao::CExecStatus Finish() override;
    bool ScriptIsOneCall() const override { return false; }
    dao::CExecStatus Script(std::string_view, std::int64_t) override {
        return Refusal(dao::DAO_ERR_OTHER, "not in one call");
    }
    const char* BeginSql(dao::CSqlSession::Access access) const override {
        return access == dao::CSqlSession::Access::kWrite ? "BEGIN IMMEDIATE" : "BEGIN DEFERRED";
    }
    dao::CExecStatus FindProcedure(const std::string& name, std::size_t parameters,
                                   std::int64_t deadline, ProcedureCall& call) override;
    void SetStatementTimeout(int) override {}

  private:
    static int OnProgress(void* self);
    static int OnBusy(void* self, int attempts);

    dao::CExecStatus Failure(int native_code) const;
    dao::CExecStatus Run(const char* sql);

    const SqliteUrl m_url;
    const int m_lock_timeout_ms;
    const std::string m_where;
    std::unique_ptr<sqlite3, CloseSqlite> m_db;

    SqliteStatement* m_running = nullptr;
    std::int64_t m_deadline = base::kNever;
    std::int64_t m_waiting_since = 0;
    int m_changes_before = 0;
    int m_outcome = SQLITE_OK;
};

int SqliteDriver::OnProgress(void* self) {
    return base::SystemMonotonicNs() > static_cast<SqliteDriver*>(self)->m_deadline ? 1 : 0;
}

// Waits a little and tells SQLite to try again, until one of the two limits is over.
int SqliteDriver::OnBusy(void* self, int attempts) {
    auto& driver = *static_cast<SqliteDriver*>(self);
    const std::int64_t now = base::SystemMonotonicNs();
    if (attempts == 0) {
        driver.m_waiting_since = now;
    }
    const std::int64_t end = std::min(
        driver.m_deadline, driver.m_waiting_since + driver.m_lock_timeout_ms * base::kMillisecond);
    if (now >= end) {
        return 0;
    }
    const std::int64_t pause = std::min<std::int64_t>(1 + attempts * 2, 25) * base::kMillisecond;
    std::this_thread::sleep_for(std::chrono::nanoseconds(std::min(pause, end - now)));
    return 1;
}

dao::CExecStatus SqliteDriver::Failure(int native_code) const {
    int code = SqliteErrCode(native_code);
    if (code == dao::DAO_ERR_LOCKED && base::SystemMonotonicNs() >= m_deadline) {
        code = dao::DAO_ERR_TIMEOUT;  // waiting for a lock used the statement's time up
    }
    std::string text = m_db != nullptr ? sqlite3_errmsg(m_db.get()) : sqlite3_errstr(native_code);
    if (native_code == SQLITE_INTERRUPT) {
        text = "the statement took longer than its time limit";
    }
    return dao::CExecStatus(code, native_code, "", FirstLine(text));
}

dao::CExecStatus SqliteDriver::Connect() {
    m_db.reset();
    sqlite3* db = nullptr;
    const int opened =
        sqlite3_open_v2(m_url.path.c_str(), &db, m_url.flags | SQLITE_OPEN_NOMUTEX, nullptr);
    m_db.reset(db);
    if (opened != SQLITE_OK) {
        dao::CExecStatus failure = Failure(opened);
        m_db.reset();
        return failure;
    }
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_handler(db, OnBusy, this);
    sqlite3_progress_handler(db, kOperationsBetweenLooks, OnProgress, this);
    // As on a server: "x" is a name, never a text; the schema of a file is not trusted.
    for (const auto& [option, on] :
         {std::pair(SQLITE_DBCONFIG_DQS_DML, 0), std::pair(SQLITE_DBCONFIG_DQS_DDL, 0),
          std::pair(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0), std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1),
          std::pair(SQLITE_DBCONFIG_ENABLE_FKEY, 1)}) {
        sqlite3_db_config(db, option, on, nullptr);
    }
    dao::CExecStatus status = Run("PRAGMA synchronous=FULL");
    if (status.IsOk()) {
        // The file is opened by the first look into it.
        status = Run("SELECT count(*) FROM sqlite_schema");
    }
    if (status.GetErrCode() == dao::DAO_ERR_LOCKED) {
        status = {};  // it is there, and free again some time
    }
    if (!status.IsOk()) {
        m_db.reset();
    }
    return status;
}

dao::CExecStatus SqliteDriver::Run(const char* sql) {
    m_deadline = base::SystemMonotonicNs() + 60 * base::kSecond;
    const int code = sqlite3_exec(m_db.get(), sql, nullptr, nullptr, nullptr);
    return code == SQLITE_OK ? dao::CExecStatus() : Failure(code);
}

dao::CExecStatus SqliteDriver::Prepare(std::string_view sql, std::size_t* rest,
                                       std::shared_ptr<Prepared>& out) {
    out.reset();
    auto made = std::make_shared<SqliteStatement>();
    const char* tail = nullptr;
    m_deadline = base::kNever;
    const int code = sqlite3_prepare_v3(m_db.get(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &made->handle, &tail);
    if (code != SQLITE_OK) {
        return Failure(code);
    }
    const auto used = static_cast<std::size_t>(tail == nullptr ? 0 : tail - sql.data());
    if (rest != nullptr) {
        *rest = used;
        if (made->handle == nullptr) {
            return {};
        }
    } else {
        if (made->handle == nullptr) {
            return Refusal(dao::DAO_ERR_SYNTAX, "the statement is empty");
        }
        // Whether something but blanks and comments follows, only SQLite knows.
        sqlite3_stmt* second = nullptr;
        const int followed = sqlite3_prepare_v2(
            m_db.get(), tail, static_cast<int>(sql.size() - used), &second, nullptr);
        sqlite3_finalize(second);
        if (followed != SQLITE_OK || second != nullptr) {
            return Refusal(dao::DAO_ERR_SYNTAX, "more than one statement in one call");
        }
    }
    const int indexes = sqlite3_bind_parameter_count(made->handle);
    for (int index = 1; index <= indexes; ++index) {
        const char* name = sqlite3_bind_parameter_name(made->handle, index);
        int number = index;
        if (name != nullptr) {
            const refl::CNumeric spelled = refl::CNumeric::FromText(name + 1);
            number = spelled.As<int>();
            if (number < 1 || number > 32766 || name[1] == '+' || name[1] == ' ') {
                return Refusal(dao::DAO_ERR_SYNTAX,
                               "parameters are called $1, $2 and so on, not " + std::string(name));
            }
        }
        made->number.push_back(number);
        made->parameters = std::max(made->parameters, number);
    }
    made->ReadColumns();
    made->sql = sql.substr(0, used);
    made->first_word = FirstWord(sql);
    out = std::move(made);
    return {};
}

dao::CExecStatus SqliteDriver::Start(Prepared& statement, const dao::CParams& params,
                                     std::int64_t deadline) {
    auto& made = static_cast<SqliteStatement&>(statement);
    const auto parameters = static_cast<std::size_t>(made.parameters);
    if (parameters != params.size() && !(made.may_use_fewer && parameters < params.size())) {
        return Refusal(dao::DAO_ERR_ARGUMENT,
                       "the statement has " + std::to_string(made.parameters) +
                           " parameters, not " + std::to_string(params.size()));
    }
    for (std::size_t i = 0; i < made.number.size(); ++i) {
        const auto number = static_cast<std::size_t>(made.number[i]);
        const int code = BindSqlite(made.handle, static_cast<int>(i + 1), params[number - 1]);
        if (code == SQLITE_MISMATCH) {
            return Refusal(dao::DAO_ERR_DATA,
                           "parameter " + std::to_string(number) + " is no number (NaN)");
        }
        if (code != SQLITE_OK) {
            return Failure(code);
        }
    }
    m_running = &made;
    m_deadline = deadline;
    m_outcome = SQLITE_OK;
    m_changes_before = sqlite3_total_changes(m_db.get());
    return {};
}

Step SqliteDriver::Fetch(dao::CRow& row, std::size_t& bytes) {
    sqlite3_stmt* const handle = m_running->handle;
    m_outcome = sqlite3_step(handle);
    if (m_outcome != SQLITE_ROW) {
        return m_outcome == SQLITE_DONE ? Step::kEnd : Step::kFailed;
    }
    // The first step prepares the statement anew when the schema has changed since.
    if (sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_REPREPARE, 0) != m_running->prepared_anew) {
        m_running->ReadColumns();
    }
    const std::size_t columns = m_running->columns.size();
    row.resize(columns);
    for (std::size_t i = 0; i < columns; ++i) {
        ReadSqlite(handle, static_cast<int>(i), m_running->columns[i].is_unsigned, row[i], bytes);
    }
    return Step::kRow;
}

void SqliteDriver::Columns(std::vector<dao::CColumn>& columns) {
    m_running->ReadColumns();
    columns.clear();
    for (const SqliteColumn& column : m_running->columns) {
        const int index = static_cast<int>(columns.size());
        const char* name = sqlite3_column_name(m_running->handle, index);
        columns.push_back({name == nullptr ? "" : name, column.type});
    }
}

dao::CExecStatus SqliteDriver::Finish() {
    if (m_running == nullptr) {
        return {};
    }
    dao::CExecStatus status;
    if (m_outcome != SQLITE_OK && m_outcome != SQLITE_ROW && m_outcome != SQLITE_DONE) {
        status = Failure(m_outcome);
    } else if (sqlite3_total_changes(m_db.get()) != m_changes_before) {
        status.SetAffectedRows(sqlite3_changes64(m_db.get()));
    }
    sqlite3_reset(m_running->handle);
    m_running = nullptr;
    return status;
}

dao::CExecStatus SqliteDriver::FindProcedure(const std::string& name, std::size_t,
                                             std::int64_t deadline, ProcedureCall& call) {
    std::shared_ptr<Prepared> lookup;
    dao::CExecStatus status = Prepare(
        "SELECT body FROM kelp_procedures WHERE name IN ($1, lower($1)) ORDER BY name = $1 DESC",
        nullptr, lookup);
    if (status.GetNativeCode() == SQLITE_ERROR) {
        return Refusal(dao::DAO_ERR_NO_PROCEDURE,
                       "no stored procedure " + name + ": no table kelp_procedures(name, body)");
    }
    if (!status.IsOk()) {
        return status;
    }
    const TEValue key(name);
    status = Start(*lookup, dao::CParams(&key, 1), deadline);
    if (!status.IsOk()) {
        return status;
    }
    dao::CRow row;
    std::size_t bytes = 0;
    const Step step = Fetch(row, bytes);
    status = Finish();
    if (status.IsOk() && step == Step::kEnd) {
        return Refusal(dao::DAO_ERR_NO_PROCEDURE, "no stored procedure " + name);
    }
    if (status.IsOk()) {
        call.sql = row[0].As_std_string();
        call.is_script = true;
    }
    return status;
}

}  // namespace

std::unique_ptr<Driver> MakeSqliteDriver(std::string_view url, const dao::SessionOptions& options,
                                         dao::CExecStatus& why) {
    std::string reason;
    std::optional<SqliteUrl> parsed = ParseSqliteUrl(url, reason);
    if (!parsed) {
        why = Refusal(dao::DAO_ERR_ARGUMENT, reason);
        return nullptr;
    }
    return std::make_unique<SqliteDriver>(std::move(*parsed), options);
}

}  // namespace kelp::db
