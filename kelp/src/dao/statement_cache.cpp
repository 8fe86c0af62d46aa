#include "dao/statement_cache.h"

namespace kelp::db {

std::shared_ptr<Prepared> StatementCache::Find(std::string_view sql) {
    const auto place = m_places.find(sql);
    if (place == m_places.end()) {
        return nullptr;
    }
    m_order.splice(m_order.begin(), m_order, place->second);
    return m_order.front();
}

void StatementCache::Add(std::shared_ptr<Prepared> statement) {
    if (m_capacity == 0 || m_places.count(statement->sql) != 0) {
        return;
    }
    while (m_order.size() >= m_capacity) {
        m_places.erase(m_order.back()->sql);
        m_order.pop_back();
    }
    m_order.push_front(std::move(statement));
    m_places.emplace(m_order.front()->sql, m_order.begin());
}

void StatementCache::Clear() noexcept {
    m_places.clear();
    m_order.clear();
}

}  // namespace kelp::db
