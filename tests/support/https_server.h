// The HTTPS server of https_server.py, running while the object exists. What its lines and
// paths do stands there.
//
//     HttpsServer server;
//     Installation installation(server.Settings());
//     oper.SendHttpMsg_Get(server.Url("expired", "/body"), ...);
//     EXPECT_EQ(server.Count("expired").requests, 0);
//
// The build names the script in HTTPS_SERVER. one thread.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/temp_folder.h"

class HttpsServer {
  public:
    struct Counts {
        int connections = 0;
        int handshakes = 0;
        int requests = 0;
    };

    HttpsServer() {
        int in[2];
        int out[2];
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        std::string program = "/usr/bin/python3";
        std::string quiet = "-Wignore";
        std::string clean = "-B";
        std::string script = HTTPS_SERVER;
        std::string folder = m_folder.Path();
        char* const arguments[] = {program.data(), quiet.data(),  clean.data(),
                                   script.data(),  folder.data(), nullptr};
        const int failed =
            ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        m_commands = ::fdopen(in[1], "w");
        m_answers = ::fdopen(out[0], "r");
        if (failed != 0) {
            throw std::runtime_error("no python3");
        }
        for (std::string line = ReadLine(); line != "ready"; line = ReadLine()) {
            std::istringstream words(line);
            std::string name;
            words >> name >> m_ports[name];
        }
    }
    ~HttpsServer() {
        std::fclose(m_commands);
        std::fclose(m_answers);
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    HttpsServer(const HttpsServer&) = delete;
    HttpsServer& operator=(const HttpsServer&) = delete;

    std::string Url(const std::string& line, const std::string& path) const {
        return Base(line) + path;
    }
    std::string Base(const std::string& line = "good") const {
        return "https://127.0.0.1:" + std::to_string(m_ports.at(line));
    }
    int Port(const std::string& line) const { return m_ports.at(line); }
    // The path of a certificate's file, such as "client.key".
    std::string File(const std::string& name) const { return m_folder.Path(name); }

    // An installation's settings for this server: its line "good" is the gateway. `more` is
    // put behind them, ", \"http\": {...}".
    std::string Settings(const std::string& more = "", const std::string& ca = "ca.crt",
                         const std::string& client = "client") const {
        return "{\"gateway\": {\"baseUrl\": \"" + Base() + "\"}, \"tls\": {\"ca\": \"" +
               (ca.empty() ? "" : File(ca)) + "\", \"certificate\": \"" +
               (client.empty() ? "" : File(client + ".crt")) + "\", \"key\": \"" +
               (client.empty() ? "" : File(client + ".key")) + "\"}" + more + "}";
    }

    // The answer to a command; what can be sent stands in the script.
    std::string Command(const std::string& command) {
        std::fputs((command + "\n").c_str(), m_commands);
        std::fflush(m_commands);
        return ReadLine();
    }
    void SetBody(const std::string& body) {
        std::string hexadecimal;
        for (const char c : body) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
            hexadecimal += digits;
        }
        EXPECT_EQ(Command("set " + hexadecimal), "ok");
    }
    void SetStatus(int status) { EXPECT_EQ(Command("status " + std::to_string(status)), "ok"); }
    Counts Count(const std::string& line) {
        Counts counts;
        std::istringstream words(Command("count " + line));
        words >> counts.connections >> counts.handshakes >> counts.requests;
        return counts;
    }

  private:
    std::string ReadLine() {
        std::string line;
        for (int c = std::fgetc(m_answers); c != '\n'; c = std::fgetc(m_answers)) {
            if (c == EOF) {
                throw std::runtime_error("the HTTPS server ended");
            }
            line += static_cast<char>(c);
        }
        return line;
    }

    TempFolder m_folder;
    pid_t m_process = 0;
    std::FILE* m_commands = nullptr;
    std::FILE* m_answers = nullptr;
    std::map<std::string, int> m_ports;
};
