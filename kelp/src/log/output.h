// Where lines end up: a rotating file, or standard error, also when the file fails.
// thread-compatible, and there is one: its static functions may be called from anywhere.
#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <string>

#include "kelp/log.h"

namespace kelp::log {

class FileOutput;

// A line on its way, and whether it may be dropped while it waits.
struct Line {
    std::string text;
    bool droppable;
};
using Lines = std::deque<Line>;

class Output {
  public:
    Output();
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Takes the file of `options`; without one lines go to standard error. False when
    // the file cannot be opened.
    bool Open(const Options& options);
    // Back to standard error.
    void Close();

    // The lines are with the kernel when this returns. Those of a batch that the file
    // did not take whole go to standard error, all of them: rather twice than never.
    void Write(const Lines& lines);

    // The next Write opens the file anew. Async-signal-safe.
    static void RequestReopen() noexcept { s_reopen.store(true, std::memory_order_relaxed); }

    // The open file's descriptor or standard error's. Async-signal-safe.
    static int Descriptor() noexcept;

  private:
    bool OpenFile();
    void Fail(const char* why);
    bool FileIsUsable();

    Options m_options;
    std::unique_ptr<FileOutput> m_file;  // null: standard error, for now or for good
    std::chrono::steady_clock::time_point m_retry;
    static inline constinit std::atomic<bool> s_reopen{false};
};

}  // namespace kelp::log
