// Stored procedures: a server's own, and the statements that a SQLite file keeps by name.

#include "databases.h"

namespace {

class Procedures : public OnBothDatabases {
  protected:
    void SetUp() override {
        OnBothDatabases::SetUp();
        ASSERT_THAT(Session().ExecScript("CREATE TABLE ne (id bigint PRIMARY KEY, name text)"),
                    IsFine());
    }
    // Makes a procedure, for each of the two in its own words.
    void Make(const std::string& name, const std::string& sqlite_body,
              const std::string& postgresql) {
        if (!IsSqlite()) {
            ASSERT_THAT(Session().Exec(postgresql), IsFine());
            return;
        }
        ASSERT_THAT(Session().Exec("CREATE TABLE IF NOT EXISTS kelp_procedures (name text PRIMARY "
                                   "KEY, body text NOT NULL)"),
                    IsFine());
        ASSERT_THAT(
            Session().Exec("INSERT INTO kelp_procedures VALUES ($1, $2)", {name, sqlite_body}),
            IsFine());
    }
    int Count() { return Value("SELECT count(*) FROM ne").As_int(); }
};
INSTANTIATE_ON_BOTH(Procedures);

TEST_P(Procedures, WithoutRows) {
    Make("fill", "INSERT INTO ne VALUES (1, 'a'); INSERT INTO ne VALUES (2, 'b')",
         "CREATE PROCEDURE fill() LANGUAGE sql AS "
         "'INSERT INTO ne VALUES (1, ''a''); INSERT INTO ne VALUES (2, ''b'')'");
    EXPECT_THAT(Session().ExecStoredProc("fill"), IsFine());
    EXPECT_EQ(Count(), 2);
    EXPECT_THAT(Session().ExecStoredProc("FILL"), Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_EQ(Count(), 2);
}

TEST_P(Procedures, WithRowsAndParameters) {
    Make("names", "SELECT name, id FROM ne WHERE id >= $1 ORDER BY id",
         "CREATE FUNCTION names(lowest bigint) RETURNS TABLE (name text, id bigint) LANGUAGE sql "
         "AS 'SELECT name, id FROM ne WHERE id >= lowest ORDER BY id'");
    ASSERT_THAT(Session().ExecScript("INSERT INTO ne VALUES (1, 'a'), (2, 'b'), (3, 'c')"),
                IsFine());
    for (int round = 0; round < 3; ++round) {
        dao::CExecResult result;
        EXPECT_THAT(Session().ExecStoredProc("names", {2}, result), IsFine());
        ASSERT_EQ(result.GetRowCount(), 2U);
        EXPECT_EQ(result.At(1, "name").As_std_string(), "c");
        EXPECT_EQ(result.GetErrCode(), dao::DAO_OK);
    }
    EXPECT_THAT(Session().ExecStoredProc("names", {2}), IsFine());  // rows dropped
}

TEST_P(Procedures, WhoseRowsAreOfTheLastThatHasSome) {
    Make("renew",
         "SELECT 'before'; DELETE FROM ne; INSERT INTO ne VALUES ($2, $1); "
         "SELECT name FROM ne; UPDATE ne SET name = name",
         "CREATE FUNCTION renew(what text, which bigint) RETURNS SETOF text LANGUAGE sql AS "
         "'DELETE FROM ne; INSERT INTO ne VALUES (which, what); SELECT name FROM ne'");
    dao::CExecResult result;
    EXPECT_THAT(Session().ExecStoredProc("renew", {"tokyo", 5}, result), IsFine());
    ASSERT_EQ(result.GetRowCount(), 1U);
    EXPECT_EQ(result.At(0, 0).As_std_string(), "tokyo");
}

TEST_P(Procedures, UnknownOnes) {
    EXPECT_THAT(Session().ExecStoredProc("nobody"), Gives(dao::DAO_ERR_NO_PROCEDURE));
    Make("one", "SELECT $1", "CREATE FUNCTION one(a text) RETURNS text LANGUAGE sql AS 'SELECT a'");
    dao::CExecResult result;
    for (const char* name : {"nobody", "", "one; DROP TABLE ne", "public.nobody"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(Session().ExecStoredProc(name, {}, result), Gives(dao::DAO_ERR_NO_PROCEDURE));
        EXPECT_EQ(result.GetErrCode(), dao::DAO_ERR_NO_PROCEDURE);
    }
    EXPECT_THAT(Session().ExecStoredProc("one"), Gives(dao::DAO_ERR_NO_PROCEDURE));
    EXPECT_THAT(Session().ExecStoredProc("one", {"a", "b"}), Gives(dao::DAO_ERR_NO_PROCEDURE));
    EXPECT_THAT(Session().ExecStoredProc("one", {"a"}, result), IsFine());
    EXPECT_EQ(result.At(0, 0).As_std_string(), "a");
}

TEST_P(Procedures, FailAsAWhole) {
    Make("half", "INSERT INTO ne VALUES (7, 'a'); INSERT INTO nobody VALUES (1)",
         "CREATE FUNCTION half() RETURNS void LANGUAGE plpgsql AS "
         "'BEGIN INSERT INTO ne VALUES (7, ''a''); INSERT INTO nobody VALUES (1); END'");
    EXPECT_THAT(Session().ExecStoredProc("half"), Gives(dao::DAO_ERR_SYNTAX));
    EXPECT_EQ(Count(), 0);
    EXPECT_FALSE(Session().InTransaction());
}

TEST_P(Procedures, ArePartOfAnOpenTransaction) {
    Make("add", "INSERT INTO ne VALUES ($1, 'x')",
         "CREATE PROCEDURE add(which bigint) LANGUAGE sql AS "
         "'INSERT INTO ne VALUES (which, ''x'')'");
    {
        dao::CTransaction change(Session());
        EXPECT_THAT(Session().ExecStoredProc("add", {1}), IsFine());
    }
    EXPECT_EQ(Count(), 0);
    EXPECT_THAT(Session().ExecStoredProc("add", {1}), IsFine());
    EXPECT_EQ(Count(), 1);
}

TEST_P(Procedures, MadeAnewAreFoundAnew) {
    Make("version", "SELECT 1",
         "CREATE FUNCTION version_() RETURNS integer LANGUAGE sql "
         "AS 'SELECT 1'");
    const std::string name = OneOf("version", "version_");
    EXPECT_THAT(Session().ExecStoredProc(name), IsFine());
    ASSERT_THAT(Session().Exec(OneOf("DELETE FROM kelp_procedures", "DROP FUNCTION version_")),
                IsFine());
    EXPECT_FALSE(Session().ExecStoredProc(name).IsOk());
    EXPECT_THAT(Session().ExecStoredProc(name), Gives(dao::DAO_ERR_NO_PROCEDURE));
}

TEST(PostgresProcedures, OfEveryForm) {
    dao::CSqlSession session;
    ASSERT_THAT(session.Open(NewPostgresDatabase()), IsFine());
    ASSERT_THAT(
        session.ExecScript("CREATE SCHEMA other;"
                           "CREATE FUNCTION other.place() RETURNS text LANGUAGE sql AS "
                           "  $$SELECT 'elsewhere'$$;"
                           "CREATE FUNCTION \"Mixed\"() RETURNS text LANGUAGE sql AS "
                           "  $$SELECT 'as written'$$;"
                           "CREATE FUNCTION mixed() RETURNS text LANGUAGE sql AS "
                           "  $$SELECT 'folded'$$;"
                           "CREATE PROCEDURE twice(INOUT v integer) LANGUAGE plpgsql AS "
                           "  $$BEGIN v := v * 2; END$$;"
                           "CREATE PROCEDURE split(IN v integer, OUT q integer, OUT r integer) "
                           "  LANGUAGE plpgsql AS $$BEGIN q := v / 10; r := v % 10; END$$;"
                           "CREATE FUNCTION quiet() RETURNS void LANGUAGE sql AS $$SELECT$$;"
                           "CREATE FUNCTION given(a integer, b integer DEFAULT 5) RETURNS integer "
                           "  LANGUAGE sql AS $$SELECT a + b$$"),
        IsFine());
    const struct {
        const char* name;
        std::vector<TEValue> params;
        const char* first;  // null: no rows
    } cases[] = {
        {"other.place", {}, "elsewhere"},
        {"OTHER.place", {}, "elsewhere"},
        {"Mixed", {}, "as written"},
        {"MIXED", {}, "folded"},
        {"twice", {TEValue(21)}, "42"},
        {"split", {TEValue(47)}, "4"},
        {"quiet", {}, nullptr},
        {"given", {TEValue(1)}, "6"},
        {"given", {TEValue(1), TEValue(2)}, "3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        dao::CExecResult result;
        EXPECT_THAT(session.ExecStoredProc(c.name, c.params, result), IsFine());
        EXPECT_EQ(result.GetRowCount(), c.first == nullptr ? 0U : 1U);
        EXPECT_EQ(result.At(0, 0).As_std_string(), c.first == nullptr ? "" : c.first);
    }
    EXPECT_THAT(session.ExecStoredProc("place"), Gives(dao::DAO_ERR_NO_PROCEDURE));
}

}  // namespace
