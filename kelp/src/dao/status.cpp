#include "kelp/dao/status.h"

#include <algorithm>
#include <new>

namespace dao {

CExecStatus::CExecStatus(int code, int native_code, std::string_view sql_state,
                         std::string text) noexcept
    : m_code(code), m_native_code(native_code) {
    const std::size_t length = std::min(sql_state.size(), sizeof m_sql_state - 1);
    std::copy_n(sql_state.begin(), length, m_sql_state);
    try {
        m_text = std::make_shared<const std::string>(std::move(text));
    } catch (const std::bad_alloc&) {
        m_text = nullptr;  // the code says enough
    }
}

const std::string& CExecStatus::GetErrText() const noexcept {
    static const std::string none;
    return m_text == nullptr ? none : *m_text;
}

}  // namespace dao
