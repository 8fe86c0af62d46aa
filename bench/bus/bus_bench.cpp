// One request to another process and its answer: the time of a round trip with both
// processes on one CPU, and the requests a second of eight clients at once.
//
// An idle CPU takes longer to wake than any of this takes, so a single client is measured
// on one CPU: then a round trip costs what its code and its switches between processes
// cost. Eight clients keep all CPUs busy and run where they like.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bus/process.h"
#include "bus/roles.h"
#include "support/clock.h"

namespace bench {

namespace {

constexpr int kClients = 8;
constexpr double kSeconds = 1.5;

std::vector<std::string> Arguments(const char* role, const Contestant& contestant,
                                   const Line& line) {
    return {role, contestant.name, line.folder, std::to_string(line.octets)};
}

void RoundTrip(benchmark::State& state, const Contestant& contestant, std::size_t octets) {
    const OneCpu pinned;
    const Folder folder;
    const Line line{folder.path(), octets};
    Process server(Arguments("serve", contestant, line));
    server.ReadLine();
    const auto client = contestant.connect(line);
    const std::string payload = Payload(line, 1);
    std::string answer;
    ExchangeAndCheck(*client, payload, answer, contestant.name);
    const auto cpu_seconds = [&server] {
        return SecondsOf(CLOCK_PROCESS_CPUTIME_ID) + server.CpuSeconds();
    };
    const double before = cpu_seconds();
    for (auto _ : state) {
        ExchangeAndCheck(*client, payload, answer, contestant.name);
    }
    // What both sides' threads and their system calls took: on a quiet machine nearly the
    // round trip, on a busy one the truer figure.
    state.counters["cpu_us"] =
        1e6 * (cpu_seconds() - before) / static_cast<double>(state.iterations());
}

void EightClients(benchmark::State& state, const Contestant& contestant, std::size_t octets) {
    const Folder folder;
    const Line line{folder.path(), octets};
    Process server(Arguments("serve", contestant, line));
    server.ReadLine();
    std::vector<std::unique_ptr<Process>> clients;
    for (int i = 0; i < kClients; ++i) {
        auto arguments = Arguments("ask", contestant, line);
        arguments.push_back(std::to_string(i + 1));
        arguments.push_back(std::to_string(kSeconds));
        clients.push_back(std::make_unique<Process>(arguments));
    }
    for (const auto& client : clients) {
        client->ReadLine();
    }
    double answers = 0;
    for (auto _ : state) {
        for (const auto& client : clients) {
            client->WriteLine("go");
        }
        for (const auto& client : clients) {
            answers += std::stod(client->ReadLine());
        }
        state.SetIterationTime(kSeconds);
    }
    state.counters["requests_per_second"] = answers / kSeconds;
}

void Register(const Contestant& contestant) {
    for (const std::size_t octets : {std::size_t{100}, std::size_t{10'000}}) {
        const std::string suffix =
            std::string("/") + contestant.name + "/" + std::to_string(octets);
        benchmark::RegisterBenchmark(("roundtrip" + suffix).c_str(), RoundTrip, contestant, octets)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("clients" + suffix).c_str(), EightClients, contestant, octets)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    if (RunRole(argc, argv)) {
        return 0;
    }
    for (const Contestant* contestant : {&kOurs, &kUnixSocket, &kZeroMq}) {
        Register(*contestant);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
