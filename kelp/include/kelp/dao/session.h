// kelp/dao/session.h - a connection to a database and what is done on it.
//
//     dao::CSqlSession session;
//     dao::SessionOptions options;
//     options.user = "nemgr";
//     options.password = secret;
//     if (!session.Open("postgresql://db1:5432/inventory", options).IsOk()) ...
//
//     dao::CTransaction change(session);
//     dao::CStatement insert;
//     session.Prepare("INSERT INTO ne(id, name) VALUES ($1, $2)", insert);
//     for (const Element& ne : elements) {
//         if (!insert.Exec({ne.id, ne.name}).IsOk()) return;    // `change` rolls back
//     }
//     change.Commit();
//
// URLs:
//
// | URL                                         | database                                  |
// |---------------------------------------------|-------------------------------------------|
// | sqlite:///abs/path.db, sqlite:rel/path.db   | a file, made when it is not there; with   |
// |                                             | ?mode=ro only read, ?mode=rw not made     |
// | sqlite::memory:                             | one that ends with the session            |
// | postgresql://[user[:password]@]host[:port]/database[?...] | a server; what stands behind|
// |                                             | the ? is libpq's (sslmode=verify-full)    |
//
// %xx in a path or name is the octet xx.
//
// One statement a call, parameters are $1, $2, ... on both databases and count from 1; each
// may be used several times. What a parameter becomes:
//
// | parameter                 | in the database                                            |
// |---------------------------|------------------------------------------------------------|
// | empty value               | NULL                                                       |
// | whole numbers, unsigned char | a number. Above 2^63-1: PostgreSQL takes it into numeric,|
// |                           | SQLite keeps it exactly in columns declared UNSIGNED (see  |
// |                           | docs/databases.md)                                         |
// | float, double             | a number, exact. SQLite has no NaN: DAO_ERR_DATA           |
// | text, char                | text in UTF-8. A zero byte is kept by SQLite; PostgreSQL   |
// |                           | has none in texts: DAO_ERR_DATA                            |
// | binary                    | a BLOB, a bytea                                            |
//
// Transactions: one statement without a transaction is a transaction. A statement that fails
// inside one fails the transaction: until it is rolled back every statement gives
// DAO_ERR_STATE. Nesting is done with SAVEPOINT.
//
// A lost server: the statement that notices gives DAO_ERR_CONNECTION_LOST; it is never
// repeated, since it may have been done. The next call connects anew and goes on, unless a
// transaction was open: then each gives DAO_ERR_CONNECTION_LOST until Rollback. That the
// server went away between two statements is noticed before anything is sent, and mended
// without an error.
//
// Thread rule: thread-compatible; a session and its statements, cursors and transactions
// are used by one thread at a time.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/dao/result.h"
#include "kelp/dao/status.h"
#include "kelp/value.h"

namespace kelp::db {
class Core;
struct Prepared;
}  // namespace kelp::db

namespace dao {

class CCursorTable;
class CStatement;

struct SessionOptions {
    std::string user;      // both replace what the URL says; wiped when the session has
    std::string password;  // taken them over, in its own copy of the options
    int connect_timeout_ms = 5000;
    int statement_timeout_ms = 60000;  // 0: none
    int lock_timeout_ms = 5000;        // waiting for others' locks; 0: do not wait
    int slow_statement_ms = 1000;      // from then on a statement is named in the log; 0: never
    std::size_t max_rows = 1000000;    // of a result in memory (cursors have no limit)
    std::size_t max_bytes = std::size_t{256} << 20;  // likewise: 24 a cell and what longer
                                                     // texts and blocks take
    std::size_t cached_statements = 64;              // prepared and kept, the least used go first

    SessionOptions() = default;
    SessionOptions(const SessionOptions&) = default;
    SessionOptions(SessionOptions&&) = default;
    SessionOptions& operator=(const SessionOptions&) = default;
    SessionOptions& operator=(SessionOptions&&) = default;
    // Overwrites the password.
    KELP_API ~SessionOptions();
};

// The kind of a statement, which some callers know. A statement whose first word says that it
// is of another kind is refused (DAO_ERR_ARGUMENT).
enum SqlTypeEnum : int {
    SQL_SELECT = 0,
    SQL_INSERT = 1,
    SQL_UPDATE = 2,
    SQL_DELETE = 3,
    SQL_ANY = 4,  // any statement
};

// Says that a statement has no parameters.
struct NoParamType {};

// Which statement it is, for the log: where in the source it stands. immutable. Keeps the
// pointers: pass literals. A null pointer stands for "".
class CSqlID {
  public:
    constexpr CSqlID() noexcept = default;
    constexpr CSqlID(const char* source, const char* function, int line) noexcept
        : m_source(source == nullptr ? "" : source),
          m_function(function == nullptr ? "" : function),
          m_line(line) {}
    constexpr const char* GetSource() const noexcept { return m_source; }
    constexpr const char* GetFunction() const noexcept { return m_function; }
    constexpr int GetLine() const noexcept { return m_line; }

  private:
    const char* m_source = "";
    const char* m_function = "";
    int m_line = 0;
};

// An identifier that the log shows as "sqlmanager.cpp:ExecSql:29".
constexpr CSqlID AutoAssembleSqlID(const char* source, const char* function, int line) noexcept {
    return CSqlID(source, function, line);
}

// The parameters of one execution, seen, not owned: they live as long as the call.
class CParams {
  public:
    constexpr CParams() noexcept = default;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winit-list-lifetime"  // the list lives as long as the call
#endif
    CParams(std::initializer_list<TEValue> values) noexcept
        : m_data(values.begin()), m_size(values.size()) {}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    CParams(const std::vector<TEValue>& values) noexcept
        : m_data(values.data()), m_size(values.size()) {}
    CParams(const TEValue* values, std::size_t count) noexcept : m_data(values), m_size(count) {}
    CParams(const NoParamType&) noexcept {}

    std::size_t size() const noexcept {
        return m_size;
    }
    const TEValue& operator[](std::size_t i) const noexcept {
        return m_data[i];
    }
    const TEValue* begin() const noexcept {
        return m_data;
    }
    const TEValue* end() const noexcept {
        return m_data + m_size;
    }

  private:
    const TEValue* m_data = nullptr;
    std::size_t m_size = 0;
};

}  // namespace dao

namespace impl_dao {

// What only libframeutil calls of a session.
class KELP_API CSqlSession_Impl {
  public:
    explicit CSqlSession_Impl(std::shared_ptr<kelp::db::Core> core) noexcept;
    ~CSqlSession_Impl();
    CSqlSession_Impl(const CSqlSession_Impl&) = delete;
    CSqlSession_Impl& operator=(const CSqlSession_Impl&) = delete;

    // Runs one statement and throws its rows away.
    dao::CExecStatus ExecSql_OnlyForFrame_Impl(const dao::CSqlID& id, dao::SqlTypeEnum type,
                                               const std::string& sql,
                                               const dao::NoParamType& params) noexcept;
    // The same with the rows and the status in `result`; the status is returned as well.
    dao::CExecStatus ExecSql_OnlyForFrame_Impl(const dao::CSqlID& id, dao::SqlTypeEnum type,
                                               const std::string& sql,
                                               const dao::NoParamType& params,
                                               dao::CExecResult& result) noexcept;
    // Runs a stored procedure; its rows and its status go into `result`.
    dao::CExecStatus ExecStoredProc_Impl(const dao::CSqlID& id, const std::string& name,
                                         const dao::NoParamType& params,
                                         dao::CExecResult& result) noexcept;

  private:
    std::shared_ptr<kelp::db::Core> m_core;
};

}  // namespace impl_dao

namespace dao {

// One connection. Nothing throws but the constructor (std::bad_alloc).
class KELP_API CSqlSession {
  public:
    // Not open.
    CSqlSession();
    // Closes. Statements and cursors of it become useless: they give DAO_ERR_ARGUMENT.
    ~CSqlSession();
    CSqlSession(const CSqlSession&) = delete;
    CSqlSession& operator=(const CSqlSession&) = delete;

    // Connects to the database of `url` (see the top of this file), closing what was open.
    // After a failure the session is not open.
    CExecStatus Open(const std::string& url, SessionOptions options = {}) noexcept;
    // Rolls an open transaction back and disconnects. It is not an error if it is not open.
    void Close() noexcept;
    // Opened and not closed; whether the server is there is what Ping tells.
    bool IsOpen() const noexcept;
    // Asks the database for a sign of life, connecting anew where that is needed.
    CExecStatus Ping() noexcept;

    // "sqlite:///path" or "postgresql://host:port/database", without credentials.
    std::string GetDatabase() const;
    // kServerTypeSqlite or kServerTypePostgresql (configured.h), by what is open; 0: nothing.
    int GetServerType() const noexcept;

    // Runs one statement and throws its rows away.
    CExecStatus Exec(std::string_view sql, const CParams& params = {},
                     const CSqlID& id = {}) noexcept;
    // Runs one statement; its rows, columns and status are the result.
    CExecResult Query(std::string_view sql, const CParams& params = {},
                      const CSqlID& id = {}) noexcept;
    // Runs several statements separated by ";" without parameters, all or none of them (in an
    // open transaction as part of it).
    CExecStatus ExecScript(std::string_view sql, const CSqlID& id = {}) noexcept;
    // Makes `statement` one that runs `sql`. What is wrong with the SQL is told now.
    CExecStatus Prepare(std::string_view sql, CStatement& statement,
                        const CSqlID& id = {}) noexcept;
    // Runs one statement whose rows `cursor` then reads one by one. Until the cursor is closed
    // or at its end the session runs nothing else (DAO_ERR_STATE).
    CExecStatus OpenCursor(std::string_view sql, CCursorTable& cursor, const CParams& params = {},
                           const CSqlID& id = {}) noexcept;

    // Runs a stored procedure: on PostgreSQL a function (by SELECT) or a procedure (by CALL),
    // "name" or "schema.name"; on SQLite, which has none, the statements that the database's
    // table kelp_procedures(name, body) holds under that name, all or none of them. The name
    // may be written in any case unless the database knows it in that very case.
    // DAO_ERR_NO_PROCEDURE when there is none of that name and that many parameters.
    CExecStatus ExecStoredProc(const std::string& name, const CParams& params = {},
                               const CSqlID& id = {}) noexcept;
    // The same; `result` gets the rows: of a function what it returns (of a void one none), of
    // a procedure its INOUT parameters, on SQLite those of the last statement that has columns.
    CExecStatus ExecStoredProc(const std::string& name, const CParams& params, CExecResult& result,
                               const CSqlID& id = {}) noexcept;

    enum class Access { kWrite, kRead };
    // A transaction that may write takes SQLite's write lock at once, so that it cannot fail
    // half-way because another one wrote. DAO_ERR_STATE when one is open.
    CExecStatus Begin(Access access = Access::kWrite) noexcept;
    // Afterwards no transaction is open, whatever the result. DAO_ERR_STATE when none was open
    // or a statement in it had failed: nothing of it is kept then. DAO_ERR_CONNECTION_LOST
    // during the commit itself: whether it is kept is unknown.
    CExecStatus Commit() noexcept;
    // It is not an error if no transaction is open.
    CExecStatus Rollback() noexcept;
    bool InTransaction() const noexcept;

    // For the statements from now on; 0: no limit.
    void SetStatementTimeout(int milliseconds) noexcept;

    // What libframeutil calls; never null, lives as long as the session.
    impl_dao::CSqlSession_Impl* GetImpl() noexcept { return &m_impl; }

  private:
    std::shared_ptr<kelp::db::Core> m_core;
    impl_dao::CSqlSession_Impl m_impl;
};

// A statement that is prepared once and run often; it survives the connection.
class KELP_API CStatement {
  public:
    // One that only gives DAO_ERR_ARGUMENT.
    CStatement() noexcept;
    CStatement(CStatement&&) noexcept;
    CStatement& operator=(CStatement&&) noexcept;
    ~CStatement();

    CExecStatus Exec(const CParams& params = {}) noexcept;
    CExecResult Query(const CParams& params = {}) noexcept;
    CExecStatus OpenCursor(CCursorTable& cursor, const CParams& params = {}) noexcept;

  private:
    friend class CSqlSession;
    std::shared_ptr<kelp::db::Core> m_core;
    std::shared_ptr<kelp::db::Prepared> m_prepared;
    CSqlID m_id;
};

// Reads a result row by row, holding one row; the rest stays with the database.
//
//     dao::CCursorTable cursor;
//     session.OpenCursor("SELECT id, name FROM ne", cursor);
//     while (cursor.Fetch()) Use(cursor[0], cursor["name"]);
//     if (!cursor.GetStatus().IsOk()) ...        // why it ended early
//
// The statement's time limit spans from its opening to its last row, the reader's own time
// included.
class KELP_API CCursorTable {
  public:
    CCursorTable() noexcept;
    // A cursor that is open closes the one it replaces.
    CCursorTable(CCursorTable&&) noexcept;
    CCursorTable& operator=(CCursorTable&&) noexcept;
    // Closes.
    ~CCursorTable();

    // Goes to the next row. False at the end, which closes the cursor, and after a failure.
    bool Fetch() noexcept;
    // Of the opening and of the fetches so far.
    const CExecStatus& GetStatus() const noexcept { return m_status; }
    // Gives the rest up. On PostgreSQL the statement is cancelled; inside a transaction, which
    // that would fail, the rest is read and thrown away. It is not an error if it is closed.
    void Close() noexcept;
    bool IsOpen() const noexcept { return m_core != nullptr; }

    const std::vector<CColumn>& GetColumns() const noexcept { return m_columns; }
    // The cells of the row that the last Fetch went to; none before it and after the end.
    const CRow& GetRow() const noexcept { return m_row; }
    // One of them; for an index out of range or an unknown name an empty value that lives as
    // long as the process.
    const TEValue& operator[](std::size_t column) const noexcept;
    const TEValue& operator[](int column) const noexcept {
        return (*this)[static_cast<std::size_t>(column)];
    }
    const TEValue& operator[](const char* column) const noexcept {
        return (*this)[FindColumn(m_columns, column)];
    }

  private:
    friend class kelp::db::Core;
    std::shared_ptr<kelp::db::Core> m_core;  // while it is open
    std::vector<CColumn> m_columns;
    CRow m_row;
    CRow m_next;  // the first row, until it is fetched
    bool m_has_next = false;
    CExecStatus m_status;
    unsigned long long m_ticket = 0;
};

// A transaction that ends with its scope: rolled back unless Commit was called.
class KELP_API CTransaction {
  public:
    // Begins one; GetStatus() says whether it did.
    explicit CTransaction(CSqlSession& session,
                          CSqlSession::Access access = CSqlSession::Access::kWrite) noexcept;
    // Rolls back what is open. Must not outlive the session.
    ~CTransaction();
    CTransaction(const CTransaction&) = delete;
    CTransaction& operator=(const CTransaction&) = delete;

    // See CSqlSession; DAO_ERR_STATE when the transaction did not begin or has ended.
    CExecStatus Commit() noexcept;
    CExecStatus Rollback() noexcept;
    const CExecStatus& GetStatus() const noexcept { return m_status; }

  private:
    CSqlSession* m_session;  // null: not begun, or ended
    CExecStatus m_status;
};

}  // namespace dao
