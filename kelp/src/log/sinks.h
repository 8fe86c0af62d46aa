// The sinks of the program. thread-safe.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "base/mutex.h"
#include "kelp/log.h"

namespace kelp::log {

class SinkList {
  public:
    void Add(std::shared_ptr<Sink> sink, Level minimum) KELP_EXCLUDES(m_mutex);
    void Remove(const Sink* sink) KELP_EXCLUDES(m_mutex);

    // Whether some sink of the process's one list wants records of this level.
    static bool SomeWant(Level level) noexcept {
        return level >= s_minimum.load(std::memory_order_relaxed);
    }

    // Hands the record to the sinks that want it, on this thread and without a lock. A
    // record that a sink logs meanwhile, on the same thread, goes to none.
    void Deliver(const Record& record) KELP_EXCLUDES(m_mutex);

    void BeforeFork() KELP_UNCHECKED_LOCKS { m_mutex.Lock(); }
    void AfterFork() KELP_UNCHECKED_LOCKS { m_mutex.Unlock(); }

  private:
    struct Entry {
        std::shared_ptr<Sink> sink;
        Level minimum;
    };
    using Entries = std::vector<Entry>;

    void Replace(Entries entries) KELP_REQUIRES(m_mutex);

    // Static, so that a record that nobody wants is turned away without a look at the list.
    static inline constinit std::atomic<Level> s_minimum{Level::kOff};

    Mutex m_mutex;
    // Never changed, only replaced: a delivery keeps the one it began with.
    std::shared_ptr<const Entries> m_entries KELP_GUARDED_BY(m_mutex) = std::make_shared<Entries>();
};

}  // namespace kelp::log
