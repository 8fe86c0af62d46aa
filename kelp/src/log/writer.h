// Brings lines to the output in the order they were posted: a bounded queue, a thread
// that empties it, and a way past the thread for lines that must not wait. thread-safe.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "base/mutex.h"
#include "kelp/log.h"
#include "log/output.h"

namespace kelp::log {

class Writer {
  public:
    // Makes the line that stands in for so many dropped ones.
    using DroppedLine = std::string (*)(std::uint64_t count);
    explicit Writer(DroppedLine dropped_line) : m_dropped_line(dropped_line) {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // Calls of Open and Close are serialised by the caller.
    bool Open(const Options& options) KELP_EXCLUDES(m_output_mutex, m_queue_mutex);
    // Writes what waits. Lines posted later go to standard error at once.
    void Close() KELP_EXCLUDES(m_output_mutex, m_queue_mutex);

    // Queues the line for the thread, at the cost of the oldest ones when the queue is full.
    void Post(std::string line) KELP_EXCLUDES(m_output_mutex, m_queue_mutex);
    // Returns when the line, and what was posted before it, is written.
    void PostAndWrite(std::string line) KELP_EXCLUDES(m_output_mutex, m_queue_mutex);
    // Returns when what was posted before is written.
    void Flush() KELP_EXCLUDES(m_output_mutex, m_queue_mutex);

    std::uint64_t Dropped() const noexcept { return m_dropped.load(std::memory_order_relaxed); }

    // Around fork(): the child has the locks free, an empty queue (the parent writes what
    // waited) and no thread, which starts again with the next line.
    void BeforeFork() KELP_UNCHECKED_LOCKS;
    void AfterForkInParent() KELP_UNCHECKED_LOCKS;
    void AfterForkInChild() KELP_UNCHECKED_LOCKS;

  private:
    enum class Enqueued {
        kNot,            // closed: the line is still the caller's
        kAsFirst,        // the thread has to be woken
        kBehindOthers,   // whoever brought them has seen to it
        kWithoutThread,  // none could be started: the caller has to write
    };

    static void* Run(void* self);
    static void WriteLate(std::string line);
    Enqueued Enqueue(std::string& line, bool droppable) KELP_EXCLUDES(m_queue_mutex);
    bool IsFullFor(std::size_t bytes) const KELP_REQUIRES(m_queue_mutex);
    bool DropOldest() KELP_REQUIRES(m_queue_mutex);
    bool StartThread() KELP_REQUIRES(m_queue_mutex);
    void WriteWaiting() KELP_REQUIRES(m_output_mutex) KELP_EXCLUDES(m_queue_mutex);
    void Wake() noexcept;

    const DroppedLine m_dropped_line;
    std::atomic<std::uint64_t> m_dropped{0};

    Mutex m_output_mutex KELP_ACQUIRED_BEFORE(m_queue_mutex);
    Output m_output KELP_GUARDED_BY(m_output_mutex);

    Mutex m_queue_mutex;
    Lines m_waiting KELP_GUARDED_BY(m_queue_mutex);
    std::size_t m_waiting_bytes KELP_GUARDED_BY(m_queue_mutex) = 0;
    std::size_t m_max_lines KELP_GUARDED_BY(m_queue_mutex) = 0;
    std::size_t m_max_bytes KELP_GUARDED_BY(m_queue_mutex) = 0;
    std::uint64_t m_unreported KELP_GUARDED_BY(m_queue_mutex) = 0;
    std::uint64_t m_last_number KELP_GUARDED_BY(m_queue_mutex) = 0;
    bool m_open KELP_GUARDED_BY(m_queue_mutex) = false;
    bool m_has_thread KELP_GUARDED_BY(m_queue_mutex) = false;
    pthread_t m_thread KELP_GUARDED_BY(m_queue_mutex){};

    // Counts wake-ups; the thread sleeps on its value. An atomic rather than a condition
    // variable, which would remember a sleeper that a fork took away.
    std::atomic<std::uint32_t> m_wakes{0};
    std::atomic<bool> m_stop{false};
};

}  // namespace kelp::log
