#include "bus/process.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "support/check.h"
#include "support/clock.h"

namespace bench {

Process::Process(const std::vector<std::string>& arguments) {
    int from[2];
    int to[2];
    Require(pipe2(from, O_CLOEXEC) == 0 && pipe2(to, O_CLOEXEC) == 0, "process", "no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, from[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, to[0], STDIN_FILENO);
    std::vector<char*> argv = {const_cast<char*>("bench_bus")};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const int error = posix_spawn(&pid_, "/proc/self/exe", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(from[1]);
    close(to[0]);
    from_ = from[0];
    to_ = to[1];
    Require(error == 0, "process", "it does not start");
}

Process::~Process() {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
    close(from_);
    close(to_);
}

std::string Process::ReadLine() {
    std::string line;
    for (char c = 0; read(from_, &c, 1) == 1 && c != '\n';) {
        line += c;
    }
    Require(!line.empty(), "process", "it ended early");
    return line;
}

void Process::WriteLine(const std::string& line) {
    const std::string text = line + '\n';
    Require(write(to_, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "process",
            "it does not listen");
}

double Process::CpuSeconds() const {
    clockid_t clock{};
    Require(clock_getcpuclockid(pid_, &clock) == 0, "process", "it has no clock");
    return SecondsOf(clock);
}

struct OneCpu::Mask {
    cpu_set_t cpus;
};

OneCpu::OneCpu() : before_(new Mask) {
    CPU_ZERO(&before_->cpus);
    sched_getaffinity(0, sizeof before_->cpus, &before_->cpus);
    // The last one: the first is where interrupts tend to be served.
    int last = 0;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
        last = CPU_ISSET(cpu, &before_->cpus) ? cpu : last;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(last, &one);
    Require(sched_setaffinity(0, sizeof one, &one) == 0, "affinity", "not set");
}

OneCpu::~OneCpu() {
    sched_setaffinity(0, sizeof before_->cpus, &before_->cpus);
    delete before_;
}

Folder::Folder() {
    char path[] = "/tmp/bench_bus.XXXXXX";
    Require(mkdtemp(path) != nullptr, "folder", "not made");
    path_ = path;
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace bench
