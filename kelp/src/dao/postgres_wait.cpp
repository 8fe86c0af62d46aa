// libpq without its own blocking waits, which know no time limit: a server that is frozen or
// out of reach must not hold a thread for longer than the caller allows.

#include <poll.h>

#include <algorithm>
#include <cerrno>

#include "base/clock.h"
#include "dao/driver.h"
#include "dao/postgres_driver.h"

namespace kelp::db {

namespace {

int Poll(PGconn* connection, short events, int milliseconds) {
    pollfd socket{PQsocket(connection), events, 0};
    return socket.fd < 0 ? 1 : ::poll(&socket, 1, milliseconds);
}

dao::CExecStatus ConnectFailure(const PgTarget& target, PGconn* connection) {
    const std::string_view message = PQerrorMessage(connection);
    const std::string_view state = StateInMessage(message);
    std::string text = PlainMessage(message);
    target.Hide(text);
    const int code = state.empty() ? int{dao::DAO_ERR_CONNECT} : PgErrCode(state);
    return dao::CExecStatus(code == dao::DAO_ERR_OTHER ? int{dao::DAO_ERR_CONNECT} : code, 0, state,
                            std::move(text));
}

}  // namespace

bool WaitForSocket(PGconn* connection, bool to_read, bool to_write, std::int64_t deadline) {
    for (;;) {
        const std::int64_t now = base::SystemMonotonicNs();
        if (now >= deadline) {
            return false;
        }
        const std::int64_t left_ms = (deadline - now) / base::kMillisecond + 1;
        const auto events = static_cast<short>((to_read ? POLLIN : 0) | (to_write ? POLLOUT : 0));
        const int ready =
            Poll(connection, events, static_cast<int>(std::min<std::int64_t>(left_ms, 3600000)));
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return true;  // whatever is wrong with the socket, libpq is to find it
        }
    }
}

bool SocketHasNews(PGconn* connection) {
    return Poll(connection, POLLIN, 0) != 0;
}

PgConnection ConnectPostgres(const PgTarget& target, std::int64_t deadline,
                             dao::CExecStatus& status) {
    std::vector<const char*> names;
    std::vector<const char*> values;
    for (const auto& [name, value] : target.settings) {
        names.push_back(name.c_str());
        values.push_back(value.c_str());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);
    PgConnection connection(PQconnectStartParams(names.data(), values.data(), 0));
    if (connection == nullptr) {
        status = Refusal(dao::DAO_ERR_NO_MEMORY, "no memory for a connection");
        return nullptr;
    }
    // Only in the verbose form does a refused log-in name its SQL state.
    PQsetErrorVerbosity(connection.get(), PQERRORS_VERBOSE);
    auto next = PGRES_POLLING_WRITING;
    while (PQstatus(connection.get()) != CONNECTION_BAD && next != PGRES_POLLING_OK &&
           next != PGRES_POLLING_FAILED) {
        if (!WaitForSocket(connection.get(), next == PGRES_POLLING_READING,
                           next == PGRES_POLLING_WRITING, deadline)) {
            status = Refusal(dao::DAO_ERR_CONNECT, "no answer within the time limit");
            return nullptr;
        }
        next = PQconnectPoll(connection.get());
    }
    if (PQstatus(connection.get()) != CONNECTION_OK) {
        status = ConnectFailure(target, connection.get());
        return nullptr;
    }
    PQsetErrorVerbosity(connection.get(), PQERRORS_DEFAULT);
    if (PQsetnonblocking(connection.get(), 1) != 0) {
        status = ConnectFailure(target, connection.get());
        return nullptr;
    }
    status = {};
    return connection;
}

PgWait AwaitResult(PGconn* connection, std::int64_t deadline) {
    for (;;) {
        const int unsent = PQflush(connection);
        if (unsent < 0) {
            // What the server said before it closed its end explains more than EPIPE does.
            return PQconsumeInput(connection) == 1 && PQisBusy(connection) == 0 ? PgWait::kReady
                                                                                : PgWait::kLost;
        }
        if (unsent == 0 && PQisBusy(connection) == 0) {
            return PgWait::kReady;
        }
        if (!WaitForSocket(connection, true, unsent != 0, deadline)) {
            return PgWait::kLate;
        }
        if (PQconsumeInput(connection) == 0) {
            // An error of the server that arrived with the end is still to be read.
            return PQisBusy(connection) == 0 ? PgWait::kReady : PgWait::kLost;
        }
    }
}

}  // namespace kelp::db
