// What all lines of the process share: the format, and who the process is. thread-safe,
// and the crash path may read it from a signal handler.
#pragma once

#include <unistd.h>

#include <atomic>

#include "kelp/log.h"

namespace kelp::log {

struct LineContext {
    Format format = Format::kText;
    unsigned process_id = 0;  // the platform's, 0: none, left out of text lines
    long pid = 0;
};

class ProcessContext {
  public:
    static LineContext Get() noexcept {
        return {s_format.load(std::memory_order_relaxed),
                s_process_id.load(std::memory_order_relaxed), Pid()};
    }
    static void Set(Format format, unsigned process_id) noexcept {
        s_format.store(format, std::memory_order_relaxed);
        s_process_id.store(process_id, std::memory_order_relaxed);
    }
    // The system's number of this process, without a system call in the common case.
    static long Pid() noexcept {
        long pid = s_pid.load(std::memory_order_relaxed);
        if (pid == 0) {
            pid = ::getpid();
            s_pid.store(pid, std::memory_order_relaxed);
        }
        return pid;
    }
    // A child of fork() is another process.
    static void ForgetPid() noexcept { s_pid.store(0, std::memory_order_relaxed); }

  private:
    static inline constinit std::atomic<Format> s_format{Format::kText};
    static inline constinit std::atomic<unsigned> s_process_id{0};
    static inline constinit std::atomic<long> s_pid{0};
};

}  // namespace kelp::log
