#include "frameutil/sql.h"

namespace FrameUtil {

namespace {

constexpr const char* kSource = "sqlmanager.cpp";

int NoSession(dao::CExecResult* result) noexcept {
    const dao::CExecStatus status(dao::DAO_ERR_ARGUMENT, 0, "", "no session");
    if (result != nullptr) {
        result->Clear();
        result->SetStatus(status);
    }
    return status.GetErrCode();
}

}  // namespace

int TESqlManager::ExecSql(const std::string& sql) noexcept {
    if (m_pSession == nullptr) {
        return NoSession(nullptr);
    }
    return m_pSession->GetImpl()
        ->ExecSql_OnlyForFrame_Impl(dao::AutoAssembleSqlID(kSource, "ExecSql", 29), dao::SQL_ANY,
                                    sql, dao::NoParamType())
        .GetErrCode();
}

int TESqlManager::ExecSql(const CStdString& sql) noexcept {
    return ExecSql(static_cast<const std::string&>(sql));
}

int TESqlManager::ExecSql(const std::string& sql, dao::CExecResult& result) noexcept {
    if (m_pSession == nullptr) {
        return NoSession(&result);
    }
    return m_pSession->GetImpl()
        ->ExecSql_OnlyForFrame_Impl(dao::AutoAssembleSqlID(kSource, "ExecSql", 35), dao::SQL_ANY,
                                    sql, dao::NoParamType(), result)
        .GetErrCode();
}

int TESqlManager::ExecProc(const std::string& name) noexcept {
    return m_pSession == nullptr ? NoSession(nullptr)
                                 : m_pSession->ExecStoredProc(name).GetErrCode();
}

int TESqlManager::ExecProc(const std::string& name, dao::CExecResult& result,
                           bool withRows) noexcept {
    if (m_pSession == nullptr) {
        return NoSession(&result);
    }
    if (withRows) {
        return m_pSession->GetImpl()
            ->ExecStoredProc_Impl(dao::CSqlID(), name, dao::NoParamType(), result)
            .GetErrCode();
    }
    result.Clear();
    result.SetStatus(m_pSession->ExecStoredProc(name));
    return result.GetErrCode();
}

}  // namespace FrameUtil
