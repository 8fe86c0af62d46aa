// A request of ten named scalars, both ways: tree, octets, tree, with the destruction of
// the fresh tree. Times are of the thread's CPU.

#include <benchmark/benchmark.h>

#include <string>

#include "request/contestants.h"
#include "support/check.h"

namespace bench {

namespace {

template <class Contestant>
void BothWays(benchmark::State& state) {
    Contestant contestant;
    const auto tree = contestant.Build(Arguments());
    for (auto _ : state) {
        auto copy = Contestant::Empty();
        contestant.Send(*tree, copy);
        benchmark::DoNotOptimize(copy);
    }
    state.counters["octets"] = static_cast<double>(contestant.Octets());
}

template <class Contestant>
void Register() {
    Contestant contestant;
    const auto tree = contestant.Build(Arguments());
    auto copy = Contestant::Empty();
    contestant.Send(*tree, copy);
    Require(Contestant::Read(copy) == Arguments(), Contestant::kName, "the arguments differ");
    benchmark::RegisterBenchmark((std::string("request/") + Contestant::kName).c_str(),
                                 BothWays<Contestant>)
        ->Unit(benchmark::kNanosecond);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    bench::Register<bench::Ours>();
    bench::Register<bench::JsonCpp>();
    bench::Register<bench::Null>();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
