// Design notes. Every result is read in single-row mode, so that neither a cursor nor a result
// beyond its limit is ever held in memory as a whole. The server watches the time limits; this
// side waits kGrace longer and then gives the connection up, for servers that cannot answer
// any more. A statement is sent once. The one exception is a prepared plan that the server
// refuses as outdated: it says so before it executes anything, so it is planned and sent anew.

#include "dao/postgres_driver.h"

#include <algorithm>
#include <cstring>

#include "dao/driver.h"
#include "dao/sql_text.h"

namespace kelp::db {

namespace {

constexpr std::int64_t kGrace = 2 * base::kSecond;
constexpr std::int64_t kShortAnswer = 5 * base::kSecond;
constexpr std::size_t kMostParameters = 65535;

// Names on the server that nobody uses any more; shared with the statements that had them.
using UnusedNames = std::vector<std::string>;

struct PgStatement final : Prepared {
    ~PgStatement() override {
        if (generation != 0) {
            unused->push_back(std::move(name));
        }
    }

    std::string name;
    unsigned generation = 0;  // of the connection that knows the name; 0: none
    std::shared_ptr<UnusedNames> unused;
};

class PostgresDriver final : public Driver {
  public:
    PostgresDriver(std::unique_ptr<PgTarget> target, const dao::SessionOptions& options)
        : m_target(std::move(target)),
          m_connect_timeout(options.connect_timeout_ms * base::kMillisecond),
          m_timeout_at_connect_ms(std::max(options.statement_timeout_ms, 0)),
          m_timeout_ms(m_timeout_at_connect_ms) {}
    ~PostgresDriver() override = default;

    int ServerType() const override { return 3; }
    const std::string& Where() const override { return m_target->where; }

    dao::CExecStatus Connect() override;
    bool Connected(bool look) override;
    bool InTransaction() const override;
    dao::CExecStatus Ping() override { return Run("SELECT 1", DeadlineIn(kShortAnswer)); }
    dao::CExecStatus Prepare(std::string_view sql, std::size_t* rest,
                             std::shared_ptr<Prepared>& out) override;
    dao::CExecStatus PrepareNow(Prepared& statement, std::int64_t deadline) override;
    dao::CExecStatus Start(Prepared& statement, const dao::CParams& params,
                           std::int64_t deadline) override;
    Step Fetch(dao::CRow& row, std::size_t& bytes) override;
    void Columns(std::vector<dao::CColumn>& columns) override { columns = m_columns; }
    dao::CExecStatus Finish() override;
    bool ScriptIsOneCall() const override { return true; }
    dao::CExecStatus Script(std::string_view sql, std::int64_t deadline) override {
        return Run(std::string(sql).c_str(), deadline);
    }
    const char* BeginSql(dao::CSqlSession::Access access) const override {
        return access == dao::CSqlSession::Access::kWrite ? "BEGIN" : "BEGIN READ ONLY";
    }
    dao::CExecStatus FindProcedure(const std::string& name, std::size_t parameters,
                                   std::int64_t deadline, ProcedureCall& call) override;
    void SetStatementTimeout(int milliseconds) override { m_timeout_ms = milliseconds; }

  private:
    static void OnNotice(void* self, const PGresult* notice);
    static std::int64_t DeadlineIn(std::int64_t ns) { return base::SystemMonotonicNs() + ns; }

    dao::CExecStatus Failure(const PGresult* result) const;
    dao::CExecStatus ConnectionFailure() const;
    // Takes the next result, null at the end. False when there will be none, with m_status.
    bool Next(PgResult& result);
    void Describe(const PGresult* result);
    void Take(PgResult result);
    void GiveUp(dao::CExecStatus why);
    dao::CExecStatus Run(const char* sql, std::int64_t deadline);
    dao::CExecStatus PrepareOnServer(PgStatement& statement);
    dao::CExecStatus Send(PgStatement& statement);
    dao::CExecStatus TidyUp(std::int64_t deadline);
    bool PlanIsOutdated(const PGresult* result) const;
    void Cancel();

    const std::unique_ptr<PgTarget> m_target;
    const std::int64_t m_connect_timeout;
    const int m_timeout_at_connect_ms;
    int m_timeout_ms;                // what the caller wants
    int m_timeout_on_server_ms = 0;  // what the server was told; -1: unknown
    bool m_timeout_told_in_transaction = false;

    PgConnection m_connection;
    unsigned m_generation = 0;  // which connection since the first
    unsigned long m_last_name = 0;
    bool m_ends = false;  // the server has said that it ends the connection
    const std::shared_ptr<UnusedNames> m_unused = std::make_shared<UnusedNames>();

    PgStatement* m_running = nullptr;
    PgParams m_params;
    std::int64_t m_deadline = base::kNever;
    bool m_in_transaction_before = false;
    bool m_is_script = false;  // which may be empty
    bool m_answered = false;   // something of the running statement has arrived
    bool m_ended = true;       // nothing more of it will
    dao::CExecStatus m_status;
    std::vector<dao::CColumn> m_columns;
    std::vector<Oid> m_types;
};

// Notices are not for our log; but a server that shuts down, or an administrator who ends the
// connection, says so in this way while nothing runs.
void PostgresDriver::OnNotice(void* self, const PGresult* notice) {
    const char* state = PQresultErrorField(notice, PG_DIAG_SQLSTATE);
    if (state != nullptr && std::strncmp(state, "57P", 3) == 0) {
        static_cast<PostgresDriver*>(self)->m_ends = true;
    }
}

dao::CExecStatus PostgresDriver::Failure(const PGresult* result) const {
    const char* state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const char* said = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    if (state == nullptr) {
        return ConnectionFailure();
    }
    std::string text(said == nullptr ? "" : said);
    m_target->Hide(text);
    return dao::CExecStatus(PgErrCode(state), 0, state, FirstLine(text));
}

dao::CExecStatus PostgresDriver::ConnectionFailure() const {
    std::string text = FirstLine(PQerrorMessage(m_connection.get()));
    m_target->Hide(text);
    return Refusal(dao::DAO_ERR_CONNECTION_LOST,
                   text.empty() ? "the connection to the server is lost" : text);
}

dao::CExecStatus PostgresDriver::Connect() {
    dao::CExecStatus status;
    m_connection.reset();
    m_unused->clear();
    m_running = nullptr;
    m_ended = true;
    m_ends = false;
    m_connection = ConnectPostgres(*m_target, DeadlineIn(m_connect_timeout), status);
    if (m_connection != nullptr) {
        ++m_generation;
        PQsetNoticeReceiver(m_connection.get(), OnNotice, this);
        m_timeout_on_server_ms = m_timeout_at_connect_ms;
    }
    return status;
}

bool PostgresDriver::Connected(bool look) {
    while (look && m_connection != nullptr && PQstatus(m_connection.get()) == CONNECTION_OK &&
           !m_ends && SocketHasNews(m_connection.get())) {
        if (PQconsumeInput(m_connection.get()) == 0) {
            return false;
        }
        PQisBusy(m_connection.get());  // looks at what has come
    }
    return m_connection != nullptr && PQstatus(m_connection.get()) == CONNECTION_OK && !m_ends;
}

bool PostgresDriver::InTransaction() const {
    switch (PQtransactionStatus(m_connection.get())) {
        case PQTRANS_INTRANS:
        case PQTRANS_INERROR:
            return true;
        case PQTRANS_ACTIVE:
            return m_in_transaction_before;
        default:
            return false;
    }
}

void PostgresDriver::GiveUp(dao::CExecStatus why) {
    m_connection.reset();
    m_status = std::move(why);
    m_ended = true;
}

bool PostgresDriver::Next(PgResult& result) {
    switch (AwaitResult(m_connection.get(), m_deadline)) {
        case PgWait::kReady:
            result.reset(PQgetResult(m_connection.get()));
            return true;
        case PgWait::kLost:
            GiveUp(ConnectionFailure());
            return false;
        case PgWait::kLate:
            break;
    }
    GiveUp(Refusal(dao::DAO_ERR_TIMEOUT,
                   "no answer within the time limit; the connection was given up"));
    return false;
}

void PostgresDriver::Describe(const PGresult* result) {
    m_columns.clear();
    m_types.clear();
    const int count = PQnfields(result);
    for (int i = 0; i < count; ++i) {
        m_types.push_back(PQftype(result, i));
        m_columns.push_back({PQfname(result, i), PgColumnType(m_types.back())});
    }
}

// The answer to a statement that gives no more rows.
void PostgresDriver::Take(PgResult result) {
    switch (PQresultStatus(result.get())) {
        case PGRES_COMMAND_OK:
        case PGRES_TUPLES_OK: {
            const std::string_view tag = PQcmdStatus(result.get());
            if (PQnfields(result.get()) > 0 && m_columns.empty()) {
                Describe(result.get());
            }
            if (tag.substr(0, 6) == "INSERT" || tag.substr(0, 6) == "UPDATE" ||
                tag.substr(0, 6) == "DELETE" || tag.substr(0, 5) == "MERGE") {
                m_status.SetAffectedRows(
                    refl::CNumeric::FromText(PQcmdTuples(result.get())).As<long long>());
            }
            if (tag == "ROLLBACK" && m_running != nullptr && IsCommit(m_running->first_word)) {
                m_status = Refusal(dao::DAO_ERR_STATE,
                                   "a statement of the transaction had failed: rolled back");
            }
            break;
        }
        case PGRES_EMPTY_QUERY:
            if (!m_is_script) {
                m_status = Refusal(dao::DAO_ERR_SYNTAX, "the statement is empty");
            }
            break;
        case PGRES_COPY_IN:
        case PGRES_COPY_OUT:
        case PGRES_COPY_BOTH:
            // The one way out of a COPY that nobody feeds or reads and that always works.
            GiveUp(Refusal(dao::DAO_ERR_ARGUMENT,
                           "COPY from or to the client is not supported; the connection was "
                           "given up"));
            break;
        default:
            if (m_status.IsOk()) {
                m_status = Failure(result.get());
            }
    }
}

// Runs one or more statements without parameters to their end and drops their rows.
dao::CExecStatus PostgresDriver::Run(const char* sql, std::int64_t deadline) {
    m_status = {};
    m_columns.clear();
    m_is_script = true;
    m_deadline = deadline == base::kNever ? deadline : deadline + kGrace;
    m_in_transaction_before = InTransaction();
    if (PQsendQuery(m_connection.get(), sql) == 0) {
        return ConnectionFailure();
    }
    m_ended = false;
    PQsetSingleRowMode(m_connection.get());
    PgResult result;
    while (!m_ended && Next(result)) {
        if (result == nullptr) {
            m_ended = true;
        } else if (PQresultStatus(result.get()) != PGRES_SINGLE_TUPLE) {
            Take(std::move(result));
        }
    }
    return m_status;
}

dao::CExecStatus PostgresDriver::Prepare(std::string_view sql, std::size_t* rest,
                                         std::shared_ptr<Prepared>& out) {
    if (rest != nullptr) {
        *rest = sql.size();
    }
    auto made = std::make_shared<PgStatement>();
    made->sql = sql;
    made->first_word = FirstWord(sql);
    made->unused = m_unused;
    out = std::move(made);
    return {};
}

dao::CExecStatus PostgresDriver::PrepareOnServer(PgStatement& statement) {
    statement.name = "kelp_" + std::to_string(++m_last_name);
    if (PQsendPrepare(m_connection.get(), statement.name.c_str(), statement.sql.c_str(), 0,
                      nullptr) == 0) {
        return ConnectionFailure();
    }
    m_ended = false;
    m_is_script = false;
    m_status = {};
    PgResult result;
    while (!m_ended && Next(result)) {
        if (result == nullptr) {
            m_ended = true;
        } else {
            Take(std::move(result));
        }
    }
    statement.generation = m_status.IsOk() ? m_generation : 0;
    return m_status;
}

dao::CExecStatus PostgresDriver::PrepareNow(Prepared& statement, std::int64_t deadline) {
    dao::CExecStatus status = TidyUp(deadline);
    m_deadline = deadline == base::kNever ? deadline : deadline + kGrace;
    m_in_transaction_before = InTransaction();
    return status.IsOk() ? PrepareOnServer(static_cast<PgStatement&>(statement)) : status;
}

// Does what was put off: frees names on the server, tells it a new time limit.
dao::CExecStatus PostgresDriver::TidyUp(std::int64_t deadline) {
    if (PQtransactionStatus(m_connection.get()) == PQTRANS_INERROR) {
        return {};  // it would refuse
    }
    dao::CExecStatus status;
    while (!InTransaction() && !m_unused->empty() && m_connection != nullptr) {
        const std::string name = std::move(m_unused->back());
        m_unused->pop_back();
        // That the server does not know the name any more is no failure.
        const dao::CExecStatus freed = Run(("DEALLOCATE " + name).c_str(), deadline);
        status = m_connection == nullptr ? freed : status;
    }
    if (!InTransaction() && m_timeout_told_in_transaction) {
        m_timeout_on_server_ms = -1;  // a rollback may have taken it back
        m_timeout_told_in_transaction = false;
    }
    if (status.IsOk() && m_timeout_on_server_ms != m_timeout_ms) {
        status = Run(("SET statement_timeout = " + std::to_string(m_timeout_ms)).c_str(), deadline);
        m_timeout_told_in_transaction = InTransaction();
        m_timeout_on_server_ms = m_timeout_ms;
    }
    return status;
}

dao::CExecStatus PostgresDriver::Send(PgStatement& statement) {
    const int sent =
        statement.generation == m_generation
            ? PQsendQueryPrepared(m_connection.get(), statement.name.c_str(), m_params.Count(),
                                  m_params.Values(), m_params.Lengths(), m_params.Formats(), 0)
            : PQsendQueryParams(m_connection.get(), statement.sql.c_str(), m_params.Count(),
                                nullptr, m_params.Values(), m_params.Lengths(), m_params.Formats(),
                                0);
    if (sent == 0) {
        return ConnectionFailure();
    }
    PQsetSingleRowMode(m_connection.get());
    m_ended = false;
    m_answered = false;
    return {};
}

dao::CExecStatus PostgresDriver::Start(Prepared& statement, const dao::CParams& params,
                                       std::int64_t deadline) {
    auto& made = static_cast<PgStatement&>(statement);
    if (params.size() > kMostParameters) {
        return Refusal(dao::DAO_ERR_ARGUMENT, "more than 65535 parameters");
    }
    dao::CExecStatus status = m_params.Fill(params);
    if (status.IsOk()) {
        status = TidyUp(deadline);
    }
    m_deadline = deadline == base::kNever ? deadline : deadline + kGrace;
    m_in_transaction_before = InTransaction();
    if (status.IsOk() && made.wanted_again && made.generation != m_generation) {
        status = PrepareOnServer(made);
    }
    m_status = {};
    m_columns.clear();
    m_is_script = false;
    if (status.IsOk()) {
        status = Send(made);
    }
    m_running = status.IsOk() ? &made : nullptr;
    return status;
}

bool PostgresDriver::PlanIsOutdated(const PGresult* result) const {
    if (m_answered || m_running == nullptr || m_running->generation != m_generation ||
        PQresultStatus(result) != PGRES_FATAL_ERROR) {
        return false;
    }
    const char* state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const char* source = PQresultErrorField(result, PG_DIAG_SOURCE_FUNCTION);
    return (state != nullptr && std::strcmp(state, "26000") == 0) ||
           (source != nullptr && std::strcmp(source, "RevalidateCachedQuery") == 0);
}

Step PostgresDriver::Fetch(dao::CRow& row, std::size_t& bytes) {
    while (!m_ended) {
        PgResult result;
        if (!Next(result)) {
            break;
        }
        if (result == nullptr) {
            m_ended = true;
            break;
        }
        if (PQresultStatus(result.get()) != PGRES_SINGLE_TUPLE) {
            if (PlanIsOutdated(result.get())) {
                // The old plan stays on the server under its name until that is freed.
                m_unused->push_back(std::move(m_running->name));
                m_running->generation = 0;
                if (!m_in_transaction_before) {
                    PgResult rest;
                    while (Next(rest) && rest != nullptr) {
                    }
                    if (!m_ended) {
                        m_ended = true;
                        m_status = Send(*m_running);
                    }
                    continue;
                }
            }
            Take(std::move(result));
            m_answered = true;
            continue;
        }
        if (!m_answered) {
            Describe(result.get());
            m_answered = true;
        }
        const std::size_t columns = m_types.size();
        row.resize(columns);
        for (std::size_t i = 0; i < columns; ++i) {
            const int column = static_cast<int>(i);
            if (PQgetisnull(result.get(), 0, column) != 0) {
                row[i].Clear();
            } else {
                const auto length = static_cast<std::size_t>(PQgetlength(result.get(), 0, column));
                ReadPg(m_types[i], {PQgetvalue(result.get(), 0, column), length}, row[i], bytes);
            }
        }
        return Step::kRow;
    }
    return m_status.IsOk() ? Step::kEnd : Step::kFailed;
}

void PostgresDriver::Cancel() {
    if (PGcancel* cancel = PQgetCancel(m_connection.get()); cancel != nullptr) {
        char why[256];
        static_cast<void>(PQcancel(cancel, why, sizeof why));
        PQfreeCancel(cancel);
    }
}

dao::CExecStatus PostgresDriver::Finish() {
    if (m_running == nullptr) {
        return {};
    }
    if (!m_ended) {
        // Given up before its end: cancelled, which costs nothing, unless that would fail the
        // transaction it is part of.
        if (!m_in_transaction_before) {
            Cancel();
            m_deadline = DeadlineIn(kShortAnswer);
        }
        PgResult rest;
        while (Next(rest) && rest != nullptr) {
        }
        if (!m_ended) {
            m_status = {};
            m_ended = true;
        }
    }
    m_running = nullptr;
    return m_status;
}

dao::CExecStatus PostgresDriver::FindProcedure(const std::string& name, std::size_t parameters,
                                               std::int64_t deadline, ProcedureCall& call) {
    // Of several of that name the one written in this very case comes first. The modes tell
    // where a procedure's OUT parameters stand, which a CALL passes as NULL.
    static constexpr const char* kLookup =
        "SELECT p.prokind, p.prorettype = 'pg_catalog.void'::pg_catalog.regtype,"
        " pg_catalog.quote_ident(n.nspname) || '.' || pg_catalog.quote_ident(p.proname),"
        " pg_catalog.array_to_string(p.proargmodes, '')"
        " FROM pg_catalog.pg_proc p JOIN pg_catalog.pg_namespace n ON n.oid = p.pronamespace"
        " WHERE p.proname::text IN ($1::text, pg_catalog.lower($1::text))"
        " AND p.prokind IN ('f', 'p')"
        " AND ($2::text = '' AND pg_catalog.pg_function_is_visible(p.oid)"
        "      OR n.nspname::text IN ($2::text, pg_catalog.lower($2::text)))"
        " AND $3::bigint BETWEEN p.pronargs - p.pronargdefaults AND p.pronargs"
        " ORDER BY p.proname::text = $1::text DESC, p.pronargs LIMIT 1";
    std::shared_ptr<Prepared> lookup;
    dao::CExecStatus status = Prepare(kLookup, nullptr, lookup);
    const std::size_t dot = name.find('.');
    const TEValue values[] = {
        dot == std::string::npos ? TEValue(name) : TEValue(name.substr(dot + 1)),
        dot == std::string::npos ? TEValue("") : TEValue(name.substr(0, dot)),
        static_cast<unsigned long>(parameters)};
    status = Start(*lookup, dao::CParams(values, 3), deadline);
    if (!status.IsOk()) {
        return status;
    }
    dao::CRow row;
    std::size_t bytes = 0;
    const Step step = Fetch(row, bytes);
    status = Finish();
    if (!status.IsOk()) {
        return status;
    }
    if (step != Step::kRow) {
        return Refusal(dao::DAO_ERR_NO_PROCEDURE, "no stored procedure " + name + " with " +
                                                      std::to_string(parameters) + " parameters");
    }
    const bool is_procedure = row[0].As_std_string() == "p";
    const bool is_void = row[1].As_int() != 0;
    std::string arguments;
    std::size_t number = 0;
    const auto add_null = [&arguments] { arguments += arguments.empty() ? "NULL" : ", NULL"; };
    const auto add_next = [&arguments, &number] {
        arguments += arguments.empty() ? "$" : ", $";
        arguments += std::to_string(++number);
    };
    for (const char mode : is_procedure ? row[3].As_std_string() : std::string()) {
        if (mode == 'o') {
            add_null();
        } else if (number < parameters) {
            add_next();
        }
    }
    while (number < parameters) {
        add_next();
    }
    call.sql = (is_procedure ? "CALL " : "SELECT * FROM ") + row[2].As_std_string() + "(" +
               arguments + ")";
    call.returns_rows = is_procedure || !is_void;
    return {};
}

}  // namespace

std::unique_ptr<Driver> MakePostgresDriver(const std::string& url,
                                           const dao::SessionOptions& options,
                                           dao::CExecStatus& why) {
    std::string reason;
    std::unique_ptr<PgTarget> target = ParsePostgresUrl(url, options, reason);
    if (target == nullptr) {
        why = Refusal(dao::DAO_ERR_ARGUMENT, reason);
        return nullptr;
    }
    return std::make_unique<PostgresDriver>(std::move(target), options);
}

}  // namespace kelp::db
