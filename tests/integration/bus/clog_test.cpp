// Processes that stop reading for a while, one after the other, under calls that cross all
// of them: everybody gets its own answer or an error, and nothing is lost for good.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "server.h"

namespace {

using namespace bus_test;

constexpr unsigned kFirst = 70;
constexpr unsigned kServers = 5;
constexpr int kClients = 8;
constexpr int kRounds = 100;
constexpr int kCallsARound = 40;

// Asks a random server, directly or by way of another one, for the text back.
struct Client {
    std::mt19937 random;
    std::vector<std::unique_ptr<Server>>& servers;
    int number;
    int calls = 0;

    unsigned Pick() { return static_cast<unsigned>(random() % kServers); }

    // Whether the call ended as it may.
    bool Call() {
        const std::string text = std::to_string(number) + "." + std::to_string(calls++);
        const unsigned first = Pick();
        const unsigned second = Pick();
        std::string answer;
        const int code =
            first == second
                ? servers[first]->Ask(kEcho, text, &answer)
                : servers[first]->Ask(kRelay, std::to_string(kFirst + second) + " 1000 " + text,
                                      &answer);
        EXPECT_TRUE(code != 0 || answer == text || answer.starts_with("code "))
            << "asked for '" << text << "', got '" << answer << "'";
        return code == 0 && answer == text;
    }
};

TEST(BusClog, EveryCallEndsWithItsOwnAnswer) {
    Platform platform(KelpAppOptions(), kClients);
    std::vector<std::unique_ptr<Server>> servers;
    for (unsigned i = 0; i < kServers; ++i) {
        servers.push_back(std::make_unique<Server>(platform.RunDir(), kFirst + i, 1, 4));
        ASSERT_TRUE(servers.back()->Ready());
    }
    std::atomic<bool> done{false};
    std::atomic<int> ended{0};
    std::atomic<int> answered{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kClients; ++i) {
        threads.emplace_back([&, i] {
            Client client{std::mt19937(static_cast<unsigned>(i)), servers, i};
            while (!done) {
                answered += client.Call() ? 1 : 0;
                ++ended;
            }
        });
    }
    std::mt19937 random(42);
    for (int round = 0; round < kRounds; ++round) {
        const Server& clogged = *servers[random() % kServers];
        clogged.Freeze();
        // Until all that there is waits for it, or some calls that do not need it are over.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
        int before = ended;
        while (ended < before + kCallsARound && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        clogged.Signal(SIGCONT);
        before = ended;
        EXPECT_TRUE(Eventually([&] { return ended >= before + kCallsARound; })) << round;
    }
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(answered, kRounds * kCallsARound) << "of " << ended;
    for (const auto& server : servers) {
        EXPECT_EQ(server->Ask(kEcho, "after"), 0);
        EXPECT_EQ(server->Stop(), 0);
    }
}

}  // namespace
