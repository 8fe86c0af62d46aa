// Design notes. The handler may run while any thread is anywhere, inside the logger too,
// so it takes no lock, allocates nothing and calls only what is async-signal-safe. The
// ring is written by one thread at a time (the queue's lock) and read by the handler
// without it: every slot is a sequence lock over atomic words, and a slot that changes
// while it is read is left out. A line that a thread was just writing when the process
// crashed may appear twice.

#include "log/crash.h"

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "log/context.h"
#include "log/output.h"
#include "log/render.h"
#include "log/standard_error.h"

namespace kelp::log::crash {

namespace {

constexpr std::size_t kSlots = 256;
constexpr std::size_t kWords = 128;
constexpr std::size_t kLineMax = kWords * sizeof(std::uint64_t) - 1;  // one for the line break

struct Slot {
    std::atomic<std::uint64_t> number{0};  // 0 while it is being written
    std::atomic<std::uint32_t> length{0};
    std::array<std::atomic<std::uint64_t>, kWords> words{};
};

struct Handled {
    int signal;
    const char* name;
};
constexpr Handled kHandled[] = {{SIGSEGV, "SIGSEGV"},
                                {SIGBUS, "SIGBUS"},
                                {SIGFPE, "SIGFPE"},
                                {SIGILL, "SIGILL"},
                                {SIGABRT, "SIGABRT"}};
constexpr std::size_t kHandledCount = std::size(kHandled);

constinit std::array<Slot, kSlots> g_ring{};
constinit std::atomic<std::uint64_t> g_newest{0};
constinit std::atomic<std::uint64_t> g_written{0};
constinit std::atomic<bool> g_installed{false};
constinit std::atomic<bool> g_crashed{false};
struct sigaction g_previous[kHandledCount];

// A bounded line that is put together without the C library.
class Line {
  public:
    Line& operator<<(std::string_view text) {
        m_length += text.copy(m_bytes + m_length, sizeof m_bytes - m_length);
        return *this;
    }
    Line& operator<<(std::uint64_t value) {
        char digits[20];
        std::size_t at = sizeof digits;
        do {
            digits[--at] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        return *this << std::string_view(digits + at, sizeof digits - at);
    }
    std::string_view Get() const { return {m_bytes, m_length}; }

  private:
    char m_bytes[512];
    std::size_t m_length = 0;
};

void WriteMarker(int descriptor, int signal, std::uint64_t waiting, std::uint64_t lost) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    char time[kTimeSize];
    PrintTime(static_cast<std::int64_t>(now.tv_sec) * 1'000'000 + now.tv_nsec / 1000, time);
    const char* name = "";
    for (const Handled& handled : kHandled) {
        name = handled.signal == signal ? handled.name : name;
    }
    const auto thread = static_cast<std::uint64_t>(::syscall(SYS_gettid));
    const LineContext context = ProcessContext::Get();
    const auto pid = static_cast<std::uint64_t>(context.pid);
    const std::uint64_t process = context.process_id;
    const bool json = context.format == Format::kJson;

    Line line;
    if (json) {
        line << R"({"time":")" << time << R"(","level":"error","pid":)" << pid << R"(,"process":)"
             << process << R"(,"thread":)" << thread
             << R"(,"unit":"","function":"","line":0,"code":0,"text":")";
    } else {
        line << time << " ERROR pid=" << pid << " tid=" << thread;
        if (process != 0) {
            line << " proc=" << process;
        }
        line << " code=0x00000000 ";
    }
    line << "the process crashed: signal " << static_cast<std::uint64_t>(signal) << " (" << name
         << "), " << waiting << " lines waited, " << lost << " of them are lost"
         << (json ? "\"}\n" : "\n");
    WriteAll(descriptor, line.Get());
}

void WriteSlot(int descriptor, std::uint64_t number) {
    const Slot& slot = g_ring[number % kSlots];
    if (slot.number.load(std::memory_order_acquire) != number) {
        return;
    }
    std::array<std::uint64_t, kWords> words;
    const std::size_t length =
        std::min<std::size_t>(slot.length.load(std::memory_order_acquire), kLineMax);
    for (std::size_t i = 0; i <= length / sizeof(std::uint64_t); ++i) {
        words[i] = slot.words[i].load(std::memory_order_acquire);
    }
    if (slot.number.load(std::memory_order_relaxed) != number) {
        return;
    }
    char bytes[kLineMax + 1];
    std::memcpy(bytes, words.data(), length);
    bytes[length] = '\n';
    WriteAll(descriptor, {bytes, length + 1});
}

void WriteWaitingLines(int signal) {
    const int descriptor = Output::Descriptor();
    const std::uint64_t newest = g_newest.load();
    const std::uint64_t written = std::min(g_written.load(), newest);
    const std::uint64_t waiting = newest - written;
    const std::uint64_t lost = waiting > kSlots ? waiting - kSlots : 0;
    WriteMarker(descriptor, signal, waiting, lost);
    for (std::uint64_t number = written + lost + 1; number <= newest; ++number) {
        WriteSlot(descriptor, number);
    }
}

void Handle(int signal, siginfo_t* info, void*) {
    const int kept = errno;
    if (g_crashed.exchange(true)) {
        // Another thread is at it and will end the process.
        for (;;) {
            ::pause();
        }
    }
    WriteWaitingLines(signal);
    for (std::size_t i = 0; i < kHandledCount; ++i) {
        ::sigaction(kHandled[i].signal, &g_previous[i], nullptr);
    }
    errno = kept;
    // A fault of the processor strikes again when this returns, at the right place for a
    // core dump; a signal that somebody sent has to be sent again.
    if (info->si_code <= 0 || signal == SIGABRT) {
        ::raise(signal);
    }
    // Threads that crash from now on do what they did before; a process that survives the
    // signal, because its earlier handler says so, has no handler of ours any more.
    g_installed.store(false);
    g_crashed.store(false);
}

}  // namespace

bool Install() noexcept {
    if (g_installed.exchange(true)) {
        return true;
    }
    // A stack of its own for the handler, or the overflow of a stack could not be handled;
    // for the calling thread only, since each thread has to bring its own.
    stack_t current{};
    if (::sigaltstack(nullptr, &current) == 0 && (current.ss_flags & SS_DISABLE) != 0) {
        alignas(16) static char stack[1U << 16U];
        const stack_t own{stack, 0, sizeof stack};
        ::sigaltstack(&own, nullptr);
    }
    struct sigaction action {};
    action.sa_sigaction = Handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kHandledCount; ++i) {
        if (::sigaction(kHandled[i].signal, &action, &g_previous[i]) != 0) {
            while (i-- > 0) {
                ::sigaction(kHandled[i].signal, &g_previous[i], nullptr);
            }
            g_installed.store(false);
            return false;
        }
    }
    return true;
}

void Remember(std::uint64_t number, std::string_view line) noexcept {
    if (!g_installed.load(std::memory_order_relaxed)) {
        return;
    }
    Slot& slot = g_ring[number % kSlots];
    const std::size_t length = std::min(line.size(), kLineMax);
    // Whoever sees one of the words that follow sees this too, hence the released words.
    slot.number.store(0, std::memory_order_relaxed);
    for (std::size_t at = 0; at < length; at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, line.data() + at, std::min(sizeof word, length - at));
        slot.words[at / sizeof word].store(word, std::memory_order_release);
    }
    slot.length.store(static_cast<std::uint32_t>(length), std::memory_order_release);
    slot.number.store(number, std::memory_order_release);
    g_newest.store(number);
}

void MarkWritten(std::uint64_t number) noexcept {
    g_written.store(number);
}

}  // namespace kelp::log::crash
