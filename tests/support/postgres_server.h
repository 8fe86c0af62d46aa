// A PostgreSQL server of one test program's: made in a folder of its own, on a free port of the
// loopback; it can be killed, frozen and started again. Root cannot run one, so it then runs as
// the user that Debian's package makes.
//
//     PostgresServer server;
//     ASSERT_TRUE(server.Start());
//     session.Open(server.Url("postgres"));
//
// one thread.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/temp_folder.h"

class PostgresServer {
  public:
    PostgresServer();
    ~PostgresServer() { Kill(); }
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    // Returns when it takes connections. False when it does not: Log() says why.
    bool Start();
    // Ends it as a crash does; every backend is gone when this returns.
    void Kill();
    // Ends it in the orderly way that does not wait for its clients.
    void Stop();
    bool Running() const { return m_pid > 0; }

    static constexpr const char* kUser = "admin";
    static constexpr const char* kPassword = "s3cr%t:w@rd";
    // As the administrator, or with `user_and_password` ("u:p", or "u") as somebody else.
    std::string Url(const std::string& database, const std::string& user_and_password = "") const;
    int Port() const { return m_port; }
    std::string Log() const { return ReadFile(m_folder.Path("log")); }

  private:
    pid_t Spawn(std::vector<std::string> words) const;
    void End(int signal);

    TempFolder m_folder;
    std::string m_data;
    int m_port = 0;
    pid_t m_pid = -1;
};
