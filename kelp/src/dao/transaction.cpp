#include "dao/driver.h"

namespace dao {

CTransaction::CTransaction(CSqlSession& session, CSqlSession::Access access) noexcept
    : m_session(&session), m_status(session.Begin(access)) {
    if (!m_status.IsOk()) {
        m_session = nullptr;
    }
}

CTransaction::~CTransaction() {
    if (m_session != nullptr) {
        m_session->Rollback();
    }
}

CExecStatus CTransaction::Commit() noexcept {
    if (m_session == nullptr) {
        return kelp::db::Refusal(DAO_ERR_STATE, "the transaction is not open");
    }
    CExecStatus status = m_session->Commit();
    // Refused because a cursor is open: the transaction goes on.
    if (status.IsOk() || !m_session->InTransaction()) {
        m_session = nullptr;
    }
    return status;
}

CExecStatus CTransaction::Rollback() noexcept {
    if (m_session == nullptr) {
        return kelp::db::Refusal(DAO_ERR_STATE, "the transaction is not open");
    }
    CSqlSession* const session = std::exchange(m_session, nullptr);
    return session->Rollback();
}

}  // namespace dao
