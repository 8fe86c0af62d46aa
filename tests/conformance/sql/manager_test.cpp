// The library's SQL manager over real databases.

#include "databases.h"
#include "frameutil/sql.h"

namespace {

using FrameUtil::TESqlManager;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Manager : public OnBothDatabases {
  protected:
    void SetUp() override {
        OnBothDatabases::SetUp();
        ASSERT_THAT(Session().ExecScript("CREATE TABLE ne (id bigint PRIMARY KEY, name text); "
                                         "INSERT INTO ne VALUES (1, 'tokyo'), (2, 'oslo')"),
                    IsFine());
        if (IsSqlite()) {
            ASSERT_THAT(Session().ExecScript(
                            "CREATE TABLE kelp_procedures (name text PRIMARY KEY, body text); "
                            "INSERT INTO kelp_procedures VALUES ('clear', 'DELETE FROM ne'), "
                            "('names', 'SELECT name FROM ne ORDER BY id')"),
                        IsFine());
        } else {
            ASSERT_THAT(Session().ExecScript("CREATE PROCEDURE clear() LANGUAGE sql AS "
                                             "$$DELETE FROM ne$$; CREATE FUNCTION names() RETURNS "
                                             "SETOF text LANGUAGE sql AS "
                                             "$$SELECT name FROM ne ORDER BY id$$"),
                        IsFine());
        }
    }
    int Count() { return Value("SELECT count(*) FROM ne").As_int(); }

    TESqlManager m_sql{&Session()};
};
INSTANTIATE_ON_BOTH(Manager);

TEST_P(Manager, RunsStatements) {
    const CapturedLog log;
    EXPECT_EQ(m_sql.ExecSql(std::string("INSERT INTO ne VALUES (3, 'lima')")), 0);
    EXPECT_EQ(m_sql.ExecSql(CStdString("INSERT INTO ne VALUES (4, 'rome')")), 0);
    EXPECT_EQ(m_sql.ExecSql(std::string("SELECT * FROM ne")), 0);  // its rows are dropped
    EXPECT_EQ(Count(), 4);
    dao::CExecResult result;
    EXPECT_EQ(m_sql.ExecSql("SELECT name FROM ne ORDER BY id", result), 0);
    ASSERT_EQ(result.GetRowCount(), 4U);
    EXPECT_EQ(result.At(0, 0).As_std_string(), "tokyo");
    EXPECT_EQ(result.GetErrCode(), 0);
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST_P(Manager, ReturnsTheStatusesCode) {
    EXPECT_EQ(m_sql.ExecSql(std::string("INSERT INTO ne VALUES (1, 'again')")),
              dao::DAO_ERR_CONSTRAINT);
    EXPECT_EQ(m_sql.ExecSql(CStdString("nonsense")), dao::DAO_ERR_SYNTAX);
    dao::CExecResult result;
    ASSERT_EQ(m_sql.ExecSql("SELECT * FROM ne", result), 0);
    EXPECT_EQ(m_sql.ExecSql("SELECT * FROM nobody", result), dao::DAO_ERR_SYNTAX);
    EXPECT_EQ(result.GetErrCode(), dao::DAO_ERR_SYNTAX);
    EXPECT_EQ(result.GetRowCount(), 0U);
}

// The log of the data access knows which statement it was, by the manager's own lines.
TEST_P(Manager, NamesItsStatementsInTheLog) {
    const CapturedLog log;
    m_sql.ExecSql(std::string("nonsense"));
    dao::CExecResult result;
    m_sql.ExecSql("nonsense", result);
    EXPECT_THAT(log.Texts(), ElementsAre(HasSubstr("statement sqlmanager.cpp:ExecSql:29 failed"),
                                         HasSubstr("statement sqlmanager.cpp:ExecSql:35 failed")));
}

TEST_P(Manager, RunsStoredProcedures) {
    dao::CExecResult result;
    EXPECT_EQ(m_sql.ExecProc("names", result, true), 0);
    ASSERT_EQ(result.GetRowCount(), 2U);
    EXPECT_EQ(result.At(1, 0).As_std_string(), "oslo");
    EXPECT_EQ(m_sql.ExecProc("names", result, false), 0);
    EXPECT_EQ(result.GetRowCount(), 0U);
    EXPECT_EQ(m_sql.ExecProc("names"), 0);
    EXPECT_EQ(m_sql.ExecProc("clear"), 0);
    EXPECT_EQ(Count(), 0);
}

TEST_P(Manager, ReturnsTheCodeOfAnUnknownProcedure) {
    EXPECT_EQ(m_sql.ExecProc("nobody"), dao::DAO_ERR_NO_PROCEDURE);
    for (const bool with_rows : {false, true}) {
        dao::CExecResult result;
        EXPECT_EQ(m_sql.ExecProc("nobody", result, with_rows), dao::DAO_ERR_NO_PROCEDURE);
        EXPECT_EQ(result.GetErrCode(), dao::DAO_ERR_NO_PROCEDURE);
    }
}

TEST_P(Manager, WithoutASession) {
    TESqlManager none(nullptr);
    dao::CExecResult result;
    EXPECT_EQ(none.ExecSql(std::string("SELECT 1")), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(none.ExecSql(CStdString("SELECT 1")), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(none.ExecSql("SELECT 1", result), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(none.ExecProc("names"), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(none.ExecProc("names", result, true), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(none.ExecProc("names", result, false), dao::DAO_ERR_ARGUMENT);
    EXPECT_EQ(result.GetErrCode(), dao::DAO_ERR_ARGUMENT);
    Session().Close();
    EXPECT_EQ(m_sql.ExecSql(std::string("SELECT 1")), dao::DAO_ERR_ARGUMENT);
}

}  // namespace
