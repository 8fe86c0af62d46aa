// Parameter sets to octets and back by the codec: a message of ten named scalars, a record
// with a list of 1,000 structures, and the first without a description, as a list of 5,000
// named values as well; then how the time an element takes grows. CPU time of the thread.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "codec/contestants.h"
#include "support/allocations.h"
#include "support/check.h"

namespace bench {

namespace {

template <class Contestant>
void Encode(benchmark::State& state, const Element& element) {
    Contestant contestant(element);
    const auto tree = Contestant::Build(element);
    std::size_t octets = contestant.Encode(*tree).size();
    const long before = Allocations();
    long rounds = 0;
    for (auto _ : state) {
        const auto encoded = contestant.Encode(*tree);
        benchmark::DoNotOptimize(encoded.data());
        ++rounds;
    }
    state.counters["allocations"] =
        static_cast<double>(Allocations() - before) / static_cast<double>(rounds);
    state.counters["octets"] = static_cast<double>(octets);
}

template <class Contestant>
void Decode(benchmark::State& state, const Element& element) {
    Contestant contestant(element);
    const auto tree = Contestant::Build(element);
    const auto encoded = contestant.Encode(*tree);
    for (auto _ : state) {
        auto copy = contestant.Decode(encoded);
        benchmark::DoNotOptimize(copy);
    }
}

template <class Contestant>
void Register(const std::string& scenario, const Element& element, bool parses = true) {
    Contestant contestant(element);
    const auto tree = Contestant::Build(element);
    auto copy = contestant.Decode(contestant.Encode(*tree));
    Require(Contestant::Read(copy, element) == element, Contestant::kName, "the element differs");
    const auto name = [&](const char* phase) {
        return scenario + ' ' + phase + '/' + Contestant::kName;
    };
    benchmark::RegisterBenchmark(name("build").c_str(), [=](benchmark::State& state) {
        Encode<Contestant>(state, element);
    });
    if (parses) {
        benchmark::RegisterBenchmark(name("parse").c_str(), [=](benchmark::State& state) {
            Decode<Contestant>(state, element);
        });
    }
}

template <class Ours>
void RegisterAll(const std::string& scenario, const Element& element) {
    Register<Ours>(scenario, element);
    Register<JsonCpp>(scenario, element);
    Register<NlohmannCbor>(scenario, element);
    Register<Msgpack>(scenario, element, false);
}

// ---- growth

// Structures that hold a number each: as elements of one list, as named children (25 in
// each of the elements of a list), or each the named child of the one before.
enum class Shape { kList, kFlat, kNested };
constexpr int kInEach = 25;

struct Growth {
    const char* name;
    Shape shape;
    int count;

    // Structures and numbers, which is what time is told by.
    int Elements() const { return 2 * count; }
    int Key() const { return shape == Shape::kNested ? 4001 : 4000; }
};

std::unique_ptr<FrameUtil::CEndeCode> DescribeGrowth(const Growth& growth) {
    char path[] = "/tmp/bench.codec.XXXXXX";
    const int descriptor = mkstemp(path);
    std::ofstream file(path);
    file << "4000 0 all 257 " << (growth.shape == Shape::kFlat ? 4998 : 4999)
         << " -1\n4000 0 none 2 -1 128\n4999 0 level 2 -1 -1\n";
    for (int i = 0; i < kInEach; ++i) {
        file << "4998 0 child" << i << " 4999 -1 -1\n";
    }
    file << "4001 0 level 2 -1 -1\n4001 0 next 4001 -1 160\n";
    file.close();
    close(descriptor);
    auto codec = std::make_unique<FrameUtil::CEndeCode>(path);
    std::remove(path);
    return codec;
}

std::unique_ptr<FrameUtil::CParaSet> GrowthTree(const Growth& growth) {
    auto root = std::make_unique<FrameUtil::CParaSet>("root");
    FrameUtil::CParaSet* node = root.get();
    for (int i = 0; i < growth.count; ++i) {
        switch (growth.shape) {
            case Shape::kList:
                (*root)["all"][i]["level"] = i;
                break;
            case Shape::kFlat:
                (*root)["all"][i / kInEach]["child" + std::to_string(i % kInEach)]["level"] = i;
                break;
            case Shape::kNested:
                (*node)["level"] = i;
                node = i + 1 < growth.count ? &(*node)["next"] : node;
        }
    }
    return root;
}

void RegisterGrowth(const Growth& growth) {
    const int key = growth.Key();
    const auto run = [=](benchmark::State& state, bool parse) {
        const auto codec = DescribeGrowth(growth);
        const auto tree = GrowthTree(growth);
        std::vector<unsigned char> octets(1 << 21);
        const auto build = [&] {
            int left = static_cast<int>(octets.size());
            const unsigned char* end = codec->build(*tree, octets.data(), left, key, -1, -1);
            Require(end != nullptr, "ours", "the structures do not encode");
            return end;
        };
        const unsigned char* const end = build();
        for (auto _ : state) {
            if (parse) {
                FrameUtil::CParaSet copy("root");
                int rest = static_cast<int>(end - octets.data());
                Require(codec->parse(copy, octets.data(), rest, key, -1, -1) == end, "ours",
                        "the structures do not decode");
            } else {
                build();
            }
        }
        state.counters["elements"] = growth.Elements();
    };
    for (const bool parse : {false, true}) {
        benchmark::RegisterBenchmark(
            (std::string(parse ? "growth parse/" : "growth build/") + growth.name).c_str(),
            [=](benchmark::State& state) { run(state, parse); });
    }
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    bench::RegisterAll<bench::Described>("message", bench::MakeElement(10, 0));
    bench::RegisterAll<bench::Described>("records", bench::MakeElement(3, 1000));
    bench::RegisterAll<bench::Undescribed>("message undescribed", bench::MakeElement(10, 0));
    bench::RegisterAll<bench::Undescribed>("values undescribed", bench::MakeElement(5000, 0));
    using bench::Shape;
    for (const bench::Growth& growth : {bench::Growth{"depth 3", Shape::kFlat, 100},
                                        bench::Growth{"depth 100", Shape::kNested, 100},
                                        bench::Growth{"1000 elements", Shape::kList, 500},
                                        bench::Growth{"100000 elements", Shape::kList, 50'000}}) {
        bench::RegisterGrowth(growth);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
