// Design notes. Two locks, always in this order: the output's, held while lines are
// written, and the queue's, held for a few instructions. Whoever holds the output's lock
// takes everything that waits and writes it, the writer's thread or a caller that cannot
// wait; so lines reach the output in the order of the queue, and a caller that has held
// the lock after posting knows that its line is out. Stopping: no line is taken from the
// moment m_open is false, the thread is joined, and what is left is written.

#include "log/writer.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "log/crash.h"
#include "log/standard_error.h"

namespace kelp::log {

bool Writer::Open(const Options& options) {
    const MutexLock output_lock(m_output_mutex);
    const bool opened = m_output.Open(options);
    const MutexLock lock(m_queue_mutex);
    m_max_lines = std::max<std::size_t>(options.queue_records, 1);
    m_max_bytes = options.queue_bytes;
    m_open = true;
    return opened;
}

void Writer::Close() {
    pthread_t thread{};
    bool has_thread = false;
    {
        const MutexLock lock(m_queue_mutex);
        m_open = false;
        has_thread = std::exchange(m_has_thread, false);
        thread = m_thread;
    }
    if (has_thread) {
        m_stop.store(true);
        Wake();
        ::pthread_join(thread, nullptr);
        m_stop.store(false);
    }
    const MutexLock lock(m_output_mutex);
    WriteWaiting();
    m_output.Close();
}

void Writer::Post(std::string line) {
    switch (Enqueue(line, true)) {
        case Enqueued::kBehindOthers:
            break;
        case Enqueued::kAsFirst:
            Wake();
            break;
        case Enqueued::kWithoutThread:
            Flush();
            break;
        case Enqueued::kNot:
            WriteLate(std::move(line));
            break;
    }
}

void Writer::PostAndWrite(std::string line) {
    if (Enqueue(line, false) == Enqueued::kNot) {
        WriteLate(std::move(line));
    } else {
        Flush();
    }
}

void Writer::Flush() {
    const MutexLock lock(m_output_mutex);
    WriteWaiting();
}

void Writer::WriteLate(std::string line) {
    line += '\n';
    WriteAll(STDERR_FILENO, line);
}

Writer::Enqueued Writer::Enqueue(std::string& line, bool droppable) {
    const MutexLock lock(m_queue_mutex);
    if (!m_open) {
        return Enqueued::kNot;
    }
    while (droppable && IsFullFor(line.size()) && DropOldest()) {
    }
    crash::Remember(++m_last_number, line);
    const bool first = m_waiting.empty();
    const std::size_t size = line.size();
    m_waiting.push_back({std::move(line), droppable});
    m_waiting_bytes += size;
    if (!droppable) {
        return Enqueued::kBehindOthers;
    }
    if (!StartThread()) {
        return Enqueued::kWithoutThread;
    }
    return first ? Enqueued::kAsFirst : Enqueued::kBehindOthers;
}

bool Writer::IsFullFor(std::size_t bytes) const {
    return m_waiting.size() >= m_max_lines || m_waiting_bytes + bytes > m_max_bytes;
}

// False when only lines wait that may not be dropped; their posters are about to write
// them, so there are no more of them than threads.
bool Writer::DropOldest() {
    const auto oldest = std::find_if(m_waiting.begin(), m_waiting.end(),
                                     [](const Line& line) { return line.droppable; });
    if (oldest == m_waiting.end()) {
        return false;
    }
    m_waiting_bytes -= oldest->text.size();
    m_waiting.erase(oldest);
    ++m_unreported;
    m_dropped.fetch_add(1, std::memory_order_relaxed);
    return true;
}

bool Writer::StartThread() {
    if (m_has_thread) {
        return true;
    }
    // The program's signals are for the program's threads.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    m_has_thread = ::pthread_create(&m_thread, nullptr, Run, this) == 0;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return m_has_thread;
}

void* Writer::Run(void* self) {
    auto& writer = *static_cast<Writer*>(self);
    ::pthread_setname_np(::pthread_self(), "kelp-log");
    while (!writer.m_stop.load()) {
        const std::uint32_t seen = writer.m_wakes.load();
        writer.Flush();
        writer.m_wakes.wait(seen);
    }
    return nullptr;
}

void Writer::Wake() noexcept {
    m_wakes.fetch_add(1);
    m_wakes.notify_all();
}

void Writer::WriteWaiting() {
    Lines lines;
    std::uint64_t dropped = 0;
    std::uint64_t last_number = 0;
    {
        const MutexLock lock(m_queue_mutex);
        lines.swap(m_waiting);
        m_waiting_bytes = 0;
        dropped = std::exchange(m_unreported, 0);
        last_number = m_last_number;
    }
    if (lines.empty()) {
        return;
    }
    if (dropped != 0) {
        try {
            lines.push_front({m_dropped_line(dropped), false});  // older than all that is left
        } catch (const std::bad_alloc&) {
            const MutexLock lock(m_queue_mutex);
            m_unreported += dropped;  // for the next time
        }
    }
    m_output.Write(lines);
    crash::MarkWritten(last_number);
}

void Writer::BeforeFork() {
    m_output_mutex.Lock();
    m_queue_mutex.Lock();
}

void Writer::AfterForkInParent() {
    m_queue_mutex.Unlock();
    m_output_mutex.Unlock();
}

void Writer::AfterForkInChild() {
    m_waiting.clear();
    m_waiting_bytes = 0;
    m_unreported = 0;
    m_has_thread = false;
    m_stop.store(false);
    crash::MarkWritten(m_last_number);
    AfterForkInParent();
}

}  // namespace kelp::log
