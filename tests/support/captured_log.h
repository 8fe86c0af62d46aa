// Collects what is logged while it exists, from every thread.
//
//     CapturedLog log;
//     Run();
//     EXPECT_THAT(log.Texts(), ElementsAre("[Frame]port is missing"));
//     ASSERT_TRUE(log.WaitFor("connected", std::chrono::seconds(10)));
//
// thread-safe.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/log.h"

class CapturedLog {
  public:
    struct Entry {
        kelp::log::Level level;
        unsigned int code;
        std::string text;
        std::string unit;
        std::string function;
        int line;
        long thread;
    };

    // Records at `minimum` and above, whatever the level of the log is.
    explicit CapturedLog(kelp::log::Level minimum = kelp::log::Level::kDebug)
        : m_store(std::make_shared<Store>()) {
        kelp::log::AddSink(m_store, minimum);
    }
    ~CapturedLog() { kelp::log::RemoveSink(m_store.get()); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // What was captured so far, oldest first.
    std::vector<Entry> Entries() const {
        const std::lock_guard<std::mutex> lock(m_store->mutex);
        return m_store->entries;
    }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (Entry& entry : Entries()) {
            texts.push_back(std::move(entry.text));
        }
        return texts;
    }
    // Only those of one level.
    std::vector<std::string> Texts(kelp::log::Level level) const {
        std::vector<std::string> texts;
        for (Entry& entry : Entries()) {
            if (entry.level == level) {
                texts.push_back(std::move(entry.text));
            }
        }
        return texts;
    }
    // Whether a captured text contains `part`, and how many do.
    bool Contains(std::string_view part) const { return Count(part) != 0; }
    std::size_t Count(std::string_view part) const {
        const std::lock_guard<std::mutex> lock(m_store->mutex);
        return m_store->Count(part);
    }
    void Clear() {
        const std::lock_guard<std::mutex> lock(m_store->mutex);
        m_store->entries.clear();
    }

    // Waits until a captured text contains `part`, also one that is there already; false
    // when the time is over first.
    bool WaitFor(std::string_view part,
                 std::chrono::milliseconds time_limit = std::chrono::seconds(30)) const {
        return WaitForCount(part, 1, time_limit);
    }
    bool WaitForCount(std::string_view part, std::size_t count,
                      std::chrono::milliseconds time_limit = std::chrono::seconds(30)) const {
        std::unique_lock<std::mutex> lock(m_store->mutex);
        return m_store->added.wait_for(lock, time_limit,
                                       [&] { return m_store->Count(part) >= count; });
    }

  private:
    struct Store : kelp::log::Sink {
        void Write(const kelp::log::Record& record) override {
            const std::lock_guard<std::mutex> lock(mutex);
            entries.push_back({record.level, record.code, std::string(record.text),
                               record.location.getClassName(), record.location.getMethodName(),
                               record.location.getLine(), record.thread});
            added.notify_all();
        }
        std::size_t Count(std::string_view part) const {
            return static_cast<std::size_t>(std::count_if(
                entries.begin(), entries.end(),
                [&](const Entry& entry) { return entry.text.find(part) != std::string::npos; }));
        }

        mutable std::mutex mutex;
        std::condition_variable added;
        std::vector<Entry> entries;
    };

    std::shared_ptr<Store> m_store;
};
