// What statements do and give, the same on both databases.

#include "databases.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Statements : public OnBothDatabases {
  protected:
    void SetUp() override {
        OnBothDatabases::SetUp();
        ASSERT_THAT(Session().Exec("CREATE TABLE ne (id bigint PRIMARY KEY, name text NOT NULL, "
                                   "load double precision, CHECK (id <> 13))"),
                    IsFine());
    }
    dao::CExecStatus Add(int id, const char* name) {
        return Session().Exec("INSERT INTO ne(id, name) VALUES ($1, $2)", {id, name});
    }
    long Count() { return Value("SELECT count(*) FROM ne").As_long(); }
};
INSTANTIATE_ON_BOTH(Statements);

TEST_P(Statements, GiveRowsWithNamesAndTypes) {
    EXPECT_THAT(Add(1, "tokyo"), IsFine());
    EXPECT_THAT(Add(2, "oslo"), IsFine());
    const dao::CExecResult result = Session().Query("SELECT id, name, load FROM ne ORDER BY id");
    ASSERT_THAT(result.GetStatus(), IsFine());
    ASSERT_EQ(result.GetRowCount(), 2U);
    ASSERT_EQ(result.GetColumnCount(), 3U);
    EXPECT_EQ(result.GetColumns()[0].name, "id");
    EXPECT_EQ(result.GetColumns()[0].type, refl::Enum::DT_LONG_LONG);
    EXPECT_EQ(result.GetColumns()[1].type, refl::Enum::DT_TEXT);
    EXPECT_EQ(result.GetColumns()[2].type, refl::Enum::DT_DOUBLE);
    EXPECT_EQ(result.At(0, "id").As_long(), 1);
    EXPECT_EQ(result.At(1, "NAME").As_std_string(), "oslo");
    EXPECT_TRUE(result.At(1, "load").IsNull());
    EXPECT_TRUE(result.At(2, 0).IsNull());
    EXPECT_TRUE(result.At(0, 3).IsNull());
    EXPECT_TRUE(result.At(0, "nobody").IsNull());
    EXPECT_EQ(result.FindColumn("nobody"), -1);
}

TEST_P(Statements, AResultWithoutRowsHasItsColumns) {
    const dao::CExecResult result = Session().Query("SELECT id, name FROM ne WHERE id = 99");
    EXPECT_THAT(result.GetStatus(), IsFine());
    EXPECT_EQ(result.GetRowCount(), 0U);
    EXPECT_EQ(result.GetColumnCount(), 2U);
}

TEST_P(Statements, TellHowManyRowsTheyTouched) {
    const struct {
        const char* sql;
        long long touched;
    } cases[] = {
        {"INSERT INTO ne(id, name) VALUES (1, 'a'), (2, 'b'), (3, 'c')", 3},
        {"UPDATE ne SET load = 0.5 WHERE id > 1", 2},
        {"UPDATE ne SET load = 0.5 WHERE id > 99", 0},
        {"SELECT * FROM ne", 0},
        {"DELETE FROM ne WHERE id = 1", 1},
        {"CREATE TABLE other (id integer)", 0},
        {"DELETE FROM ne", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sql);
        const dao::CExecStatus status = Session().Exec(c.sql);
        EXPECT_THAT(status, IsFine());
        EXPECT_EQ(status.GetAffectedRows(), c.touched);
    }
}

TEST_P(Statements, ReturnRowsOfWhatTheyChanged) {
    const dao::CExecResult result =
        Session().Query("INSERT INTO ne(id, name) VALUES (7, 'a'), (8, 'b') RETURNING id");
    ASSERT_THAT(result.GetStatus(), IsFine());
    ASSERT_EQ(result.GetRowCount(), 2U);
    EXPECT_EQ(result.At(1, 0).As_long(), 8);
    EXPECT_EQ(result.GetStatus().GetAffectedRows(), 2);
}

// Each failure has the same code on both databases, and the session works on.
TEST_P(Statements, FailWithCodes) {
    EXPECT_THAT(Add(1, "tokyo"), IsFine());
    const struct {
        const char* name;
        const char* sql;
        std::vector<TEValue> params;
        int code;
    } cases[] = {
        {"syntax", "SELEC 1", {}, dao::DAO_ERR_SYNTAX},
        {"unknown table", "SELECT * FROM nobody", {}, dao::DAO_ERR_SYNTAX},
        {"unknown column", "SELECT nothing FROM ne", {}, dao::DAO_ERR_SYNTAX},
        {"text in double quotes", "SELECT \"tokyo\"", {}, dao::DAO_ERR_SYNTAX},
        {"unknown function", "SELECT nothing(1)", {}, dao::DAO_ERR_SYNTAX},
        {"empty", "", {}, dao::DAO_ERR_SYNTAX},
        {"blanks and a comment", "  -- nothing\n ", {}, dao::DAO_ERR_SYNTAX},
        {"two statements", "DELETE FROM ne; DELETE FROM ne", {}, dao::DAO_ERR_SYNTAX},
        {"primary key", "INSERT INTO ne(id, name) VALUES (1, 'x')", {}, dao::DAO_ERR_CONSTRAINT},
        {"not null", "INSERT INTO ne(id) VALUES (2)", {}, dao::DAO_ERR_CONSTRAINT},
        {"check", "INSERT INTO ne(id, name) VALUES (13, 'x')", {}, dao::DAO_ERR_CONSTRAINT},
        {"too few parameters",
         "SELECT * FROM ne WHERE id = $1 AND name = $2",
         {TEValue(1)},
         dao::DAO_ERR_ARGUMENT},
        {"too many parameters",
         "SELECT * FROM ne WHERE id = $1",
         {TEValue(1), TEValue(2)},
         dao::DAO_ERR_ARGUMENT},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const dao::CExecResult result = Session().Query(c.sql, c.params);
        EXPECT_THAT(result.GetStatus(), Gives(c.code));
        EXPECT_FALSE(result.GetStatus().GetErrText().empty());
        EXPECT_EQ(result.GetRowCount(), 0U);
        EXPECT_EQ(Count(), 1);
    }
}

TEST_P(Statements, TheStatusKeepsTheDatabasesOwnCode) {
    EXPECT_THAT(Add(1, "tokyo"), IsFine());
    const dao::CExecStatus status = Add(1, "again");
    EXPECT_THAT(status, Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_EQ(status.GetNativeCode(), IsSqlite() ? 1555 : 0);  // SQLITE_CONSTRAINT_PRIMARYKEY
    EXPECT_STREQ(status.GetSqlState(), IsSqlite() ? "" : "23505");
    EXPECT_THAT(status.GetErrText(), HasSubstr(OneOf("UNIQUE constraint failed: ne.id",
                                                     "duplicate key value violates")));
}

TEST_P(Statements, AZeroByteInTheTextIsRefused) {
    EXPECT_THAT(Session().Exec(std::string_view("SELECT 1\0 2", 11)), Gives(dao::DAO_ERR_ARGUMENT));
}

TEST_P(Statements, AParameterMayStandSeveralTimesAndInAnyOrder) {
    EXPECT_THAT(Add(1, "tokyo"), IsFine());
    EXPECT_EQ(Value("SELECT name FROM ne WHERE name = $2 AND id = $1 AND $1 = id", {1, "tokyo"})
                  .As_std_string(),
              "tokyo");
}

TEST_P(Statements, AKindThatIsSaidMustBeTheStatements) {
    impl_dao::CSqlSession_Impl& frame = *Session().GetImpl();
    const struct {
        dao::SqlTypeEnum type;
        const char* sql;
        int code;
    } cases[] = {
        {dao::SQL_ANY, "INSERT INTO ne(id, name) VALUES (1, 'x')", dao::DAO_OK},
        {dao::SQL_INSERT, " /* new */ insert INTO ne(id, name) VALUES (2, 'x')", dao::DAO_OK},
        {dao::SQL_SELECT, "SELECT * FROM ne", dao::DAO_OK},
        {dao::SQL_SELECT, "WITH all_of_them AS (SELECT * FROM ne) SELECT * FROM all_of_them",
         dao::DAO_OK},
        {dao::SQL_SELECT, "DELETE FROM ne", dao::DAO_ERR_ARGUMENT},
        {dao::SQL_UPDATE, "DELETE FROM ne", dao::DAO_ERR_ARGUMENT},
        {dao::SQL_INSERT, "UPDATE ne SET name = 'y'", dao::DAO_ERR_ARGUMENT},
        {dao::SQL_DELETE, "DELETE FROM ne WHERE id = 1", dao::DAO_OK},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sql);
        EXPECT_THAT(frame.ExecSql_OnlyForFrame_Impl({}, c.type, c.sql, dao::NoParamType()),
                    Gives(c.code));
    }
    EXPECT_EQ(Count(), 1);
}

TEST_P(Statements, PreparedOnesRunOftenAndOutliveAChangedTable) {
    dao::CStatement insert;
    ASSERT_THAT(Session().Prepare("INSERT INTO ne(id, name) VALUES ($1, $2)", insert), IsFine());
    for (int id = 100; id < 200; ++id) {
        ASSERT_THAT(insert.Exec({id, std::to_string(id)}), IsFine());
    }
    EXPECT_EQ(Count(), 100);
    dao::CStatement all;
    ASSERT_THAT(Session().Prepare("SELECT * FROM ne WHERE id = $1", all), IsFine());
    EXPECT_EQ(all.Query({150}).GetColumnCount(), 3U);
    ASSERT_THAT(Session().Exec("ALTER TABLE ne ADD COLUMN place text DEFAULT 'roof'"), IsFine());
    const dao::CExecResult wider = all.Query({150});
    EXPECT_THAT(wider.GetStatus(), IsFine());
    EXPECT_EQ(wider.At(0, "place").As_std_string(), "roof");
    EXPECT_EQ(wider.GetColumnCount(), 4U);
    EXPECT_THAT(insert.Exec({100, "again"}), Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_THAT(insert.Exec({200, "next"}), IsFine());
}

// A text that is run again is prepared by the session itself, and its plan too is outlived.
TEST_P(Statements, CachedOnesOutliveAChangedTable) {
    EXPECT_THAT(Add(1, "tokyo"), IsFine());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Session().Query("SELECT * FROM ne").GetColumnCount(), 3U);
    }
    ASSERT_THAT(Session().Exec("ALTER TABLE ne ADD COLUMN place text"), IsFine());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Session().Query("SELECT * FROM ne").GetColumnCount(), 4U);
    }
}

TEST_P(Statements, MoreTextsThanAreKept) {
    dao::SessionOptions options;
    options.cached_statements = 3;
    ASSERT_THAT(Session().Open(Url(), options), IsFine());
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 7; ++i) {
            for (int again = 0; again < 2; ++again) {
                ASSERT_EQ(Value("SELECT 1 + " + std::to_string(i)).As_int(), 1 + i);
            }
        }
    }
    if (!IsSqlite()) {
        // What is not kept any more is freed on the server too.
        EXPECT_LE(Value("SELECT count(*) FROM pg_prepared_statements").As_int(), 4);
    }
}

TEST_P(Statements, PreparingTellsWhatIsWrong) {
    dao::CStatement statement;
    EXPECT_THAT(Session().Prepare("SELECT nothing FROM ne", statement), Gives(dao::DAO_ERR_SYNTAX));
    EXPECT_THAT(statement.Exec(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(statement.Query().GetStatus(), Gives(dao::DAO_ERR_ARGUMENT));
}

TEST_P(Statements, OfAClosedSessionAreRefused) {
    dao::CStatement statement;
    ASSERT_THAT(Session().Prepare("SELECT 1", statement), IsFine());
    Session().Close();
    EXPECT_THAT(statement.Exec(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().Exec("SELECT 1"), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().Begin(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().Commit(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().Rollback(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().Ping(), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().ExecScript("SELECT 1"), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_THAT(Session().ExecStoredProc("any"), Gives(dao::DAO_ERR_ARGUMENT));
    EXPECT_FALSE(Session().IsOpen());
    EXPECT_EQ(Session().GetServerType(), 0);
}

TEST_P(Statements, ScriptsRunAsAWholeOrNotAtAll) {
    EXPECT_THAT(Session().ExecScript("CREATE TABLE a (id integer); -- one\n"
                                     ";; INSERT INTO a VALUES (1); INSERT INTO a VALUES (2);\n"),
                IsFine());
    EXPECT_EQ(Value("SELECT count(*) FROM a").As_int(), 2);
    EXPECT_THAT(Session().ExecScript("INSERT INTO a VALUES (3); INSERT INTO nobody VALUES (1)"),
                Gives(dao::DAO_ERR_SYNTAX));
    EXPECT_EQ(Value("SELECT count(*) FROM a").As_int(), 2);
    EXPECT_FALSE(Session().InTransaction());
    EXPECT_THAT(Session().ExecScript(" "), IsFine());
}

// A result that is larger than allowed is refused, not held.
TEST_P(Statements, ResultsHaveLimits) {
    dao::SessionOptions options;
    options.max_rows = 10;
    options.max_bytes = 10000;
    ASSERT_THAT(Session().Open(Url(), options), IsFine());
    const std::string numbers =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
        "WHERE i < $1) SELECT i FROM n";
    const dao::CExecResult most = Session().Query(
        IsSqlite() ? numbers : "SELECT * FROM generate_series(1, CAST($1 AS integer))", {10});
    EXPECT_THAT(most.GetStatus(), IsFine());
    EXPECT_EQ(most.GetRowCount(), 10U);
    const dao::CExecResult more = Session().Query(
        IsSqlite() ? numbers : "SELECT * FROM generate_series(1, CAST($1 AS integer))", {1000000});
    EXPECT_THAT(more.GetStatus(), Gives(dao::DAO_ERR_LIMIT));
    EXPECT_EQ(more.GetRowCount(), 0U);
    const std::string large =
        OneOf("SELECT CAST(zeroblob(12000) AS text)", "SELECT repeat('x', 12000)");
    EXPECT_THAT(Session().Query(large).GetStatus(), Gives(dao::DAO_ERR_LIMIT));
    EXPECT_THAT(Session().Exec(large), IsFine());  // dropped rows have no limit
}

}  // namespace
