#include "log/sinks.h"

#include <algorithm>
#include <utility>

namespace kelp::log {

namespace {
thread_local bool t_delivering = false;
}

void SinkList::Replace(Entries entries) {
    Level minimum = Level::kOff;
    for (const Entry& entry : entries) {
        minimum = std::min(minimum, entry.minimum);
    }
    m_entries = std::make_shared<Entries>(std::move(entries));
    s_minimum.store(minimum, std::memory_order_relaxed);
}

void SinkList::Add(std::shared_ptr<Sink> sink, Level minimum) {
    if (sink == nullptr) {
        return;
    }
    const MutexLock lock(m_mutex);
    Entries entries = *m_entries;
    const auto same = std::find_if(entries.begin(), entries.end(),
                                   [&](const Entry& entry) { return entry.sink == sink; });
    if (same != entries.end()) {
        same->minimum = minimum;
    } else {
        entries.push_back({std::move(sink), minimum});
    }
    Replace(std::move(entries));
}

void SinkList::Remove(const Sink* sink) {
    std::shared_ptr<const Entries> before;  // a sink's destructor runs without the lock
    const MutexLock lock(m_mutex);
    before = m_entries;
    Entries entries = *m_entries;
    std::erase_if(entries, [&](const Entry& entry) { return entry.sink.get() == sink; });
    Replace(std::move(entries));
}

void SinkList::Deliver(const Record& record) {
    if (t_delivering) {
        return;
    }
    std::shared_ptr<const Entries> entries;
    {
        const MutexLock lock(m_mutex);
        entries = m_entries;
    }
    t_delivering = true;
    for (const Entry& entry : *entries) {
        if (record.level < entry.minimum) {
            continue;
        }
        try {
            entry.sink->Write(record);
        } catch (...) {
            // A sink's failure is its own: the other sinks and the log still get the record.
        }
    }
    t_delivering = false;
}

}  // namespace kelp::log
