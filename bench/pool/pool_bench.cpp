// Small blocks of random sizes: 1,000 are live, a pair returns one and takes another. The
// program is built twice: in a process that never had a second thread, and
// (BENCH_WITH_THREADS) in one that has, with one and with two threads at work.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "pool/contestants.h"
#include "support/check.h"

namespace bench {

namespace {

constexpr std::size_t kLive = 1000;
constexpr std::size_t kSteps = 8192;

struct Step {
    unsigned short slot;
    unsigned short size;
};

std::vector<Step> MakeSteps(unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Step> steps(kSteps);
    for (Step& step : steps) {
        step = {static_cast<unsigned short>(random() % kLive),
                static_cast<unsigned short>(4 + random() % 125)};
    }
    return steps;
}

struct Live {
    char* block;
    std::size_t size;
};

template <class Contestant>
Live Take(std::size_t size) {
    auto* const block = static_cast<char*>(Contestant::Take(size));
    block[0] = static_cast<char>(size);
    return {block, size};
}

template <class Contestant>
std::vector<Live> TakeAll(const std::vector<Step>& steps) {
    std::vector<Live> live;
    for (std::size_t i = 0; i < kLive; ++i) {
        live.push_back(Take<Contestant>(steps[i].size));
    }
    return live;
}

template <class Contestant>
void ReturnAll(const std::vector<Live>& live) {
    for (const Live& one : live) {
        Contestant::Return(one.block, one.size);
    }
}

template <class Contestant>
void Pairs(benchmark::State& state) {
    const std::vector<Step> steps = MakeSteps(static_cast<unsigned>(state.thread_index()));
    std::vector<Live> live = TakeAll<Contestant>(steps);
    std::size_t at = 0;
    for (auto _ : state) {
        const Step step = steps[at++ % kSteps];
        Live& slot = live[step.slot];
        Contestant::Return(slot.block, slot.size);
        slot = Take<Contestant>(step.size);
    }
    ReturnAll<Contestant>(live);
}

// Blocks do not overlap: each is full of its own pattern until it goes.
template <class Contestant>
void Check() {
    const std::vector<Step> steps = MakeSteps(1);
    std::vector<Live> live = TakeAll<Contestant>(steps);
    const auto fill = [](const Live& one, std::size_t slot) {
        std::memset(one.block, static_cast<int>(slot), one.size);
    };
    for (std::size_t i = 0; i < kLive; ++i) {
        fill(live[i], i);
    }
    for (const Step& step : steps) {
        Live& slot = live[step.slot];
        const std::string expected(slot.size, static_cast<char>(step.slot));
        Require(std::memcmp(slot.block, expected.data(), slot.size) == 0, Contestant::kName,
                "a block was overwritten");
        Contestant::Return(slot.block, slot.size);
        slot = Take<Contestant>(step.size);
        fill(slot, step.slot);
    }
    ReturnAll<Contestant>(live);
}

template <class Contestant>
void Register() {
    if (std::string(Contestant::kName) != "null") {
        Check<Contestant>();
    }
#ifdef BENCH_WITH_THREADS
    for (const int threads : {1, 2}) {
        benchmark::RegisterBenchmark(
            ("pool " + std::to_string(threads) + "/" + Contestant::kName).c_str(),
            Pairs<Contestant>)
            ->Threads(threads)
            ->UseRealTime();
    }
#else
    benchmark::RegisterBenchmark((std::string("pool 0/") + Contestant::kName).c_str(),
                                 Pairs<Contestant>);
#endif
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
#ifdef BENCH_WITH_THREADS
    std::atomic<bool> done{false};
    std::thread other([&] { done.wait(false); });
#endif
    bench::Register<bench::Ours>();
    bench::Register<bench::Glibc>();
    bench::Register<bench::BoostPools>();
    bench::Register<bench::Null>();
    benchmark::Initialize(&argc, argv);
    const bool bad = benchmark::ReportUnrecognizedArguments(argc, argv);
    if (!bad) {
        benchmark::RunSpecifiedBenchmarks();
    }
#ifdef BENCH_WITH_THREADS
    done = true;
    done.notify_one();
    other.join();
#endif
    return bad ? 1 : 0;
}
