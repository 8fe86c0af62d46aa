// A server process of one test's: started, asked, stopped, frozen or killed by its pid.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "support/platform.h"

class Server {
  public:
    // Returns when the process is ready to serve (or has ended: then Ready() is false).
    Server(const std::string& run_dir, unsigned proc, unsigned handle, int workers,
           std::vector<std::string> more = {})
        : m_proc(proc) {
        std::vector<std::string> words{BUS_SERVER, std::to_string(proc), std::to_string(handle),
                                       run_dir, std::to_string(workers)};
        words.insert(words.end(), more.begin(), more.end());
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        int out[2];
        EXPECT_EQ(::pipe2(out, O_CLOEXEC), 0);
        m_pid = ::fork();
        if (m_pid == 0) {
            ::dup2(out[1], 1);
            // What it frees must show as free: Memory() is asked how much it holds.
            ::setenv("ASAN_OPTIONS", "quarantine_size_mb=4", 1);
            ::execv(BUS_SERVER, arguments.data());
            ::_exit(127);
        }
        ::close(out[1]);
        char line[6] = {};
        std::size_t have = 0;
        while (have < sizeof line) {
            const ssize_t got = ::read(out[0], line + have, sizeof line - have);
            if (got <= 0) {
                break;
            }
            have += static_cast<std::size_t>(got);
        }
        ::close(out[0]);
        // It says that it serves a moment before it can be asked to stop.
        m_ready = std::string(line, have) == "ready\n" && Eventually([this] {
                      return (std::stoull("0" + Status("SigCgt:"), nullptr, 16) >> (SIGTERM - 1) &
                              1) != 0;
                  });
    }
    ~Server() { Kill(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    bool Ready() const { return m_ready; }
    pid_t pid() const { return m_pid; }
    void Signal(int number) const { ::kill(m_pid, number); }
    // Returns when it stands still.
    void Freeze() const {
        Signal(SIGSTOP);
        int status = 0;
        EXPECT_EQ(::waitpid(m_pid, &status, WUNTRACED), m_pid);
        EXPECT_TRUE(WIFSTOPPED(status));
    }
    void Kill() {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            Wait();
        }
    }
    // Asks it to end; its exit status, or -1 when it ended otherwise.
    int Stop() {
        Signal(SIGTERM);
        return Wait();
    }
    int Wait() {
        int status = 0;
        ::waitpid(std::exchange(m_pid, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Resident memory in octets, and its threads and sockets.
    std::size_t Memory() const { return std::stoul("0" + Status("VmRSS:")) * 1024; }
    std::size_t Threads() const { return std::stoul("0" + Status("Threads:")); }
    std::size_t Sockets() const {
        std::size_t count = 0;
        for (const auto& entry :
             std::filesystem::directory_iterator("/proc/" + std::to_string(m_pid) + "/fd")) {
            std::error_code closed_meanwhile;
            const auto link = std::filesystem::read_symlink(entry.path(), closed_meanwhile);
            count += link.string().rfind("socket:", 0) == 0 ? 1 : 0;
        }
        return count;
    }

    // One call to this server; the code of SynSendMsg.
    int Ask(unsigned long command, const std::string& text, std::string* answer = nullptr,
            int timeout = 30) const {
        AsnOcts request(text);
        AsnOcts response;
        const int code =
            FrameUtil::SynSendMsg({static_cast<std::uint16_t>(m_proc), 0, bus_test::kManager, 0},
                                  command, request, &response, timeout);
        if (answer != nullptr) {
            *answer = response.str();
        }
        return code;
    }

    // Waits until `count` handlers of kHold run in it.
    bool Holds(int count) const {
        return Eventually([&] {
            std::string holding;
            return Ask(bus_test::kCount, "", &holding) == 0 && holding == std::to_string(count);
        });
    }

    // Waits until its report on itself contains `part`.
    bool Reports(const std::string& part) const {
        return Eventually([&] {
            std::string report;
            return Ask(bus_test::kReport, "", &report) == 0 &&
                   report.find(part) != std::string::npos;
        });
    }

  private:
    std::string Status(const std::string& field) const {
        std::ifstream in("/proc/" + std::to_string(m_pid) + "/status");
        for (std::string word; in >> word;) {
            if (word == field) {
                in >> word;
                return word;
            }
        }
        return "";
    }

    unsigned m_proc;
    pid_t m_pid = -1;
    bool m_ready = false;
};
