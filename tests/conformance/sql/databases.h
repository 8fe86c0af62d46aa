// The databases that the suite runs on: each test gets an empty one of each.
//
//     class MyTest : public OnBothDatabases {};
//     INSTANTIATE_ON_BOTH(MyTest);
//     TEST_P(MyTest, Name) { Session().Exec("..."); }
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "kelp/dao.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/postgres_server.h"
#include "support/temp_folder.h"

// What ErrCode gives, named in failure reports.
std::string CodeName(int code);

namespace dao {
void PrintTo(const CExecStatus& status, std::ostream* out);
}

MATCHER_P(Gives, code, std::string("gives ") + CodeName(code)) {
    return arg.GetErrCode() == code;
}
inline auto IsFine() {
    return Gives(static_cast<int>(dao::DAO_OK));
}

// The program's one PostgreSQL server, started by the first that asks, running when asked.
PostgresServer& Postgres();
// The URL of a new, empty database on it.
std::string NewPostgresDatabase();

class OnBothDatabases : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override;

    bool IsSqlite() const { return std::string(GetParam()) == "sqlite"; }
    const std::string& Url() const { return m_url; }
    // Open on the test's database.
    dao::CSqlSession& Session() { return m_session; }
    // What differs between the two.
    std::string OneOf(const char* sqlite, const char* postgresql) const {
        return IsSqlite() ? sqlite : postgresql;
    }
    // A statement that runs for ever.
    std::string Endless() const {
        return OneOf(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
            "SELECT max(i) FROM n",
            "SELECT pg_sleep(3600)");
    }
    // The first cell of a statement's first row.
    TEValue Value(const std::string& sql, const dao::CParams& params = {}) {
        const dao::CExecResult result = m_session.Query(sql, params);
        EXPECT_THAT(result.GetStatus(), IsFine());
        return result.At(0, 0);
    }

    TempFolder m_folder;
    std::string m_url;
    dao::CSqlSession m_session;
};

#define INSTANTIATE_ON_BOTH(Suite)                                                \
    INSTANTIATE_TEST_SUITE_P(Sql, Suite, testing::Values("sqlite", "postgresql"), \
                             [](const auto& of) { return std::string(of.param); })
