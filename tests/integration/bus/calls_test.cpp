// Calls between processes: what must work, and what must fail cleanly.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "server.h"
#include "support/captured_log.h"

namespace {

using namespace bus_test;

constexpr unsigned kServer = 56;

std::string Big(std::size_t octets) {
    return std::string(octets, 'b');
}

TEST(BusCalls, AnswersOfEverySize) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    ASSERT_TRUE(server.Ready());
    for (const std::size_t octets : {0, 1, 100, 10000, 65000, 99000}) {
        std::string answer;
        EXPECT_EQ(server.Ask(kEcho, Big(octets), &answer), 0) << octets;
        EXPECT_EQ(answer, Big(octets));
    }
    for (const std::size_t octets : {65536, 1000000, 60000000}) {
        std::string answer;
        EXPECT_EQ(server.Ask(kMake, std::to_string(octets), &answer), 0) << octets;
        EXPECT_EQ(answer.size(), octets);
    }
    EXPECT_EQ(server.Stop(), 0);
}

// An answer above the limit of a frame is an error, and the server lives on.
TEST(BusCalls, AnswerAboveTheLimit) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    EXPECT_EQ(server.Ask(kMake, std::to_string(64 << 20)), static_cast<int>(KELP_MSG_BAD_ANSWER));
    EXPECT_EQ(server.Ask(kEcho, "x"), 0);
}

TEST(BusCalls, EightClientsAtOnce) {
    Platform platform(KelpAppOptions(), 4);
    Server server(platform.RunDir(), kServer, 1, 4);
    std::vector<std::thread> clients;
    for (int client = 0; client < 8; ++client) {
        clients.emplace_back([&, client] {
            for (int i = 0; i < 500; ++i) {
                const std::string text = std::to_string(client) + "." + std::to_string(i);
                std::string answer;
                EXPECT_EQ(server.Ask(kEcho, text, &answer), 0);
                EXPECT_EQ(answer, text) << "everybody gets its own answer";
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(server.Stop(), 0);
}

// Every worker of both processes waits in SynSendMsg; the answers need none of them.
TEST(BusCalls, AllWorkersWait) {
    Platform platform;
    Server front(platform.RunDir(), kServer, 1, 4);
    Server back(platform.RunDir(), kServer + 1, 1, 4);
    const std::string gate = platform.RunDir() + "/gate";
    std::vector<std::thread> clients;
    for (int client = 0; client < 4; ++client) {
        clients.emplace_back([&] {
            std::string answer;
            EXPECT_EQ(front.Ask(kRelay, "57 1001 " + gate, &answer), 0);
            EXPECT_EQ(answer, gate);
        });
    }
    EXPECT_TRUE(back.Holds(4)) << "the four workers of the front wait for these";
    std::ofstream(gate) << "";
    for (std::thread& client : clients) {
        client.join();
    }
}

// A full queue is said at once, to whoever finds it full.
TEST(BusCalls, FullQueue) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 1, {"2"});
    const std::string gate = platform.RunDir() + "/gate";
    std::vector<std::thread> clients;
    for (int client = 0; client < 3; ++client) {
        clients.emplace_back([&] { EXPECT_EQ(server.Ask(kHold, gate), 0); });
        if (client == 0) {
            EXPECT_TRUE(server.Holds(1));
        }
    }
    EXPECT_TRUE(server.Reports("task manager 4: 1 workers, 1 busy, 2 requests waiting"));
    EXPECT_EQ(server.Ask(kEcho, "", nullptr, 1000000), static_cast<int>(KELP_MSG_QUEUE_FULL));
    std::ofstream(gate) << "";
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
}

TEST(BusCalls, HandlersThatThrowOrEndTheirThread) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    const std::size_t threads = server.Threads();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(server.Ask(kThrow, ""), static_cast<int>(KELP_MSG_HANDLER_FAILED));
        EXPECT_EQ(server.Ask(kEndThread, ""), static_cast<int>(KELP_MSG_HANDLER_FAILED));
        EXPECT_EQ(server.Ask(kEcho, ""), 0);
    }
    EXPECT_TRUE(Eventually([&] { return server.Threads() == threads; })) << server.Threads();
    EXPECT_EQ(server.Stop(), 0);
}

// A server that was killed while its handler ran is an error at once, not at the time-out.
TEST(BusCalls, ServerIsKilled) {
    Platform platform;
    for (const bool in_task : {false, true}) {
        Server server(platform.RunDir(), kServer, 1, 1);
        std::thread killer([&] {
            EXPECT_TRUE(server.Holds(1));
            server.Kill();
        });
        const auto ask = [&] {
            EXPECT_EQ(server.Ask(kHold, "/nonexistent", nullptr, 1000000),
                      static_cast<int>(KELP_MSG_PEER_CLOSED));
        };
        if (in_task) {
            platform.InTask([&](KelpGnlTask&) { ask(); });
        } else {
            ask();
        }
        killer.join();
        // A new one takes over what the dead one left, and is found.
        Server next(platform.RunDir(), kServer, 1, 1);
        ASSERT_TRUE(next.Ready());
        std::string answer;
        EXPECT_EQ(next.Ask(kEcho, "again", &answer), 0);
        EXPECT_EQ(answer, "again");
    }
}

// A frozen server: the time-out ends the wait; what it answers later reaches nobody.
TEST(BusCalls, ServerIsFrozen) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 1);
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
    server.Freeze();
    CapturedLog log;
    EXPECT_EQ(server.Ask(kEcho, "late", nullptr, 1), static_cast<int>(KELP_MSG_TIMEOUT));
    server.Signal(SIGCONT);
    EXPECT_TRUE(log.WaitFor("an answer that nobody waits for was dropped, command 1000"));
    std::string answer;
    EXPECT_EQ(server.Ask(kEcho, "in time", &answer), 0);
    EXPECT_EQ(answer, "in time");
}

// The identity is taken while the process lives.
TEST(BusCalls, SecondServerOfTheSameIdentity) {
    Platform platform;
    Server first(platform.RunDir(), kServer, 1, 1);
    Server second(platform.RunDir(), kServer, 1, 1);
    EXPECT_FALSE(second.Ready());
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_EQ(first.Ask(kEcho, ""), 0);
    Server other(platform.RunDir(), kServer, 2, 1);
    EXPECT_TRUE(other.Ready());
}

// A server that ends with requests in flight answers them all, one way or the other.
TEST(BusCalls, ServerStopsWithRequestsInFlight) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    const std::string gate = platform.RunDir() + "/gate";
    std::vector<int> codes(6, -2);
    std::vector<std::thread> clients;
    for (int& code : codes) {
        clients.emplace_back([&] { code = server.Ask(kHold, gate, nullptr, 1000000); });
    }
    EXPECT_TRUE(server.Reports("task manager 4: 2 workers, 2 busy, 4 requests waiting"));
    server.Signal(SIGTERM);
    // Those that wait for a worker are told at once; then the two that run may end.
    EXPECT_TRUE(
        Eventually([&] { return !std::filesystem::exists(platform.RunDir() + "/56.1.sock"); }));
    std::ofstream(gate) << "";
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(server.Wait(), 0);
    EXPECT_EQ(std::count(codes.begin(), codes.end(), 0), 2);
    EXPECT_EQ(std::count(codes.begin(), codes.end(), static_cast<int>(KELP_MSG_STOPPED)), 4);
}

}  // namespace
