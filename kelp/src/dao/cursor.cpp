#include <algorithm>

#include "dao/core.h"

namespace kelp::db {

dao::CExecStatus Core::OpenCursor(const dao::CSqlID& id, std::string_view sql,
                                  std::shared_ptr<Prepared> statement, const dao::CParams& params,
                                  dao::CCursorTable& cursor) noexcept {
    cursor.Close();
    cursor.m_columns.clear();
    cursor.m_row.clear();
    cursor.m_has_next = false;
    cursor.m_status = Guarded(id, "cursor", [&]() -> dao::CExecStatus {
        dao::CExecStatus status = Ready("");
        if (!status.IsOk()) {
            return status;
        }
        const bool was_in = m_in_transaction;
        // The parameters must last as long as the cursor.
        m_cursor_params.assign(params.begin(), params.end());
        if (statement == nullptr) {
            status = Find(sql, false, statement);
        }
        m_cursor_deadline = Deadline();
        if (status.IsOk()) {
            status = m_driver->Start(*statement, m_cursor_params, m_cursor_deadline);
        }
        std::size_t octets = 0;
        Step first = Step::kFailed;
        if (status.IsOk()) {
            // Only with the first row is it known whether it runs at all, and its columns.
            first = m_driver->Fetch(cursor.m_next, octets);
            m_driver->Columns(cursor.m_columns);
            if (first != Step::kRow) {
                status = m_driver->Finish();
            }
        }
        if (first != Step::kRow) {
            Note(status, statement == nullptr ? "" : statement->first_word, was_in);
            return status;
        }
        m_cursor_id = id;
        m_cursor_started = m_now;
        m_cursor_in_transaction = was_in;
        m_cursor_statement = std::move(statement);
        m_cursor = ++m_last_ticket;
        cursor.m_ticket = m_cursor;
        cursor.m_has_next = true;
        cursor.m_core = shared_from_this();
        return status;
    });
    if (!cursor.m_status.IsOk()) {
        cursor.m_columns.clear();
    }
    return cursor.m_status;
}

bool Core::FetchCursor(dao::CCursorTable& cursor) noexcept {
    if (m_cursor == 0 || m_cursor != cursor.m_ticket) {
        cursor.m_status =
            Refusal(dao::DAO_ERR_ARGUMENT, "the session that the cursor belongs to was closed");
        return false;
    }
    Step step = Step::kFailed;
    const dao::CSqlID id = m_cursor_id;
    dao::CExecStatus status;
    try {
        std::size_t octets = 0;
        if (QuickNow() > m_cursor_deadline) {
            CloseCursor(cursor.m_ticket);
            status = Refusal(dao::DAO_ERR_TIMEOUT, "reading took longer than the time limit");
        } else {
            step = m_driver->Fetch(cursor.m_row, octets);
            if (step == Step::kRow) {
                return true;
            }
            m_cursor = 0;
            status = m_driver->Finish();
            Note(status, m_cursor_statement->first_word, m_cursor_in_transaction);
            m_cursor_statement = nullptr;
        }
    } catch (const std::bad_alloc&) {
        CloseCursor(cursor.m_ticket);
        status = Refusal(dao::DAO_ERR_NO_MEMORY, "out of memory");
    }
    Report(id, "cursor", status, m_cursor_started);
    cursor.m_status = status;
    return false;
}

void Core::CloseCursor(unsigned long long ticket) noexcept {
    if (m_cursor == 0 || m_cursor != ticket) {
        return;
    }
    m_cursor = 0;
    const dao::CExecStatus status = m_driver->Finish();
    Note(status, "", m_cursor_in_transaction);
    m_cursor_statement = nullptr;
    m_cursor_params.clear();
}

void Core::CloseAnyCursor() noexcept {
    CloseCursor(m_cursor);
}

}  // namespace kelp::db

namespace dao {

CCursorTable::CCursorTable() noexcept = default;
CCursorTable::CCursorTable(CCursorTable&& other) noexcept {
    *this = std::move(other);
}
CCursorTable& CCursorTable::operator=(CCursorTable&& other) noexcept {
    if (this != &other) {
        Close();
        m_core = std::move(other.m_core);
        m_columns = std::move(other.m_columns);
        m_row = std::move(other.m_row);
        m_next = std::move(other.m_next);
        m_status = std::move(other.m_status);
        m_ticket = other.m_ticket;
        m_has_next = std::exchange(other.m_has_next, false);
    }
    return *this;
}
CCursorTable::~CCursorTable() {
    Close();
}

bool CCursorTable::Fetch() noexcept {
    if (std::exchange(m_has_next, false)) {
        m_row.swap(m_next);
        return true;
    }
    if (m_core != nullptr && m_core->FetchCursor(*this)) {
        return true;
    }
    m_core = nullptr;
    m_row.clear();
    return false;
}

void CCursorTable::Close() noexcept {
    if (m_core != nullptr) {
        m_core->CloseCursor(m_ticket);
        m_core = nullptr;
    }
    m_row.clear();
    m_has_next = false;
}

const TEValue& CCursorTable::operator[](std::size_t column) const noexcept {
    static const TEValue empty;
    return column < m_row.size() ? m_row[column] : empty;
}

}  // namespace dao
