// A small process that logs and ends in the way that SCENARIO says; the tests look
// at what it left behind.

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "kelp/log.h"

namespace {

const LocationInfo& kNowhere = LocationInfo::getLocationUnavailable();

bool IsScenario(const char* name) {
    const char* const scenario = std::getenv("SCENARIO");
    return scenario != nullptr && std::strcmp(scenario, name) == 0;
}

// Logs at the ends of its life, which for a static object lie outside main. One that
// has logged while it was built is destroyed before the log ends, any other after.
struct Chronicler {
    Chronicler() {
        if (IsScenario("static")) {
            LogProcess::Info("static constructor", kNowhere);
        }
    }
    ~Chronicler() {
        if (IsScenario("static") || IsScenario("static-late")) {
            LogProcess::Debug("static destructor, debug", kNowhere);
            LogProcess::Info("static destructor, info", kNowhere);
            LogProcess::Error(1, "static destructor, error", kNowhere);
        }
    }
};
Chronicler g_chronicler;

// Waits on the tests' side of the line.
void SayReady() {
    if (::write(STDOUT_FILENO, "ready\n", 6) != 6) {
        std::_Exit(3);
    }
}

int Leave() {
    for (int i = 0; i < 5; ++i) {
        LogProcess::Info("record " + std::to_string(i), kNowhere);
    }
    return 0;
}

int LogAroundDestroy() {
    LogProcess::Info("before", kNowhere);
    LogProcess::Destroy();
    LogProcess::Info("after", kNowhere);
    return 0;
}

// Whatever a scenario meets, its processes end: a signal that nobody handles sees to it.
// A child of fork() has to set its own.
void LimitLifetime() {
    ::alarm(60);
}

// The child has no thread but its first; the log must work there as here.
int Fork() {
    LogProcess::Info("parent before", kNowhere);
    const pid_t child = ::fork();
    if (child == 0) {
        LimitLifetime();
        LogProcess::Info("child info", kNowhere);
        LogProcess::Warn("child warning", kNowhere);
        LogProcess::Info("child at its end", kNowhere);
        std::exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    LogProcess::Info("parent after", kNowhere);
    return status;
}

// Forks while other threads log, so that locks are held and lines wait at that moment.
int ForkAmongThreads() {
    std::atomic<bool> stop{false};
    std::thread others[2];
    for (std::thread& other : others) {
        other = std::thread([&] {
            while (!stop.load()) {
                LogProcess::Info("noise", kNowhere);
                LogProcess::Warn("noise", kNowhere);
            }
        });
    }
    int failures = 0;
    for (int i = 0; i < 20; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            LimitLifetime();
            LogProcess::Info("child " + std::to_string(i), kNowhere);
            kelp::log::Flush();
            std::_Exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        failures += status == 0 ? 0 : 1;
    }
    stop.store(true);
    for (std::thread& other : others) {
        other.join();
    }
    return failures;
}

void Fault() {
    // A page that may not be touched, rather than a null pointer, whose use a compiler
    // may turn into something else.
    void* const page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(page) = 1;
}

// Far more than the pipe takes that is the log's file: the writer's thread hangs, and
// the lines still wait when the process crashes.
void FillThePipe(int count) {
    const std::string padding(600, 'x');
    for (int i = 0; i < count; ++i) {
        LogProcess::Info("record " + std::to_string(i) + " " + padding, kNowhere);
    }
}

int Crash(const std::string& how, int count) {
    if (!kelp::log::InstallCrashHandler() || !kelp::log::InstallCrashHandler()) {
        return 4;
    }
    FillThePipe(count);
    SayReady();
    if (how == "fault") {
        Fault();
    } else if (how == "abort") {
        std::abort();
    } else {
        ::raise(SIGFPE);
    }
    return 5;
}

// The program's own handler, there before the log's, has the last word.
int CrashWithAHandlerOfItsOwn() {
    struct sigaction action {};
    action.sa_handler = [](int) {
        SayReady();
        std::_Exit(42);
    };
    ::sigaction(SIGABRT, &action, nullptr);
    kelp::log::InstallCrashHandler();
    LogProcess::Warn("written already", kNowhere);
    std::abort();
}

// Comes to no end before the stack does.
int Overflow(int depth) {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return depth == 0 ? 0 : Overflow(depth + 1) + frame[0];
}

int Run(const std::string& scenario, int count) {
    if (scenario == "leave" || scenario == "static" || scenario == "static-late") {
        return Leave();
    }
    if (scenario == "destroy") {
        return LogAroundDestroy();
    }
    if (scenario == "fork") {
        return Fork();
    }
    if (scenario == "fork-among-threads") {
        return ForkAmongThreads();
    }
    if (scenario == "own-handler") {
        return CrashWithAHandlerOfItsOwn();
    }
    if (scenario == "overflow") {
        kelp::log::InstallCrashHandler();
        LogProcess::Warn("written already", kNowhere);
        return Overflow(1);
    }
    return Crash(scenario, count);
}

}  // namespace

int main(int argc, char** argv) {
    LimitLifetime();
    const char* const scenario = std::getenv("SCENARIO");
    return scenario == nullptr ? 2 : Run(scenario, argc > 1 ? std::atoi(argv[1]) : 0);
}
