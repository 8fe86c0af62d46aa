// A table through every contestant: built, encoded, decoded, and the whole cycle with the
// destruction of both trees. Times are of the thread's CPU; of a phase, what came out of it
// is destroyed outside of the time. For ours encoding and decoding include making and
// destroying the records between tree and octets.

#include <benchmark/benchmark.h>

#include <string>

#include "support/clock.h"
#include "support/heap.h"
#include "table/asn1c.h"
#include "table/jsoncpp.h"
#include "table/nlohmann.h"
#include "table/null.h"
#include "table/ours.h"
#include "table/protobuf.h"

namespace bench {

namespace {

constexpr std::size_t kRows = 10'000;
constexpr std::size_t kManyRows = 100'000;

// Times `work`, which returns the seconds that one iteration took. The first one, which
// finds the allocators without memory if something else ran before, is told apart: a
// process that serves commands is warm, and a large table has few iterations to share it.
template <class Work>
void Measure(benchmark::State& state, std::size_t rows, Work work) {
    state.counters["first_ms"] = 1e3 * work();
    for (auto _ : state) {
        state.SetIterationTime(work());
    }
    state.counters["cells"] = static_cast<double>(rows * kColumns);
}

template <class Contestant>
void Build(benchmark::State& state, std::size_t rows) {
    const Table& table = SourceTable(rows);
    Contestant contestant;
    Measure(state, rows, [&] {
        const double start = ThreadSeconds();
        const auto tree = contestant.Build(table);
        return ThreadSeconds() - start;
    });
    const double before = HeapOctets();
    const auto tree = contestant.Build(table);
    state.counters["heap_a_cell"] = (HeapOctets() - before) / static_cast<double>(rows * kColumns);
}

template <class Contestant>
void Encode(benchmark::State& state, std::size_t rows) {
    Contestant contestant;
    const auto tree = contestant.Build(SourceTable(rows));
    std::size_t octets = 0;
    Measure(state, rows, [&] {
        const double start = ThreadSeconds();
        octets = contestant.Encode(*tree).size();
        return ThreadSeconds() - start;
    });
    state.counters["octets"] = static_cast<double>(octets);
}

template <class Contestant>
void Decode(benchmark::State& state, std::size_t rows) {
    Contestant contestant;
    const std::string octets(contestant.Encode(*contestant.Build(SourceTable(rows))));
    Measure(state, rows, [&] {
        const double start = ThreadSeconds();
        const auto tree = contestant.Decode(octets);
        return ThreadSeconds() - start;
    });
}

template <class Contestant>
void Cycle(benchmark::State& state, std::size_t rows) {
    const Table& table = SourceTable(rows);
    Contestant contestant;
    Measure(state, rows, [&] {
        const double start = ThreadSeconds();
        {
            auto tree = contestant.Build(table);
            const std::string_view octets = contestant.Encode(*tree);
            const auto copy = contestant.Decode(octets);
            benchmark::DoNotOptimize(copy.get());
        }
        return ThreadSeconds() - start;
    });
}

// What comes out of both ends is what went in, on the size that is measured.
template <class Contestant>
void Verify(std::size_t rows) {
    const Table& table = SourceTable(rows);
    Contestant contestant;
    const auto built = contestant.Build(table);
    Require(Contestant::Read(*built) == table, Contestant::kName, "the built table differs");
    const auto decoded = contestant.Decode(contestant.Encode(*built));
    Require(Contestant::Read(*decoded) == table, Contestant::kName, "the decoded table differs");
}

// Each reads what the other wrote. The octets may differ in REALs: asn1c does not always
// choose the shortest exponent and mantissa.
void VerifyEachOther(std::size_t rows) {
    const Table& table = SourceTable(rows);
    Ours ours;
    Asn1c peer;
    const auto built = ours.Build(table);
    const auto peer_built = peer.Build(table);
    Require(Asn1c::Read(*peer.Decode(ours.Encode(*built))) == table, "asn1c", "our octets differ");
    Require(Ours::Read(*ours.Decode(peer.Encode(*peer_built))) == table, "ours",
            "the octets of asn1c differ");
}

template <class Contestant>
void Register(std::size_t rows) {
    Verify<Contestant>(rows);
    const std::string suffix = std::string("/") + Contestant::kName + "/" + std::to_string(rows);
    const auto add = [&](const char* phase, void (*run)(benchmark::State&, std::size_t)) {
        benchmark::RegisterBenchmark((phase + suffix).c_str(), run, rows)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("build", Build<Contestant>);
    add("encode", Encode<Contestant>);
    add("decode", Decode<Contestant>);
    add("cycle", Cycle<Contestant>);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    VerifyEachOther(kRows);
    Register<Ours>(kRows);
    Register<OursAddRow>(kRows);
    Register<JsonCpp>(kRows);
    Register<Nlohmann>(kRows);
    Register<Protobuf>(kRows);
    Register<Asn1c>(kRows);
    Register<Null>(kRows);
    Register<Ours>(kManyRows);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
