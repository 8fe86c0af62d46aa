// Several statements in one call, and stored procedures, which on SQLite are such texts.

#include <algorithm>

#include "dao/core.h"

namespace kelp::db {

namespace {

constexpr std::size_t kMostKnownProcedures = 256;

}  // namespace

// The statements of `sql` one after the other, each with those of the parameters that it uses.
dao::CExecStatus Core::RunParts(std::string_view sql, const dao::CParams& params,
                                dao::CExecResult* result) {
    dao::CExecStatus status;
    int parameters = 0;
    while (!sql.empty()) {
        std::shared_ptr<Prepared> part;
        std::size_t used = 0;
        const bool was_in = m_in_transaction;
        dao::CExecStatus prepared = m_driver->Prepare(sql, &used, part);
        if (!prepared.IsOk()) {
            Note(prepared, "", was_in);
            return prepared;
        }
        sql.remove_prefix(used == 0 ? sql.size() : used);
        if (part == nullptr) {
            continue;
        }
        part->may_use_fewer = true;
        parameters = std::max(parameters, part->parameters);
        dao::CExecResult rows;
        status = Run(*part, params, result == nullptr ? nullptr : &rows);
        if (!status.IsOk()) {
            return status;
        }
        if (rows.GetColumnCount() > 0) {
            *result = std::move(rows);
        }
    }
    return static_cast<std::size_t>(parameters) == params.size()
               ? status
               : Refusal(dao::DAO_ERR_ARGUMENT, "it has " + std::to_string(parameters) +
                                                    " parameters, not " +
                                                    std::to_string(params.size()));
}

dao::CExecStatus Core::AllOrNothing(std::string_view sql, const dao::CParams& params,
                                    dao::CExecResult* result) {
    if (m_in_transaction) {
        dao::CExecStatus status = Ready("");
        return status.IsOk() ? RunParts(sql, params, result) : status;
    }
    dao::CExecStatus status =
        RunText(m_driver->BeginSql(dao::CSqlSession::Access::kWrite), {}, nullptr);
    if (!status.IsOk()) {
        return status;
    }
    status = RunParts(sql, params, result);
    if (!status.IsOk()) {
        static_cast<void>(EndTransaction("ROLLBACK"));
        return status;
    }
    const dao::CExecStatus committed = CommitNow();
    return committed.IsOk() ? status : committed;
}

dao::CExecStatus Core::Script(const dao::CSqlID& id, std::string_view sql) noexcept {
    return Guarded(id, "script", [&]() -> dao::CExecStatus {
        dao::CExecStatus status = Ready("");
        if (!status.IsOk()) {
            return status;
        }
        if (!m_driver->ScriptIsOneCall()) {
            return AllOrNothing(sql, {}, nullptr);
        }
        if (sql.find('\0') != std::string_view::npos) {
            return Refusal(dao::DAO_ERR_ARGUMENT, "the script has a zero byte");
        }
        const bool was_in = m_in_transaction;
        status = m_driver->Script(sql, Deadline());
        m_cache.Clear();  // it may have changed tables
        Note(status, "", was_in);
        return status;
    });
}

dao::CExecStatus Core::FindProcedure(const std::string& name, std::size_t parameters,
                                     ProcedureCall& call) {
    if (name.empty() || name.find('\0') != std::string::npos) {
        return Refusal(dao::DAO_ERR_NO_PROCEDURE, "a stored procedure's name is missing");
    }
    const bool was_in = m_in_transaction;
    dao::CExecStatus status = m_driver->FindProcedure(name, parameters, Deadline(), call);
    Note(status, "", was_in);
    return status;
}

dao::CExecStatus Core::CallProcedure(const std::string& name, const dao::CParams& params,
                                     dao::CExecResult* result) {
    // What a file's table holds may be changed by anybody at any time; what a server knows is
    // looked up once, and anew when the server does not know it any more.
    const std::string key = name + "/" + std::to_string(params.size());
    const auto known = m_procedures.find(key);
    ProcedureCall call;
    if (known != m_procedures.end()) {
        call = known->second;
    } else {
        dao::CExecStatus status = FindProcedure(name, params.size(), call);
        if (!status.IsOk()) {
            return status;
        }
        if (!call.is_script) {
            if (m_procedures.size() >= kMostKnownProcedures) {
                m_procedures.clear();
            }
            m_procedures.emplace(key, call);
        }
    }
    dao::CExecResult* const rows = call.returns_rows ? result : nullptr;
    dao::CExecStatus status =
        call.is_script ? AllOrNothing(call.sql, params, rows) : RunText(call.sql, params, rows);
    if (status.GetErrCode() == dao::DAO_ERR_SYNTAX) {
        m_procedures.erase(key);  // dropped or made anew in another form, perhaps
    }
    if (call.is_script && status.GetErrCode() == dao::DAO_ERR_ARGUMENT) {
        return Refusal(dao::DAO_ERR_NO_PROCEDURE,
                       "stored procedure " + name + ": " + status.GetErrText());
    }
    return status;
}

dao::CExecStatus Core::Procedure(const dao::CSqlID& id, const std::string& name,
                                 const dao::CParams& params, dao::CExecResult* result) noexcept {
    if (result != nullptr) {
        result->Clear();
    }
    return Guarded(id, "procedure", [&]() -> dao::CExecStatus {
        dao::CExecStatus status = Ready("");
        return status.IsOk() ? CallProcedure(name, params, result) : status;
    });
}

}  // namespace kelp::db
