// What the parts of the PostgreSQL driver share.
#pragma once

#include <libpq-fe.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kelp/dao/session.h"

namespace kelp::db {

struct FinishConnection {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
struct ClearResult {
    void operator()(PGresult* result) const { PQclear(result); }
};
using PgConnection = std::unique_ptr<PGconn, FinishConnection>;
using PgResult = std::unique_ptr<PGresult, ClearResult>;

// How to connect. The secrets in it are wiped when it goes.
struct PgTarget {
    PgTarget() = default;
    PgTarget(PgTarget&&) noexcept = default;
    PgTarget& operator=(PgTarget&&) = delete;
    ~PgTarget();

    std::vector<std::pair<std::string, std::string>> settings;  // libpq's, by name
    std::string where;                                          // without credentials

    // The setting's value, "" when it is not set.
    std::string_view Get(std::string_view name) const;
    void Set(std::string_view name, std::string_view value);
    // Takes out of a text what must not be shown.
    void Hide(std::string& text) const;
};

// What a postgresql: URL and the options say; nothing, with the reason in `why`.
std::unique_ptr<PgTarget> ParsePostgresUrl(const std::string& url,
                                           const dao::SessionOptions& options, std::string& why);

// Our code for an SQL state.
int PgErrCode(std::string_view sql_state);
// The state that a failed connection's message names (in the verbose form), or "".
std::string_view StateInMessage(std::string_view message);
// `message` in one line, without the state, the severity and where in the server it arose.
std::string PlainMessage(std::string_view message);

// The parameters of one execution as libpq wants them.
class PgParams {
  public:
    // A refusal when PostgreSQL cannot hold one of them.
    dao::CExecStatus Fill(const dao::CParams& params);
    int Count() const { return static_cast<int>(m_values.size()); }
    const char* const* Values() const { return m_values.data(); }
    const int* Lengths() const { return m_lengths.data(); }
    const int* Formats() const { return m_formats.data(); }

  private:
    void AddText(std::string_view text);

    std::string m_texts;  // of all parameters, each terminated
    std::vector<const char*> m_values;
    std::vector<int> m_lengths;
    std::vector<int> m_formats;
};

// The declared type of a result's column.
refl::Enum::DataTypeEnum PgColumnType(Oid type);
// A cell from its text form.
void ReadPg(Oid type, std::string_view text, TEValue& cell, std::size_t& bytes);

// Waits until the connection's socket is ready; false when the deadline has passed.
bool WaitForSocket(PGconn* connection, bool to_read, bool to_write, std::int64_t deadline);
// Whether something has arrived that nobody asked for: news of the connection's end, as a rule.
bool SocketHasNews(PGconn* connection);
// Establishes a connection until the deadline. Null with the failure in `status`.
PgConnection ConnectPostgres(const PgTarget& target, std::int64_t deadline,
                             dao::CExecStatus& status);
// Sends what waits to be sent, and waits until a result can be taken without blocking.
enum class PgWait { kReady, kLost, kLate };
PgWait AwaitResult(PGconn* connection, std::int64_t deadline);

}  // namespace kelp::db
