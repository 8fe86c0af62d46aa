#include "support/postgres_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

constexpr const char* kPrograms = "/usr/lib/postgresql/15/bin/";
constexpr const char* kPackageUser = "postgres";

// A port that was free a moment ago.
int FreePort() {
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(probe, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("no free port");
    }
    ::close(probe);
    return ::ntohs(address.sin_port);
}

// What `command` may do as the package's user when this process is root.
void BecomeServerUser() {
    if (::geteuid() != 0) {
        return;
    }
    const passwd* user = ::getpwnam(kPackageUser);
    if (user == nullptr || ::initgroups(user->pw_name, user->pw_gid) != 0 ||
        ::setgid(user->pw_gid) != 0 || ::setuid(user->pw_uid) != 0) {
        ::_exit(126);
    }
}

int ExitStatus(pid_t pid) {
    int status = 0;
    return ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

PostgresServer::PostgresServer() : m_data(m_folder.Path("data")) {
    const std::string secret = m_folder.Path("password");
    std::ofstream(secret) << kPassword << "\n";
    if (::geteuid() == 0) {
        const passwd* user = ::getpwnam(kPackageUser);
        if (user == nullptr || ::chown(m_folder.Path().c_str(), user->pw_uid, user->pw_gid) != 0 ||
            ::chown(secret.c_str(), user->pw_uid, user->pw_gid) != 0) {
            throw std::runtime_error("no user to run PostgreSQL as");
        }
    }
    const int made =
        ExitStatus(Spawn({"initdb", "--pgdata=" + m_data, "--no-sync", "--auth=scram-sha-256",
                          "--pwfile=" + secret, std::string("--username=") + kUser,
                          "--encoding=UTF8", "--locale=C.UTF-8", "--no-instructions"}));
    if (made != 0) {
        throw std::runtime_error("initdb failed: " + Log());
    }
    std::ofstream(m_data + "/postgresql.auto.conf", std::ios::app)
        << "listen_addresses = '127.0.0.1'\nunix_socket_directories = ''\nfsync = off\n"
           "full_page_writes = off\nshared_buffers = 16MB\n"
           "max_connections = 20\nsuperuser_reserved_connections = 0\nautovacuum = off\n"
           "wal_level = minimal\nmax_wal_senders = 0\n";
}

pid_t PostgresServer::Spawn(std::vector<std::string> words) const {
    const std::string program = kPrograms + words.front();
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const std::string log = m_folder.Path("log");
    const pid_t pid = ::fork();
    if (pid == 0) {
        BecomeServerUser();
        ::prctl(PR_SET_PDEATHSIG, SIGQUIT);  // it must not outlive a test that crashes
        const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(out, STDERR_FILENO);
        if (::chdir("/") != 0) {
            ::_exit(126);
        }
        ::setenv("LC_ALL", "C.UTF-8", 1);
        ::execv(program.c_str(), arguments.data());
        ::_exit(127);
    }
    return pid;
}

bool PostgresServer::Start() {
    constexpr const char* kReady = "database system is ready to accept connections";
    for (int attempt = 0; attempt < 5; ++attempt) {
        m_port = m_port == 0 || attempt > 0 ? FreePort() : m_port;
        std::filesystem::remove(m_folder.Path("log"));
        m_pid = Spawn({"postgres", "-D", m_data, "-p", std::to_string(m_port)});
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < until) {
            if (Log().find(kReady) != std::string::npos) {
                return true;
            }
            if (::waitpid(m_pid, nullptr, WNOHANG) == m_pid) {
                m_pid = -1;  // the port was taken, as a rule
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        Kill();
    }
    return false;
}

void PostgresServer::End(int signal) {
    if (m_pid > 0) {
        ::kill(m_pid, signal);
        ::waitpid(m_pid, nullptr, 0);
        m_pid = -1;
    }
}

void PostgresServer::Kill() {
    End(SIGQUIT);
}

void PostgresServer::Stop() {
    End(SIGINT);
}

std::string PostgresServer::Url(const std::string& database,
                                const std::string& user_and_password) const {
    const std::string who =
        user_and_password.empty() ? std::string(kUser) + ":s3cr%25t%3Aw%40rd" : user_and_password;
    return "postgresql://" + who + "@127.0.0.1:" + std::to_string(m_port) + "/" + database;
}
