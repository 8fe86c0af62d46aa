// The statements that a session has prepared, by their text; the least used go first. one thread.
#pragma once

#include <list>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "dao/driver.h"

namespace kelp::db {

class StatementCache {
  public:
    void SetCapacity(std::size_t capacity) { m_capacity = capacity; }

    // Null when there is none of that text.
    std::shared_ptr<Prepared> Find(std::string_view sql);
    void Add(std::shared_ptr<Prepared> statement);
    void Clear() noexcept;

  private:
    using Order = std::list<std::shared_ptr<Prepared>>;  // the latest used first

    std::size_t m_capacity = 0;
    Order m_order;
    std::unordered_map<std::string_view, Order::iterator> m_places;  // keys lie in the statements
};

}  // namespace kelp::db
