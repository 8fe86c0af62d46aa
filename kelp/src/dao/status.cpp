#include "kelp/dao/status.h"

#include <algorithm>

namespace dao {

CExecStatus::CExecStatus(int code, int native_code, std::string_view sql_state,
                         std::string text) noexcept
    : m_code(code), m_native_code(native_code), m_text(std::move(text)) {
    const std::size_t length = std::min(sql_state.size(), sizeof m_sql_state - 1);
    std::copy_n(sql_state.begin(), length, m_sql_state);
}

}  // namespace dao
