// Design notes. The lock guards the counts and the free sessions, never a call to a database:
// a thread that opens or checks a session has taken its place first. Whoever gives a place up
// wakes one that waits.

#include "kelp/dao/pool.h"

#include <algorithm>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "dao/driver.h"
#include "kelp/log.h"

namespace kelp::db {

class PoolCore {
  public:
    PoolCore(dao::CSessionPool::Opener open, dao::PoolOptions options)
        : m_open(std::move(open)), m_options(std::move(options)) {
        if (m_options.max_sessions == 0) {
            m_options.max_sessions = 1;
        }
    }

    // The session of a lease that ends, or null when none could be opened.
    void GiveBack(std::unique_ptr<dao::CSqlSession> session) KELP_EXCLUDES(m_mutex);
    // Makes what Take gave a session that lives.
    dao::CExecStatus MakeReady(std::unique_ptr<dao::CSqlSession>& session, bool idle_for_long);
    void Stop() KELP_EXCLUDES(m_mutex);

    std::size_t Leased() KELP_EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        return m_leased;
    }
    std::size_t Idle() KELP_EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        return m_free.size();
    }
    dao::CExecStatus Lease(std::unique_ptr<dao::CSqlSession>& session);

  private:
    struct Free {
        std::unique_ptr<dao::CSqlSession> session;
        std::int64_t since;
    };

    const dao::CSessionPool::Opener m_open;
    dao::PoolOptions m_options;

    Mutex m_mutex;
    CondVar m_freed;
    std::vector<Free> m_free KELP_GUARDED_BY(m_mutex);  // the newest last
    std::size_t m_leased KELP_GUARDED_BY(m_mutex) = 0;
    bool m_stopped KELP_GUARDED_BY(m_mutex) = false;
};

dao::CExecStatus PoolCore::Lease(std::unique_ptr<dao::CSqlSession>& session) {
    bool unsure = false;
    {
        const std::int64_t deadline =
            base::SystemMonotonicNs() + m_options.max_wait_ms * base::kMillisecond;
        const MutexLock lock(m_mutex);
        while (m_leased >= m_options.max_sessions) {
            const std::int64_t left = deadline - base::SystemMonotonicNs();
            if (left <= 0) {
                return Refusal(dao::DAO_ERR_POOL_TIMEOUT,
                               "all " + std::to_string(m_options.max_sessions) +
                                   " sessions of the pool are in use");
            }
            m_freed.WaitUntil(m_mutex, base::RealPointAfter(left));
        }
        ++m_leased;
        if (!m_free.empty()) {
            session = std::move(m_free.back().session);
            unsure = base::SystemMonotonicNs() - m_free.back().since >=
                     m_options.check_after_ms * base::kMillisecond;
            m_free.pop_back();
        }
    }
    dao::CExecStatus status;
    try {
        status = MakeReady(session, unsure);
    } catch (const std::bad_alloc&) {
        status = Refusal(dao::DAO_ERR_NO_MEMORY, "out of memory");
    }
    if (!status.IsOk()) {
        GiveBack(nullptr);
        session = nullptr;
    }
    return status;
}

dao::CExecStatus PoolCore::MakeReady(std::unique_ptr<dao::CSqlSession>& session,
                                     bool idle_for_long) {
    if (session != nullptr && (!idle_for_long || session->Ping().IsOk())) {
        return {};
    }
    session = std::make_unique<dao::CSqlSession>();
    return m_open(*session, m_options.session);
}

void PoolCore::GiveBack(std::unique_ptr<dao::CSqlSession> session) {
    if (session != nullptr) {
        if (session->InTransaction()) {
            LogProcess::Warn("[dao] " + session->GetDatabase() +
                                 ": a transaction was open when its session went back to the "
                                 "pool: rolled back",
                             LocationInfo("dao", "", 0));
        }
        if (!session->Rollback().IsOk() || !session->IsOpen()) {
            session = nullptr;
        } else {
            session->SetStatementTimeout(m_options.session.statement_timeout_ms);
        }
    }
    const MutexLock lock(m_mutex);
    --m_leased;
    if (session != nullptr && !m_stopped) {
        m_free.push_back({std::move(session), base::SystemMonotonicNs()});
    }
    m_freed.NotifyOne();
}

void PoolCore::Stop() {
    std::vector<Free> free;
    const MutexLock lock(m_mutex);
    m_stopped = true;
    free.swap(m_free);
}

}  // namespace kelp::db

namespace dao {

namespace {

PoolOptions For(const std::string& url, PoolOptions options) {
    // A database in memory belongs to its one session.
    if (url == "sqlite::memory:") {
        options.max_sessions = 1;
    }
    return options;
}

}  // namespace

CSessionPool::CSessionPool(std::string url, PoolOptions options)
    : CSessionPool(
          [url](CSqlSession& session, SessionOptions session_options) {
              return session.Open(url, std::move(session_options));
          },
          For(url, std::move(options))) {}

CSessionPool::CSessionPool(Opener open, PoolOptions options)
    : m_core(std::make_shared<kelp::db::PoolCore>(std::move(open), std::move(options))) {}

CSessionPool::~CSessionPool() {
    m_core->Stop();
}

CSessionPool::CLease CSessionPool::Lease() noexcept {
    CLease lease;
    lease.m_status = m_core->Lease(lease.m_session);
    if (lease.m_session != nullptr) {
        lease.m_core = m_core;
    }
    return lease;
}

std::size_t CSessionPool::LeasedCount() const noexcept {
    return m_core->Leased();
}

std::size_t CSessionPool::IdleCount() const noexcept {
    return m_core->Idle();
}

CSessionPool::CLease& CSessionPool::CLease::operator=(CLease&& other) noexcept {
    if (this != &other) {
        Return();
        m_core = std::move(other.m_core);
        m_session = std::move(other.m_session);
        m_status = std::move(other.m_status);
    }
    return *this;
}

CSessionPool::CLease::~CLease() {
    Return();
}

void CSessionPool::CLease::Return() noexcept {
    if (m_session != nullptr) {
        m_core->GiveBack(std::move(m_session));
        m_core = nullptr;
    }
}

}  // namespace dao
