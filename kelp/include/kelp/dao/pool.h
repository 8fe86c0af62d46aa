// kelp/dao/pool.h - sessions to one database for the threads of a server.
//
//     dao::CSessionPool pool("postgresql://nemgr@db1/inventory", password_options);
//     {
//         dao::CSessionPool::CLease session = pool.Lease();       // waits for at most max_wait_ms
//         if (!session) return session.GetStatus().GetErrCode();
//         session->Exec("UPDATE ne SET seen = now() WHERE id = $1", {17});
//     }                                                            // back in the pool
//
// thread-safe; a lease belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "kelp/dao/session.h"

namespace kelp::db {
class PoolCore;
}

namespace dao {

struct PoolOptions {
    std::size_t max_sessions = 8;  // 0 counts as 1; sqlite::memory: has exactly one
    int max_wait_ms = 5000;        // for a free session; 0: do not wait
    // A session that was unused for longer is asked whether it lives before it is handed out.
    int check_after_ms = 30000;
    SessionOptions session;
};

class KELP_API CSessionPool {
  public:
    class CLease;

    // Connects nothing yet: sessions are opened when they are first needed, on the thread
    // that needs them. `options.session` may hold the credentials. Throws only std::bad_alloc.
    explicit CSessionPool(std::string url, PoolOptions options = {});
    // Opens its sessions by calling `open` with `options.session`, for instance on a configured
    // database (OpenConfigured). It is called by any thread that leases, by several at once.
    using Opener = std::function<CExecStatus(CSqlSession&, SessionOptions)>;
    CSessionPool(Opener open, PoolOptions options = {});
    // Leases that are still out stay valid; their sessions are closed when they end.
    ~CSessionPool();
    CSessionPool(const CSessionPool&) = delete;
    CSessionPool& operator=(const CSessionPool&) = delete;

    // A session that is open, idle and was alive a moment ago. The newest of the free ones is
    // taken first. On failure the lease is false and its status says why: DAO_ERR_POOL_TIMEOUT
    // when none became free in time, otherwise what opening one gave. Does not throw.
    CLease Lease() noexcept;

    // Sessions that are out now, and open ones that wait.
    std::size_t LeasedCount() const noexcept;
    std::size_t IdleCount() const noexcept;

  private:
    std::shared_ptr<kelp::db::PoolCore> m_core;
};

// The use of one session. When it ends an open cursor is closed, a transaction that is still
// open is rolled back (with a warning in the log), and a session that broke is closed.
class KELP_API CSessionPool::CLease {
  public:
    CLease() noexcept = default;
    CLease(CLease&& other) noexcept = default;
    CLease& operator=(CLease&& other) noexcept;
    ~CLease();

    explicit operator bool() const noexcept { return m_session != nullptr; }
    // Only while the lease is true.
    CSqlSession& operator*() const noexcept { return *m_session; }
    CSqlSession* operator->() const noexcept { return m_session.get(); }
    const CExecStatus& GetStatus() const noexcept { return m_status; }
    // Ends it before its time. It is not an error if it has ended.
    void Return() noexcept;

  private:
    friend class CSessionPool;
    std::shared_ptr<kelp::db::PoolCore> m_core;
    std::unique_ptr<CSqlSession> m_session;
    CExecStatus m_status;
};

}  // namespace dao
