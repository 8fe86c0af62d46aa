// Reading row by row, with one row in memory.

#include "databases.h"
#include "support/heap_meter.h"

namespace {

class Cursors : public OnBothDatabases {
  protected:
    static constexpr int kMany = 100000;

    std::string Numbers() const {
        return OneOf(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
            "100000) SELECT i, 'a text of more than twenty-two octets ' || i AS t FROM n",
            "SELECT i, 'a text of more than twenty-two octets ' || i AS t FROM "
            "generate_series(1, 100000) i");
    }
};
INSTANTIATE_ON_BOTH(Cursors);

TEST_P(Cursors, ReadManyRowsInTheMemoryOfOne) {
    dao::CCursorTable cursor;
    ASSERT_THAT(Session().OpenCursor(Numbers(), cursor), IsFine());
    ASSERT_EQ(cursor.GetColumns().size(), 2U);
    EXPECT_EQ(cursor.GetColumns()[1].name, "t");
    EXPECT_TRUE(cursor[0].IsNull());  // before the first row
    int rows = 0;
    std::size_t before = 0;
    std::size_t most = 0;
    while (cursor.Fetch()) {
        ++rows;
        ASSERT_EQ(cursor[0].As_int(), rows);
        if (rows == 1000) {
            before = support::HeapInUse();
        } else if (rows % 10000 == 0) {
            most = std::max(most, support::HeapInUse());
        }
    }
    EXPECT_THAT(cursor.GetStatus(), IsFine());
    EXPECT_EQ(rows, kMany);
    EXPECT_LE(most, before + support::kHeapNoise);
    EXPECT_FALSE(cursor.IsOpen());
    EXPECT_FALSE(cursor.Fetch());
    EXPECT_TRUE(cursor["t"].IsNull());  // behind the last
}

TEST_P(Cursors, OfAnEmptyResultAreAtTheirEnd) {
    dao::CCursorTable cursor;
    ASSERT_THAT(Session().OpenCursor("SELECT 1 AS one WHERE 1 = 0", cursor), IsFine());
    EXPECT_EQ(cursor.GetColumns().size(), 1U);
    EXPECT_FALSE(cursor.Fetch());
    EXPECT_THAT(cursor.GetStatus(), IsFine());
    EXPECT_THAT(Session().Exec("SELECT 1"), IsFine());
}

TEST_P(Cursors, HaveTheSessionToThemselves) {
    dao::CCursorTable cursor;
    ASSERT_THAT(Session().OpenCursor(Numbers(), cursor), IsFine());
    dao::CCursorTable second;
    dao::CStatement statement;
    EXPECT_THAT(Session().Exec("SELECT 1"), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().OpenCursor("SELECT 1", second), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().Prepare("SELECT 1", statement), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().Begin(), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().ExecStoredProc("any"), Gives(dao::DAO_ERR_STATE));
    EXPECT_FALSE(second.Fetch());
    EXPECT_TRUE(cursor.Fetch());
    EXPECT_EQ(cursor["t"].As_std_string(), "a text of more than twenty-two octets 1");
    cursor.Close();
    cursor.Close();
    EXPECT_FALSE(cursor.Fetch());
    EXPECT_THAT(Session().Exec("SELECT 1"), IsFine());
}

TEST_P(Cursors, CloseInATransactionWithoutFailingIt) {
    dao::CTransaction change(Session());
    ASSERT_THAT(Session().Exec("CREATE TABLE kept (i integer)"), IsFine());
    {
        dao::CCursorTable cursor;
        ASSERT_THAT(Session().OpenCursor(Numbers(), cursor), IsFine());
        EXPECT_TRUE(cursor.Fetch());
        EXPECT_THAT(change.Commit(), Gives(dao::DAO_ERR_STATE));
    }
    EXPECT_THAT(change.Commit(), IsFine());
    EXPECT_EQ(Value("SELECT count(*) FROM kept").As_int(), 0);
}

TEST_P(Cursors, TakeParametersAndPreparedStatements) {
    dao::CStatement statement;
    ASSERT_THAT(Session().Prepare("SELECT CAST($1 AS text), CAST($2 AS text)", statement),
                IsFine());
    for (const char* text : {"one", "another one of more than twenty-two octets"}) {
        dao::CCursorTable cursor;
        {
            const std::vector<TEValue> params = {text, text};
            ASSERT_THAT(statement.OpenCursor(cursor, params), IsFine());
        }
        ASSERT_TRUE(cursor.Fetch());
        EXPECT_EQ(cursor[1].As_std_string(), text);
        EXPECT_FALSE(cursor.Fetch());
    }
}

TEST_P(Cursors, MoveAndReplaceEachOther) {
    dao::CCursorTable first;
    ASSERT_THAT(Session().OpenCursor("SELECT 1 AS v UNION ALL SELECT 2", first), IsFine());
    EXPECT_TRUE(first.Fetch());
    dao::CCursorTable moved(std::move(first));
    EXPECT_TRUE(moved.Fetch());
    EXPECT_EQ(moved["v"].As_int(), 2);
    dao::CCursorTable other;
    moved = std::move(other);  // which closes what it read
    EXPECT_THAT(Session().OpenCursor("SELECT 7", moved), IsFine());
    ASSERT_THAT(Session().OpenCursor("SELECT 8", moved), IsFine());  // likewise
    EXPECT_TRUE(moved.Fetch());
    EXPECT_EQ(moved[0].As_int(), 8);
}

TEST_P(Cursors, FailWhereTheStatementDoes) {
    dao::CCursorTable cursor;
    EXPECT_THAT(Session().OpenCursor("SELECT nothing", cursor), Gives(dao::DAO_ERR_SYNTAX));
    EXPECT_THAT(cursor.GetStatus(), Gives(dao::DAO_ERR_SYNTAX));
    EXPECT_FALSE(cursor.Fetch());
    EXPECT_TRUE(cursor.GetColumns().empty());
    // Row 50001 divides by zero, or is an overflow.
    ASSERT_THAT(Session().OpenCursor(
                    OneOf("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i "
                          "< 100000) SELECT abs(CASE i WHEN 50001 THEN -9223372036854775807 - 1 "
                          "ELSE i END) FROM n",
                          "SELECT 1 / (50001 - i) FROM generate_series(1, 100000) i"),
                    cursor),
                IsFine());
    int rows = 0;
    while (cursor.Fetch()) {
        ++rows;
    }
    EXPECT_EQ(rows, 50000);
    EXPECT_FALSE(cursor.GetStatus().IsOk());
    EXPECT_THAT(Session().Exec("SELECT 1"), IsFine());
}

TEST_P(Cursors, OfASessionThatClosesEnd) {
    dao::CCursorTable cursor;
    ASSERT_THAT(Session().OpenCursor(Numbers(), cursor), IsFine());
    EXPECT_TRUE(cursor.Fetch());
    Session().Close();
    EXPECT_FALSE(cursor.Fetch());
    EXPECT_THAT(cursor.GetStatus(), Gives(dao::DAO_ERR_ARGUMENT));
}

}  // namespace
