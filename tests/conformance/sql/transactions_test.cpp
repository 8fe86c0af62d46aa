// Transactions: all or nothing, the same rules on both databases.

#include <latch>
#include <thread>

#include "databases.h"

namespace {

class Transactions : public OnBothDatabases {
  protected:
    void SetUp() override {
        OnBothDatabases::SetUp();
        ASSERT_THAT(Session().Exec("CREATE TABLE n (id integer PRIMARY KEY)"), IsFine());
    }
    dao::CExecStatus Add(int id) { return Session().Exec("INSERT INTO n VALUES ($1)", {id}); }
    int Count() { return Value("SELECT count(*) FROM n").As_int(); }
};
INSTANTIATE_ON_BOTH(Transactions);

TEST_P(Transactions, EndWithTheirScope) {
    {
        dao::CTransaction change(Session());
        EXPECT_THAT(change.GetStatus(), IsFine());
        EXPECT_TRUE(Session().InTransaction());
        EXPECT_THAT(Add(1), IsFine());
    }
    EXPECT_FALSE(Session().InTransaction());
    EXPECT_EQ(Count(), 0);
    {
        dao::CTransaction change(Session());
        EXPECT_THAT(Add(1), IsFine());
        EXPECT_THAT(change.Commit(), IsFine());
        EXPECT_THAT(change.Commit(), Gives(dao::DAO_ERR_STATE));
        EXPECT_THAT(change.Rollback(), Gives(dao::DAO_ERR_STATE));
    }
    EXPECT_EQ(Count(), 1);
    dao::CTransaction change(Session());
    EXPECT_THAT(Add(2), IsFine());
    EXPECT_THAT(change.Rollback(), IsFine());
    EXPECT_EQ(Count(), 1);
}

TEST_P(Transactions, DoNotNest) {
    dao::CTransaction outer(Session());
    dao::CTransaction inner(Session());
    EXPECT_THAT(inner.GetStatus(), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(inner.Commit(), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Add(1), IsFine());
    EXPECT_THAT(outer.Commit(), IsFine());
    EXPECT_EQ(Count(), 1);
}

TEST_P(Transactions, WithoutOneThereIsNothingToCommit) {
    EXPECT_THAT(Session().Commit(), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().Rollback(), IsFine());
}

// SQLite would go on after a failure; a caller that overlooks it would commit half of its work.
TEST_P(Transactions, FailAsAWholeWithOneStatement) {
    dao::CTransaction change(Session());
    EXPECT_THAT(Add(1), IsFine());
    EXPECT_THAT(Add(1), Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_THAT(Add(2), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(Session().Query("SELECT 1").GetStatus(), Gives(dao::DAO_ERR_STATE));
    EXPECT_THAT(change.Commit(), Gives(dao::DAO_ERR_STATE));
    EXPECT_FALSE(Session().InTransaction());
    EXPECT_EQ(Count(), 0);
    EXPECT_THAT(Add(3), IsFine());
}

TEST_P(Transactions, ACommitThatIsAStatementDoesNotSaveAFailedOne) {
    for (const char* end : {"COMMIT", "END", "ROLLBACK", "rollback transaction;"}) {
        SCOPED_TRACE(end);
        const bool commits = *end == 'C' || *end == 'E';
        EXPECT_THAT(Session().Exec("BEGIN"), IsFine());
        EXPECT_TRUE(Session().InTransaction());
        EXPECT_THAT(Add(1), IsFine());
        EXPECT_THAT(Add(1), Gives(dao::DAO_ERR_CONSTRAINT));
        EXPECT_THAT(Session().Exec(end), Gives(commits ? dao::DAO_ERR_STATE : dao::DAO_OK));
        EXPECT_FALSE(Session().InTransaction());
        EXPECT_EQ(Count(), 0);
    }
}

TEST_P(Transactions, ASavepointSavesOne) {
    dao::CTransaction change(Session());
    EXPECT_THAT(Add(1), IsFine());
    EXPECT_THAT(Session().Exec("SAVEPOINT here"), IsFine());
    EXPECT_THAT(Add(1), Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_THAT(Session().Exec("ROLLBACK TO here"), IsFine());
    EXPECT_THAT(Add(2), IsFine());
    EXPECT_THAT(change.Commit(), IsFine());
    EXPECT_EQ(Count(), 2);
}

TEST_P(Transactions, AFailedScriptFailsIt) {
    dao::CTransaction change(Session());
    EXPECT_THAT(Session().ExecScript("INSERT INTO n VALUES (1); INSERT INTO n VALUES (1)"),
                Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_THAT(Add(2), Gives(dao::DAO_ERR_STATE));
}

TEST_P(Transactions, ForReading) {
    EXPECT_THAT(Add(1), IsFine());
    dao::CTransaction look(Session(), dao::CSqlSession::Access::kRead);
    EXPECT_EQ(Count(), 1);
    EXPECT_THAT(look.Commit(), IsFine());
}

// Two that read first and write then: with the write lock taken at once neither fails half-way.
TEST_P(Transactions, ContendWithoutLosingAnUpdate) {
    ASSERT_THAT(Session().Exec("CREATE TABLE total (v integer)"), IsFine());
    ASSERT_THAT(Session().Exec("INSERT INTO total VALUES (0)"), IsFine());
    constexpr int kThreads = 4;
    constexpr int kRounds = 10;
    std::latch together(kThreads);
    const auto work = [&] {
        dao::SessionOptions options;
        options.lock_timeout_ms = 60000;
        dao::CSqlSession own;
        EXPECT_THAT(own.Open(Url(), options), IsFine());
        together.arrive_and_wait();
        for (int i = 0; i < kRounds; ++i) {
            dao::CTransaction change(own);
            ASSERT_THAT(change.GetStatus(), IsFine());
            const dao::CExecResult now =
                own.Query(OneOf("SELECT v FROM total", "SELECT v FROM total FOR UPDATE"));
            ASSERT_THAT(own.Exec("UPDATE total SET v = $1", {now.At(0, 0).As_int() + 1}), IsFine());
            ASSERT_THAT(change.Commit(), IsFine());
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Value("SELECT v FROM total").As_int(), kThreads * kRounds);
}

// A conflict is told apart: the whole transaction may be tried again.
TEST(PostgresTransactions, AConflictHasItsOwnCode) {
    const std::string url = NewPostgresDatabase();
    dao::CSqlSession one;
    dao::CSqlSession two;
    ASSERT_THAT(one.Open(url), IsFine());
    ASSERT_THAT(two.Open(url), IsFine());
    ASSERT_THAT(one.ExecScript("CREATE TABLE n (v integer); INSERT INTO n VALUES (1)"), IsFine());
    for (dao::CSqlSession* session : {&one, &two}) {
        ASSERT_THAT(session->Exec("BEGIN ISOLATION LEVEL REPEATABLE READ"), IsFine());
        ASSERT_THAT(session->Exec("SELECT * FROM n"), IsFine());
    }
    ASSERT_THAT(one.Exec("UPDATE n SET v = 2"), IsFine());
    ASSERT_THAT(one.Commit(), IsFine());
    EXPECT_THAT(two.Exec("UPDATE n SET v = 3"), Gives(dao::DAO_ERR_CONFLICT));
    EXPECT_THAT(two.Commit(), Gives(dao::DAO_ERR_STATE));
}

TEST(PostgresTransactions, AReadOnlyOneRefusesWrites) {
    dao::CSqlSession session;
    ASSERT_THAT(session.Open(NewPostgresDatabase()), IsFine());
    ASSERT_THAT(session.Exec("CREATE TABLE n (v integer)"), IsFine());
    dao::CTransaction look(session, dao::CSqlSession::Access::kRead);
    EXPECT_THAT(session.Exec("INSERT INTO n VALUES (1)"), Gives(dao::DAO_ERR_READ_ONLY));
}

// A deferred constraint fails at the commit, which then leaves nothing open.
TEST_P(Transactions, ACommitThatFailsIsRolledBack) {
    ASSERT_THAT(Session().Exec("CREATE TABLE child (id integer REFERENCES n(id) "
                               "DEFERRABLE INITIALLY DEFERRED)"),
                IsFine());
    dao::CTransaction change(Session());
    ASSERT_THAT(Session().Exec("INSERT INTO child VALUES (5)"), IsFine());
    EXPECT_THAT(change.Commit(), Gives(dao::DAO_ERR_CONSTRAINT));
    EXPECT_FALSE(Session().InTransaction());
    EXPECT_EQ(Value("SELECT count(*) FROM child").As_int(), 0);
}

}  // namespace
