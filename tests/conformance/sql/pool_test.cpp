// Sessions for many threads.

#include <atomic>
#include <latch>
#include <thread>

#include "databases.h"

namespace {

class Pool : public OnBothDatabases {
  protected:
    dao::PoolOptions Options(std::size_t sessions, int wait_ms = 60000) const {
        dao::PoolOptions options;
        options.max_sessions = sessions;
        options.max_wait_ms = wait_ms;
        options.session.lock_timeout_ms = 60000;
        return options;
    }
};
INSTANTIATE_ON_BOTH(Pool);

TEST_P(Pool, OpensWhatIsNeededAndKeepsIt) {
    dao::CSessionPool pool(Url(), Options(3));
    EXPECT_EQ(pool.IdleCount(), 0U);
    {
        dao::CSessionPool::CLease one = pool.Lease();
        dao::CSessionPool::CLease two = pool.Lease();
        ASSERT_TRUE(one);
        ASSERT_TRUE(two);
        EXPECT_THAT(one->Exec("SELECT 1"), IsFine());
        EXPECT_EQ(pool.LeasedCount(), 2U);
        two.Return();
        two.Return();
        EXPECT_FALSE(two);
        EXPECT_EQ(pool.LeasedCount(), 1U);
        EXPECT_EQ(pool.IdleCount(), 1U);
        two = pool.Lease();
        EXPECT_TRUE(two);
        EXPECT_EQ(pool.IdleCount(), 0U);
        two = std::move(one);  // ends what it replaces
        EXPECT_EQ(pool.LeasedCount(), 1U);
    }
    EXPECT_EQ(pool.LeasedCount(), 0U);
    EXPECT_EQ(pool.IdleCount(), 2U);
}

TEST_P(Pool, WaitsNoLongerThanAllowed) {
    dao::CSessionPool pool(Url(), Options(1, 30));
    dao::CSessionPool::CLease one = pool.Lease();
    ASSERT_TRUE(one);
    const dao::CSessionPool::CLease two = pool.Lease();
    EXPECT_FALSE(two);
    EXPECT_THAT(two.GetStatus(), Gives(dao::DAO_ERR_POOL_TIMEOUT));
    one.Return();
    EXPECT_TRUE(pool.Lease());
}

TEST_P(Pool, CleansUpBehindALease) {
    dao::CSessionPool pool(Url(), Options(1));
    {
        dao::CSessionPool::CLease lease = pool.Lease();
        ASSERT_THAT(lease->Exec("CREATE TABLE n (v integer)"), IsFine());
        ASSERT_THAT(lease->Begin(), IsFine());
        ASSERT_THAT(lease->Exec("INSERT INTO n VALUES (1)"), IsFine());
        lease->SetStatementTimeout(1);
        dao::CCursorTable cursor;
        ASSERT_THAT(lease->OpenCursor("SELECT 1 UNION ALL SELECT 2", cursor), IsFine());
        const CapturedLog log;
        lease.Return();
        EXPECT_TRUE(log.Contains("a transaction was open when its session went back to the pool"));
        EXPECT_FALSE(cursor.Fetch() && cursor.Fetch());
    }
    dao::CSessionPool::CLease lease = pool.Lease();
    ASSERT_TRUE(lease);
    EXPECT_FALSE(lease->InTransaction());
    EXPECT_EQ(lease->Query("SELECT count(*) FROM n").At(0, 0).As_int(), 0);
}

TEST_P(Pool, ALeaseMayOutliveIt) {
    dao::CSessionPool::CLease lease;
    {
        dao::CSessionPool pool(Url(), Options(1));
        lease = pool.Lease();
    }
    ASSERT_TRUE(lease);
    EXPECT_THAT(lease->Exec("SELECT 1"), IsFine());
}

TEST_P(Pool, TellsWhyItCannotConnect) {
    dao::CSessionPool pool(IsSqlite() ? "sqlite:///nowhere/x.db" : "postgresql://u@127.0.0.1:1/db",
                           Options(1));
    for (int i = 0; i < 2; ++i) {  // the place is given back
        EXPECT_THAT(pool.Lease().GetStatus(), Gives(dao::DAO_ERR_CONNECT));
    }
    EXPECT_EQ(pool.LeasedCount(), 0U);
}

TEST_P(Pool, ServesMoreThreadsThanItHasSessions) {
    ASSERT_THAT(Session().Exec("CREATE TABLE n (thread integer, round integer)"), IsFine());
    constexpr int kThreads = 8;
    constexpr int kRounds = 20;
    dao::CSessionPool pool(Url(), Options(3));
    std::atomic<std::size_t> most = 0;
    std::latch together(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            together.arrive_and_wait();
            for (int round = 0; round < kRounds; ++round) {
                dao::CSessionPool::CLease lease = pool.Lease();
                ASSERT_TRUE(lease) << lease.GetStatus().GetErrText();
                const std::size_t now = pool.LeasedCount();
                for (std::size_t seen = most;
                     seen < now && !most.compare_exchange_weak(seen, now);) {
                }
                ASSERT_THAT(lease->Exec("INSERT INTO n VALUES ($1, $2)", {thread, round}),
                            IsFine());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_LE(most.load(), 3U);
    EXPECT_EQ(Value("SELECT count(*) FROM n").As_int(), kThreads * kRounds);
    EXPECT_LE(pool.IdleCount(), 3U);
}

TEST(SqlitePool, ADatabaseInMemoryHasOneSession) {
    dao::PoolOptions options;
    options.max_wait_ms = 0;
    dao::CSessionPool pool("sqlite::memory:", options);
    {
        const dao::CSessionPool::CLease one = pool.Lease();
        ASSERT_THAT(one->Exec("CREATE TABLE n (v integer)"), IsFine());
        EXPECT_THAT(pool.Lease().GetStatus(), Gives(dao::DAO_ERR_POOL_TIMEOUT));
    }
    EXPECT_THAT(pool.Lease()->Exec("SELECT * FROM n"), IsFine());
}

// Sessions that died while they were idle are found out before they are handed out.
TEST(PostgresPool, HandsOutOnlyWhatLives) {
    for (const int check_after_ms : {0, 3600000}) {
        SCOPED_TRACE(check_after_ms);
        dao::PoolOptions options;
        options.check_after_ms = check_after_ms;
        dao::CSessionPool pool(NewPostgresDatabase(), options);
        {
            const auto one = pool.Lease();
            const auto two = pool.Lease();
            ASSERT_TRUE(one && two);
        }
        Postgres().Kill();
        EXPECT_THAT(check_after_ms == 0 ? pool.Lease().GetStatus() : pool.Lease()->Exec("SELECT 1"),
                    Gives(dao::DAO_ERR_CONNECT));
        Postgres();
        for (int i = 0; i < 3; ++i) {
            const auto lease = pool.Lease();
            ASSERT_TRUE(lease);
            EXPECT_THAT(lease->Exec("SELECT 1"), IsFine());
        }
    }
}

}  // namespace
