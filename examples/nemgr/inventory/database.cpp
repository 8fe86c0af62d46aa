#include "nemgr/inventory/database.h"

#include <memory>
#include <utility>

#include "frameutil/sql.h"
#include "nemgr/results.h"

namespace nemgr::inventory {
namespace {

// One statement each, understood by SQLite and PostgreSQL alike.
constexpr const char* kSchema[] = {
    "CREATE TABLE IF NOT EXISTS element ("
    "  address VARCHAR(255) PRIMARY KEY,"
    "  sysName VARCHAR(255), sysDescr VARCHAR(1024), sysContact VARCHAR(255),"
    "  sysLocation VARCHAR(255), sysUpTime DOUBLE PRECISION, seen BIGINT NOT NULL)",

    "CREATE TABLE IF NOT EXISTS interface ("
    "  address VARCHAR(255) NOT NULL REFERENCES element(address) ON DELETE CASCADE,"
    "  ifIndex INTEGER NOT NULL, ifDescr VARCHAR(255), ifType INTEGER, ifMtu INTEGER,"
    "  ifSpeed DOUBLE PRECISION, ifPhysAddress VARCHAR(255),"
    "  PRIMARY KEY (address, ifIndex))",

    "CREATE TABLE IF NOT EXISTS vendor ("
    "  position INTEGER PRIMARY KEY, block VARCHAR(16) NOT NULL,"
    "  assignment VARCHAR(16) NOT NULL, organization VARCHAR(1024) NOT NULL,"
    "  organizationKey VARCHAR(1024) NOT NULL, postalAddress VARCHAR(4096) NOT NULL)",

    // What the vendors were read from; one row.
    "CREATE TABLE IF NOT EXISTS vendorSource (fingerprint VARCHAR(4096) NOT NULL)",
};

// Fewer than there are workers, who wait for elements most of the time.
constexpr std::size_t kMaxSessions = 10;

// Eight of the largest answers may wait for the one session of a database in memory.
constexpr int kMaxWaitMs = 60000;

std::unique_ptr<dao::CSessionPool>& ThePool() {
    static std::unique_ptr<dao::CSessionPool> pool;
    return pool;
}

}  // namespace

void Require(const dao::CExecStatus& status, const char* what) {
    if (FrameUtil::GetDBErrCode(status, what) != 0) {
        throw CommandFailure(Result::kNoDatabase, std::string(what) + ": " + status.GetErrText());
    }
}

void OpenTheDatabase(const std::string& name) {
    dao::PoolOptions options;
    options.max_sessions = kMaxSessions;
    options.max_wait_ms = kMaxWaitMs;
    if (name.empty()) {
        ThePool() = std::make_unique<dao::CSessionPool>("sqlite::memory:", options);
    } else {
        // Every new session reads the configuration again, so that no password is kept.
        ThePool() = std::make_unique<dao::CSessionPool>(
            [name](dao::CSqlSession& session, dao::SessionOptions session_options) {
                return dao::OpenConfigured(session, name, std::move(session_options));
            },
            options);
    }
    const auto session = Lease();
    FrameUtil::TESqlManager sql(&*session);
    for (const char* statement : kSchema) {
        dao::CExecResult result;
        sql.ExecSql(statement, result);
        Require(result.GetStatus(), "the inventory's tables cannot be made");
    }
}

void CloseTheDatabase() {
    ThePool().reset();
}

dao::CSessionPool::CLease Lease() {
    auto lease = ThePool()->Lease();
    Require(lease.GetStatus(), "the inventory cannot be reached");
    return lease;
}

void Select(dao::CSqlSession& session, std::string_view sql, const dao::CParams& parameters,
            FrameUtil::CFrmTableObject& table) {
    dao::CExecResult result = session.Query(sql, parameters);
    Require(result.GetStatus(), "the inventory cannot be read");
    table.RemoveAll();
    for (const dao::CColumn& column : result.GetColumns()) {
        table.AddCol(column.name.c_str());
    }
    for (std::size_t i = 0; i < result.GetColumnCount(); ++i) {
        table.SetColType(static_cast<int>(i), result.GetColumns()[i].type);
    }
    *table.GetTable() = result.TakeRows();
}

}  // namespace nemgr::inventory
