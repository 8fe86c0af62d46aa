// The platform logger: a process's records of what it did, on their way to a file,
// to standard error, or to sinks of the program's own.
//
//     kelp::log::Options options;                 // or nothing: see Options
//     options.file = "/var/log/nemgr.log";
//     LogProcess::Init(options);
//     LogProcess::Info("started", LocationInfo("main.cpp", "main", 12));
//     LogProcess::Error(0x42000030, "token refused", LocationInfo::getLocationUnavailable());
//     LogProcess::Destroy();
//
// thread-safe: every function may be called from any thread, before Init, after
// Destroy, from the destructors of static objects and in the child of a fork. In a signal
// handler only Reopen may be called.
//
// Debug and information records are queued and written by a thread of the logger; when
// it cannot keep up the oldest of them are dropped, and a line says how many. A warning
// or an error is on its way to the kernel, together with everything queued before it,
// when the call returns. Nothing here throws: a record that cannot be written to the
// file is written to standard error.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kelp/export.h"

// Where in the source a record was made: the source unit ("ftpapi.cpp"), the function
// and the line. immutable. The object keeps the two pointers, not the characters: pass
// literals, or texts that live longer than the object. A null pointer stands for "".
class LocationInfo {
  public:
    constexpr LocationInfo(const char* unit, const char* function, int line) noexcept
        : m_unit(unit == nullptr ? "" : unit),
          m_function(function == nullptr ? "" : function),
          m_line(line) {}

    // The location of a record whose place is unknown: both names "", line 0.
    static const LocationInfo& getLocationUnavailable() noexcept { return s_unavailable; }

    // The source unit; a unit is what a class is to callers that report classes.
    constexpr const char* getClassName() const noexcept { return m_unit; }
    constexpr const char* getMethodName() const noexcept { return m_function; }
    constexpr int getLine() const noexcept { return m_line; }

    // False for getLocationUnavailable() and whatever looks like it.
    constexpr bool IsAvailable() const noexcept {
        return *m_unit != '\0' || *m_function != '\0' || m_line != 0;
    }

  private:
    KELP_API static const LocationInfo s_unavailable;

    const char* m_unit;
    const char* m_function;
    int m_line;
};

namespace kelp::log {

// In rising order of urgency; kOff is a limit that no record reaches.
enum class Level : std::uint8_t { kDebug, kInfo, kWarn, kError, kOff };

enum class Format : std::uint8_t {
    kText,  // one readable line a record, control characters escaped
    kJson,  // one JSON object a line (see docs/logging.md), for a log shipper
};

// Where records go and which. Fields left alone hold what is used without a file.
struct Options {
    Level level = Level::kInfo;  // records below are not written (sinks: see AddSink)
    Format format = Format::kText;
    std::string file;                       // path; empty: standard error
    std::size_t rotate_bytes = 16U << 20U;  // a larger file is renamed to NAME.1.EXT; 0: never
    std::size_t rotate_files = 5;           // how many renamed files are kept
    std::size_t queue_records = 8192;       // waiting records, and
    std::size_t queue_bytes = 8U << 20U;    // their bytes, before the oldest are dropped
    unsigned process_id = 0;                // the platform's process identifier, 0: none

    // KELP_LOG_LEVEL (debug, info, warn, error, off), KELP_LOG_FILE, KELP_LOG_FORMAT
    // (text, json) and KELP_PROC_ID over the values above. What a variable does not
    // spell correctly is named on standard error and otherwise ignored.
    KELP_API static Options FromEnvironment();
};

// One record on its way to a sink. The text and the location live as long as the call.
struct Record {
    std::chrono::system_clock::time_point time;
    Level level;
    unsigned int code;      // of an error; 0 for the other levels
    std::string_view text;  // as it was passed, control characters and all
    const LocationInfo& location;
    long thread;  // the kernel's thread identifier
};

// Receives records. Write is called on the thread that logs, before the call of the
// logger returns, and from several threads at once: it locks for itself and returns
// soon. It may log: such records are written but go to no sink. What it throws is
// swallowed.
class KELP_API Sink {
  public:
    virtual ~Sink() = default;
    virtual void Write(const Record& record) = 0;
};

// From now on `sink` receives the records at `minimum` and above, whatever the level
// of the log is. The logger shares the sink until it is removed. A null sink is ignored;
// one that is there already changes its minimum.
KELP_API void AddSink(std::shared_ptr<Sink> sink, Level minimum = Level::kDebug) noexcept;

// No call of Write begins after this returns, except on threads that were delivering a
// record meanwhile. It is not an error if the sink is not there.
KELP_API void RemoveSink(const Sink* sink) noexcept;

// The lowest level that is written, now.
KELP_API Level GetLevel() noexcept;
KELP_API void SetLevel(Level level) noexcept;

// Returns when every record logged before on this thread is with the kernel.
KELP_API void Flush() noexcept;

// The file is closed and opened again by its name before the next line is written, as
// a program that renames log files expects. Async-signal-safe: a handler of SIGHUP may
// call it. It is not an error if the log is not a file.
KELP_API void Reopen() noexcept;

// How many records were dropped because the queue was full, since the process began.
KELP_API std::uint64_t Dropped() noexcept;

// Opt-in: on SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT the lines that still wait are
// written with write(2) (the newest 256, each cut at 1023 bytes) behind a line that
// names the signal, and the signal then does what it did before. Result: false when the
// system refuses a handler. Installing it again changes nothing.
KELP_API bool InstallCrashHandler() noexcept;

}  // namespace kelp::log

// The process's log. See the top of this file.
class LogProcess {
  public:
    // Replaces what is configured, now or by the environment, and starts the logger (also
    // after Destroy). Result: false when the file cannot be opened; standard error then
    // names it and receives the records until the file opens (it is tried again every
    // second). A program that never calls it has Options::FromEnvironment().
    KELP_API static bool Init(const kelp::log::Options& options) noexcept;

    KELP_API static void Debug(std::string_view text, const LocationInfo& where) noexcept;
    KELP_API static void Info(std::string_view text, const LocationInfo& where) noexcept;
    KELP_API static void Warn(std::string_view text, const LocationInfo& where) noexcept;
    KELP_API static void Error(unsigned int code, std::string_view text,
                               const LocationInfo& where) noexcept;

    // Writes what waits, ends the logger's thread and closes the file. Records that come
    // later go to standard error at once; sinks keep receiving. It is not an error to
    // call it twice. A process that ends by return from main or by exit() without it has
    // the same done for it.
    KELP_API static void Destroy() noexcept;
};

namespace KELPcommon {

// The process's trace: while it is started, every record, whatever the level of the log,
// is also appended to a file as one JSON object a line, for a look at one process at
// work without changing what its log holds. thread-safe.
class TraceClient {
  public:
    // Opens (creates, appends to) `path`, readable by its owner only, and traces records
    // at `minimum` and above into it; a trace that runs is ended first. Result: 0 or the
    // system's error number.
    KELP_API static int Start(const std::string& path,
                              kelp::log::Level minimum = kelp::log::Level::kDebug) noexcept;

    // Ends the trace and closes the file. It is not an error if none is started.
    KELP_API static void Destroy() noexcept;
};

}  // namespace KELPcommon
