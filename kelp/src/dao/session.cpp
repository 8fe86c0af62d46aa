#include "kelp/dao/session.h"

#include "dao/core.h"
#include "dao/sql_text.h"

namespace dao {

SessionOptions::~SessionOptions() {
    kelp::db::Wipe(password);
}

CSqlSession::CSqlSession() : m_core(std::make_shared<kelp::db::Core>()), m_impl(m_core) {}

CSqlSession::~CSqlSession() {
    Close();
}

CExecStatus CSqlSession::Open(const std::string& url, SessionOptions options) noexcept {
    return m_core->Open(url, options);
}

void CSqlSession::Close() noexcept {
    m_core->Close();
}

bool CSqlSession::IsOpen() const noexcept {
    return m_core->IsOpen();
}

CExecStatus CSqlSession::Ping() noexcept {
    return m_core->Ping();
}

std::string CSqlSession::GetDatabase() const {
    return m_core->Where();
}

int CSqlSession::GetServerType() const noexcept {
    return m_core->ServerType();
}

CExecStatus CSqlSession::Exec(std::string_view sql, const CParams& params,
                              const CSqlID& id) noexcept {
    return m_core->Execute(id, SQL_ANY, sql, params, nullptr);
}

CExecResult CSqlSession::Query(std::string_view sql, const CParams& params,
                               const CSqlID& id) noexcept {
    CExecResult result;
    result.SetStatus(m_core->Execute(id, SQL_ANY, sql, params, &result));
    return result;
}

CExecStatus CSqlSession::ExecScript(std::string_view sql, const CSqlID& id) noexcept {
    return m_core->Script(id, sql);
}

CExecStatus CSqlSession::Prepare(std::string_view sql, CStatement& statement,
                                 const CSqlID& id) noexcept {
    statement = CStatement();
    CExecStatus status = m_core->Prepare(id, sql, statement.m_prepared);
    if (status.IsOk()) {
        statement.m_core = m_core;
        statement.m_id = id;
    }
    return status;
}

CExecStatus CSqlSession::OpenCursor(std::string_view sql, CCursorTable& cursor,
                                    const CParams& params, const CSqlID& id) noexcept {
    return m_core->OpenCursor(id, sql, nullptr, params, cursor);
}

CExecStatus CSqlSession::ExecStoredProc(const std::string& name, const CParams& params,
                                        const CSqlID& id) noexcept {
    return m_core->Procedure(id, name, params, nullptr);
}

CExecStatus CSqlSession::ExecStoredProc(const std::string& name, const CParams& params,
                                        CExecResult& result, const CSqlID& id) noexcept {
    CExecStatus status = m_core->Procedure(id, name, params, &result);
    result.SetStatus(status);
    return status;
}

CExecStatus CSqlSession::Begin(Access access) noexcept {
    return m_core->Begin(access);
}

CExecStatus CSqlSession::Commit() noexcept {
    return m_core->Commit();
}

CExecStatus CSqlSession::Rollback() noexcept {
    return m_core->Rollback();
}

bool CSqlSession::InTransaction() const noexcept {
    return m_core->InTransaction();
}

void CSqlSession::SetStatementTimeout(int milliseconds) noexcept {
    m_core->SetStatementTimeout(milliseconds);
}

}  // namespace dao

namespace impl_dao {

CSqlSession_Impl::CSqlSession_Impl(std::shared_ptr<kelp::db::Core> core) noexcept
    : m_core(std::move(core)) {}

CSqlSession_Impl::~CSqlSession_Impl() = default;

dao::CExecStatus CSqlSession_Impl::ExecSql_OnlyForFrame_Impl(const dao::CSqlID& id,
                                                             dao::SqlTypeEnum type,
                                                             const std::string& sql,
                                                             const dao::NoParamType&) noexcept {
    return m_core->Execute(id, type, sql, {}, nullptr);
}

dao::CExecStatus CSqlSession_Impl::ExecSql_OnlyForFrame_Impl(const dao::CSqlID& id,
                                                             dao::SqlTypeEnum type,
                                                             const std::string& sql,
                                                             const dao::NoParamType&,
                                                             dao::CExecResult& result) noexcept {
    dao::CExecStatus status = m_core->Execute(id, type, sql, {}, &result);
    result.SetStatus(status);
    return status;
}

dao::CExecStatus CSqlSession_Impl::ExecStoredProc_Impl(const dao::CSqlID& id,
                                                       const std::string& name,
                                                       const dao::NoParamType&,
                                                       dao::CExecResult& result) noexcept {
    dao::CExecStatus status = m_core->Procedure(id, name, {}, &result);
    result.SetStatus(status);
    return status;
}

}  // namespace impl_dao
