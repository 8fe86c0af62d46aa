#include "bus/roles.h"

#include <chrono>
#include <iostream>
#include <string_view>

#include "support/check.h"

namespace bench {

namespace {

void Ready() {
    std::cout << "ready" << std::endl;
}

void Ask(const Contestant& contestant, const Line& line, unsigned seed, double seconds) {
    using Clock = std::chrono::steady_clock;
    const auto client = contestant.connect(line);
    const std::string payload = Payload(line, seed);
    std::string answer;
    ExchangeAndCheck(*client, payload, answer, contestant.name);
    Ready();
    std::string go;
    std::getline(std::cin, go);
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    long answers = 0;
    for (; Clock::now() < end; ++answers) {
        ExchangeAndCheck(*client, payload, answer, contestant.name);
    }
    std::cout << answers << std::endl;
}

void Count(const Contestant& contestant, const Line& line, long requests) {
    const auto client = contestant.connect(line);
    const std::string payload = Payload(line, 1);
    std::string answer;
    for (; requests != 0; --requests) {
        ExchangeAndCheck(*client, payload, answer, contestant.name);
    }
}

}  // namespace

const Contestant& ContestantOf(const std::string& name) {
    for (const Contestant* contestant : {&kOurs, &kUnixSocket, &kZeroMq}) {
        if (name == contestant->name) {
            return *contestant;
        }
    }
    Require(false, name.c_str(), "no such contestant");
    return kOurs;
}

std::string Payload(const Line& line, unsigned seed) {
    std::string payload(line.octets, '\0');
    for (char& c : payload) {
        seed = seed * 1103515245 + 12345;
        c = static_cast<char>(seed >> 16);
    }
    return payload;
}

void ExchangeAndCheck(Client& client, const std::string& payload, std::string& answer,
                      const char* contestant) {
    client.Exchange(payload, answer);
    Require(answer == payload, contestant, "the answer differs");
}

bool RunRole(int argc, char** argv) {
    const std::string_view role = argc > 1 ? argv[1] : "";
    if (argc < 5 || (role != "serve" && role != "ask" && role != "count")) {
        return false;
    }
    const Contestant& contestant = ContestantOf(argv[2]);
    const Line line{argv[3], std::stoul(argv[4])};
    if (role == "serve") {
        contestant.serve(line, Ready);
    } else if (role == "ask" && argc == 7) {
        Ask(contestant, line, static_cast<unsigned>(std::stoul(argv[5])), std::stod(argv[6]));
    } else if (role == "count" && argc == 6) {
        Count(contestant, line, std::stol(argv[5]));
    } else {
        return false;
    }
    return true;
}

}  // namespace bench
