// Ends, forks and crashes of a process that logs, seen from outside.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> Lines(const std::string& bytes) {
    std::vector<std::string> lines;
    std::istringstream in(bytes);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class LoggingProcess : public testing::Test {
  protected:
    // Starts the program in a scenario; its standard output can be read.
    void Start(const std::string& scenario, const std::string& format = "text", int count = 0) {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        m_pid = ::fork();
        ASSERT_GE(m_pid, 0);
        if (m_pid == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            const int errors = ::open(ErrorPath().c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            ::dup2(errors, STDERR_FILENO);
            ::setenv("SCENARIO", scenario.c_str(), 1);
            ::setenv("KELP_LOG_FILE", LogPath().c_str(), 1);
            ::setenv("KELP_LOG_FORMAT", format.c_str(), 1);
            ::setenv("KELP_LOG_LEVEL", "info", 1);
            ::setenv("KELP_PROC_ID", "3001", 1);
            // A sanitizer would answer the signals itself.
            for (const char* options : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
                ::setenv(options,
                         "handle_segv=0:handle_abort=0:handle_sigfpe=0:use_sigaltstack=0:"
                         "report_signal_unsafe=0",
                         1);
            }
            ::execl(KELP_LOG_PROGRAM, KELP_LOG_PROGRAM, std::to_string(count).c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        m_output = ends[0];
    }
    void TearDown() override {
        if (m_output >= 0) {
            ::close(m_output);
        }
    }

    // Waits for the end. Result: the exit status, or minus the signal.
    int End() {
        int status = 0;
        EXPECT_EQ(::waitpid(m_pid, &status, 0), m_pid);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    // Reads until the program says that it is ready.
    bool WaitUntilReady() const {
        std::string said;
        for (char c = 0; ::read(m_output, &c, 1) == 1;) {
            said += c;
            if (said == "ready\n") {
                return true;
            }
        }
        return false;
    }

    // In what comes behind "ready" the program's first thread waits for nothing but the pipe
    // that the crash's lines go to, or has ended.
    void WaitUntilItHangs() const {
        const std::string path = "/proc/" + std::to_string(m_pid) + "/stat";
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (char state = 'R'; state != 'S' && state != 'Z';) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << state;
            const std::string stat = ReadFile(path);
            state = stat.at(stat.rfind(')') + 2);
        }
    }

    std::string LogPath() const { return m_folder.Path("log"); }
    std::string ErrorPath() const { return m_folder.Path("errors"); }
    std::vector<std::string> Log() const { return Lines(ReadFile(LogPath())); }
    std::vector<std::string> Errors() const { return Lines(ReadFile(ErrorPath())); }

    const TempFolder m_folder;
    pid_t m_pid = -1;
    int m_output = -1;
};

// A process that just ends has its last lines written.
TEST_F(LoggingProcess, EndsWithoutDestroy) {
    Start("leave");
    EXPECT_EQ(End(), 0);
    EXPECT_EQ(Log().size(), 5U);
    EXPECT_THAT(Log().back(), EndsWith(" record 4"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(LoggingProcess, LogsAfterDestroy) {
    Start("destroy");
    EXPECT_EQ(End(), 0);
    EXPECT_THAT(Log(), ElementsAre(EndsWith(" before")));
    EXPECT_THAT(Errors(), ElementsAre(EndsWith(" after")));
}

// Static objects log before main and after it, in the log as long as it lives, on
// standard error afterwards.
TEST_F(LoggingProcess, LogsFromStaticObjects) {
    Start("static");
    EXPECT_EQ(End(), 0);
    ASSERT_EQ(Log().size(), 8U);
    EXPECT_THAT(Log().front(), EndsWith(" proc=3001 static constructor"));
    EXPECT_THAT(Log()[6], EndsWith(" static destructor, info"));
    EXPECT_THAT(Log()[7], EndsWith(" static destructor, error"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(LoggingProcess, LogsFromStaticObjectsThatOutliveTheLog) {
    Start("static-late");
    EXPECT_EQ(End(), 0);
    EXPECT_EQ(Log().size(), 5U);
    EXPECT_THAT(Errors(), ElementsAre(EndsWith(" static destructor, info"),
                                      EndsWith(" static destructor, error")));
}

// Two sanitizers end a child of a process with threads before the log could: one knows no
// threads of its own there, the other's allocator may be locked for ever.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define CHILDREN_CANNOT_LOG
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define CHILDREN_CANNOT_LOG
#endif
#endif

#ifndef CHILDREN_CANNOT_LOG

// Both sides of a fork log, each under its own number, and nothing is written twice.
TEST_F(LoggingProcess, Forks) {
    Start("fork");
    EXPECT_EQ(End(), 0);
    const auto lines = Log();
    const std::string parent = "pid=" + std::to_string(m_pid) + " tid=" + std::to_string(m_pid);
    for (const char* text : {"parent before", "parent after"}) {
        EXPECT_THAT(lines, Contains(testing::AllOf(EndsWith(text), HasSubstr(parent))).Times(1));
    }
    for (const char* text : {"child info", "child warning", "child at its end"}) {
        EXPECT_THAT(lines,
                    Contains(testing::AllOf(EndsWith(text), Not(HasSubstr(parent)))).Times(1));
    }
    EXPECT_EQ(lines.size(), 5U);
}

TEST_F(LoggingProcess, ForksAmongLoggingThreads) {
    Start("fork-among-threads");
    EXPECT_EQ(End(), 0);
    const auto lines = Log();
    for (int i = 0; i < 20; ++i) {
        EXPECT_THAT(lines, Contains(EndsWith(" child " + std::to_string(i))).Times(1));
    }
}
#endif  // CHILDREN_CANNOT_LOG

// The log's file is a pipe whose reader waits until the crash is certain.
class CrashingProcess : public LoggingProcess {
  protected:
    std::string Crash(const std::string& how, const std::string& format, int count, int expected) {
        EXPECT_EQ(::mkfifo(LogPath().c_str(), 0600), 0);
        const int reader = ::open(LogPath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        ::fcntl(reader, F_SETFL, 0);
        ::fcntl(reader, F_SETPIPE_SZ, 4096);
        Start(how, format, count);
        EXPECT_TRUE(WaitUntilReady());
        WaitUntilItHangs();
        std::string bytes;
        char block[65536];
        for (ssize_t got = 0; (got = ::read(reader, block, sizeof block)) > 0;) {
            bytes.append(block, static_cast<std::size_t>(got));
        }
        ::close(reader);
        EXPECT_EQ(End(), expected);
        return bytes;
    }
};

// Every line that waited is written, the newest too, behind a line that names the
// signal; and the process still ends on the signal.
TEST_F(CrashingProcess, WritesWhatWaits) {
    const struct {
        const char* how;
        int signal;
        const char* marker;
    } cases[] = {{"fault", SIGSEGV, "the process crashed: signal 11 (SIGSEGV), "},
                 {"abort", SIGABRT, "the process crashed: signal 6 (SIGABRT), "},
                 {"raise", SIGFPE, "the process crashed: signal 8 (SIGFPE), "}};
    for (const auto& c : cases) {
        ::unlink(LogPath().c_str());
        const std::string bytes = Crash(c.how, "text", 200, -c.signal);
        EXPECT_THAT(bytes, HasSubstr(c.marker));
        EXPECT_THAT(bytes, HasSubstr(" lines waited, 0 of them are lost\n"));
        for (int i = 0; i < 200; ++i) {
            const std::string record =
                " record " + std::to_string(i) + " " + std::string(600, 'x') + "\n";
            EXPECT_THAT(bytes, HasSubstr(record)) << c.how << i;
        }
    }
}

TEST_F(CrashingProcess, SaysWhatTheRingHasLost) {
    const std::string bytes = Crash("abort", "text", 2000, -SIGABRT);
    EXPECT_THAT(bytes, testing::ContainsRegex("[0-9]+ lines waited, [1-9][0-9]* of them are lost"));
    for (int i = 2000 - 256; i < 2000; ++i) {
        EXPECT_THAT(bytes, HasSubstr(" record " + std::to_string(i) + " "));
    }
}

TEST_F(CrashingProcess, JsonLinesStayJson) {
    const std::string bytes = Crash("abort", "json", 200, -SIGABRT);
    const std::size_t marker = bytes.find("the process crashed: signal 6 (SIGABRT)");
    ASSERT_NE(marker, std::string::npos);
    const std::size_t begin = bytes.rfind(R"({"time":)", marker);
    const std::size_t end = bytes.find("}\n", marker);
    ASSERT_NE(begin, std::string::npos);
    const auto json = nlohmann::json::parse(bytes.substr(begin, end + 1 - begin));
    EXPECT_EQ(json.at("level"), "error");
    EXPECT_EQ(json.at("pid"), m_pid);
    EXPECT_EQ(json.at("process"), 3001);
    EXPECT_EQ(json.at("thread"), m_pid);
    EXPECT_EQ(json.at("code"), 0);
    EXPECT_EQ(json.at("line"), 0);
    EXPECT_THAT(json.at("time").get<std::string>(), testing::MatchesRegex("....-..-..T.*Z"));
}

TEST_F(LoggingProcess, EarlierHandlersHaveTheLastWord) {
    Start("own-handler");
    EXPECT_TRUE(WaitUntilReady());
    EXPECT_EQ(End(), 42);
    EXPECT_THAT(Log(),
                ElementsAre(EndsWith(" written already"),
                            EndsWith("signal 6 (SIGABRT), 0 lines waited, 0 of them are lost")));
}

// The handler has a stack of its own, so that it can tell of an overflow.
TEST_F(LoggingProcess, SurvivesAnOverflowOfTheStackLongEnough) {
    Start("overflow");
    EXPECT_EQ(End(), -SIGSEGV);
    EXPECT_THAT(Log().back(), HasSubstr("the process crashed: signal 11 (SIGSEGV)"));
}

}  // namespace
