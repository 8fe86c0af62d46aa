// Design notes. The logger is one object that is made by its first user and never
// destroyed, so that it is there for every thread and every destructor. Its states:
// fresh (the first record opens it with the environment's options), running, stopped
// (records go to standard error). A record's way takes no lock of this file: the level
// and how lines look are atomics, the sinks and the writer lock for themselves.

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "base/mutex.h"
#include "kelp/log.h"
#include "log/context.h"
#include "log/crash.h"
#include "log/render.h"
#include "log/sinks.h"
#include "log/standard_error.h"
#include "log/writer.h"

constinit const LocationInfo LocationInfo::s_unavailable{"", "", 0};

namespace kelp::log {

namespace {

// Everything, until the options are known: the first record looks them up.
constinit std::atomic<Level> g_level{Level::kDebug};

class Logger {
  public:
    static Logger& Get() {
        static Logger& logger = *new Logger;
        return logger;
    }

    bool Start(const Options& options) KELP_EXCLUDES(m_mutex);
    void Stop() KELP_EXCLUDES(m_mutex);
    // Makes sure that the options are known.
    void EnsureStarted() KELP_EXCLUDES(m_mutex);
    void Log(Level level, unsigned code, std::string_view text, const LocationInfo& where);

    SinkList& Sinks() { return m_sinks; }
    Writer& Lines() { return m_writer; }

  private:
    enum class State { kFresh, kRunning, kStopped };

    Logger();
    bool Open(const Options& options) KELP_REQUIRES(m_mutex);

    static void BeforeFork() KELP_UNCHECKED_LOCKS;
    static void AfterForkInParent() KELP_UNCHECKED_LOCKS;
    static void AfterForkInChild() KELP_UNCHECKED_LOCKS;

    Mutex m_mutex;
    std::atomic<State> m_state{State::kFresh};  // changed under m_mutex
    SinkList m_sinks;
    Writer m_writer;
};

// Made while the program is loaded, as a rule by one thread: a fork in the middle of its
// making would leave the child with half a logger and nobody to finish it.
[[maybe_unused]] Logger& g_logger = Logger::Get();

long ThreadId() {
    const long pid = ProcessContext::Pid();
    thread_local long t_owner = 0;  // the process that looked: a child has its own threads
    thread_local long t_thread = 0;
    if (t_owner != pid) {
        t_thread = ::syscall(SYS_gettid);
        t_owner = pid;
    }
    return t_thread;
}

std::string DroppedLine(std::uint64_t count) {
    const std::string text =
        std::to_string(count) + " log records were dropped because the queue was full";
    return Render({std::chrono::system_clock::now(), Level::kWarn, 0, text,
                   LocationInfo::getLocationUnavailable(), ThreadId()},
                  ProcessContext::Get());
}

Logger::Logger() : m_writer(DroppedLine) {
    ::pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    std::atexit([] { Get().Stop(); });
}

bool Logger::Open(const Options& options) {
    ProcessContext::Set(options.format, options.process_id);
    const bool opened = m_writer.Open(options);
    g_level.store(options.level, std::memory_order_relaxed);
    m_state.store(State::kRunning, std::memory_order_release);
    return opened;
}

bool Logger::Start(const Options& options) {
    const MutexLock lock(m_mutex);
    m_writer.Close();
    return Open(options);
}

void Logger::EnsureStarted() {
    if (m_state.load(std::memory_order_acquire) != State::kFresh) {
        return;
    }
    const MutexLock lock(m_mutex);
    if (m_state.load(std::memory_order_relaxed) == State::kFresh) {
        Open(Options::FromEnvironment());
    }
}

void Logger::Stop() {
    EnsureStarted();  // so that what comes after has the level and the format it should
    const MutexLock lock(m_mutex);
    m_state.store(State::kStopped, std::memory_order_release);
    m_writer.Close();
}

void Logger::Log(Level level, unsigned code, std::string_view text, const LocationInfo& where) {
    EnsureStarted();
    const Record record{std::chrono::system_clock::now(), level, code, text, where, ThreadId()};
    if (SinkList::SomeWant(level)) {
        m_sinks.Deliver(record);
    }
    if (level < g_level.load(std::memory_order_relaxed)) {
        return;
    }
    std::string line = Render(record, ProcessContext::Get());
    if (level >= Level::kWarn) {
        m_writer.PostAndWrite(std::move(line));
    } else {
        m_writer.Post(std::move(line));
    }
}

void Logger::BeforeFork() {
    Get().m_mutex.Lock();
    Get().m_sinks.BeforeFork();
    Get().m_writer.BeforeFork();
}

void Logger::AfterForkInParent() {
    Get().m_writer.AfterForkInParent();
    Get().m_sinks.AfterFork();
    Get().m_mutex.Unlock();
}

void Logger::AfterForkInChild() {
    ProcessContext::ForgetPid();
    Get().m_writer.AfterForkInChild();
    Get().m_sinks.AfterFork();
    Get().m_mutex.Unlock();
}

// Runs what could fail for lack of memory; the logger's own trouble must not become its
// caller's.
template <typename Action>
void Guarded(std::string_view text, Action action) noexcept {
    try {
        action();
    } catch (...) {
        Complain({"a record could not be logged: ", text});
    }
}

void Log(Level level, unsigned code, std::string_view text, const LocationInfo& where) noexcept {
    Guarded(text, [&] { Logger::Get().Log(level, code, text, where); });
}

// Whether anybody wants records of this level; all that a record nobody wants costs.
bool IsWanted(Level level) noexcept {
    return level >= g_level.load(std::memory_order_relaxed) || SinkList::SomeWant(level);
}

}  // namespace

void AddSink(std::shared_ptr<Sink> sink, Level minimum) noexcept {
    Guarded("(adding a sink)", [&] { Logger::Get().Sinks().Add(std::move(sink), minimum); });
}

void RemoveSink(const Sink* sink) noexcept {
    Guarded("(removing a sink)", [&] { Logger::Get().Sinks().Remove(sink); });
}

Level GetLevel() noexcept {
    Guarded("(reading the level)", [] { Logger::Get().EnsureStarted(); });
    return g_level.load(std::memory_order_relaxed);
}

void SetLevel(Level level) noexcept {
    // Started first, or the environment's level would replace this one later.
    Guarded("(setting the level)", [] { Logger::Get().EnsureStarted(); });
    g_level.store(level, std::memory_order_relaxed);
}

void Flush() noexcept {
    Guarded("(flushing)", [] { Logger::Get().Lines().Flush(); });
}

void Reopen() noexcept {
    Output::RequestReopen();
}

std::uint64_t Dropped() noexcept {
    return Logger::Get().Lines().Dropped();
}

bool InstallCrashHandler() noexcept {
    return crash::Install();
}

}  // namespace kelp::log

using kelp::log::IsWanted;
using kelp::log::Level;

bool LogProcess::Init(const kelp::log::Options& options) noexcept {
    bool opened = false;
    kelp::log::Guarded("(starting the log)",
                       [&] { opened = kelp::log::Logger::Get().Start(options); });
    return opened;
}

void LogProcess::Debug(std::string_view text, const LocationInfo& where) noexcept {
    if (IsWanted(Level::kDebug)) {
        kelp::log::Log(Level::kDebug, 0, text, where);
    }
}

void LogProcess::Info(std::string_view text, const LocationInfo& where) noexcept {
    if (IsWanted(Level::kInfo)) {
        kelp::log::Log(Level::kInfo, 0, text, where);
    }
}

void LogProcess::Warn(std::string_view text, const LocationInfo& where) noexcept {
    if (IsWanted(Level::kWarn)) {
        kelp::log::Log(Level::kWarn, 0, text, where);
    }
}

void LogProcess::Error(unsigned int code, std::string_view text,
                       const LocationInfo& where) noexcept {
    if (IsWanted(Level::kError)) {
        kelp::log::Log(Level::kError, code, text, where);
    }
}

void LogProcess::Destroy() noexcept {
    kelp::log::Guarded("(ending the log)", [] { kelp::log::Logger::Get().Stop(); });
}
