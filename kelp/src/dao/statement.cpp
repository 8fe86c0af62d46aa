#include "dao/core.h"

namespace dao {

namespace {

CExecStatus NotPrepared() {
    return kelp::db::Refusal(DAO_ERR_ARGUMENT, "the statement is not prepared");
}

}  // namespace

CStatement::CStatement() noexcept = default;
CStatement::CStatement(CStatement&&) noexcept = default;
CStatement& CStatement::operator=(CStatement&&) noexcept = default;
CStatement::~CStatement() = default;

CExecStatus CStatement::Exec(const CParams& params) noexcept {
    return m_core == nullptr ? NotPrepared() : m_core->Execute(m_id, m_prepared, params, nullptr);
}

CExecResult CStatement::Query(const CParams& params) noexcept {
    CExecResult result;
    result.SetStatus(m_core == nullptr ? NotPrepared()
                                       : m_core->Execute(m_id, m_prepared, params, &result));
    return result;
}

CExecStatus CStatement::OpenCursor(CCursorTable& cursor, const CParams& params) noexcept {
    return m_core == nullptr ? NotPrepared()
                             : m_core->OpenCursor(m_id, "", m_prepared, params, cursor);
}

}  // namespace dao
