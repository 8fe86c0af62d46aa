// Identifiers of five pairs and lists of twenty items. CPU time of the thread.

#include <benchmark/benchmark.h>

#include <string>

#include "strutil/contestants.h"
#include "support/allocations.h"
#include "support/check.h"

namespace bench {

namespace {

// Values without anything to escape: a name of both grammars.
const Pairs kPlain{{"net", "OsloMetro"},
                   {"ne", "10-44-7-213"},
                   {"shelf", "2"},
                   {"board", "EthernetSwitch 9"},
                   {"port", "GigabitEthernet0/2/17"}};
const Pairs kEscaped{{"net", "Oslo,Metro"},
                     {"ne", "10.44.7.213"},
                     {"path", "C:\\boot\\image"},
                     {"label", "speed=1000,duplex=full"},
                     {"port", "GigabitEthernet0/2/17"}};

Items MakeItems() {
    Items items;
    for (int i = 0; i < 20; ++i) {
        items.push_back("GigabitEthernet0/2/" + std::to_string(i * 7));
    }
    return items;
}

template <class Work>
void Register(const std::string& phase, const char* contestant, Work work) {
    benchmark::RegisterBenchmark((phase + "/" + contestant).c_str(), [=](benchmark::State& state) {
        const long before = Allocations();
        long rounds = 0;
        for (auto _ : state) {
            work();
            ++rounds;
        }
        state.counters["allocations"] =
            static_cast<double>(Allocations() - before) / static_cast<double>(rounds);
    });
}

template <class Contestant>
void RegisterParse(const std::string& text) {
    const auto parse = [=] {
        std::string board, net;
        Contestant::Parse(text, "board", "net", board, net);
        benchmark::DoNotOptimize(board);
        benchmark::DoNotOptimize(net);
    };
    std::string board, net;
    Contestant::Parse(text, "board", "net", board, net);
    Require(board == "EthernetSwitch 9" && net == "OsloMetro", Contestant::kName,
            "the values differ");
    Register("uid parse", Contestant::kName, parse);
}

template <class Contestant>
void RegisterBuild(const std::string& expected) {
    Require(Contestant::Build(kEscaped) == expected, Contestant::kName, "the text differs");
    Register("uid build", Contestant::kName, [] {
        const std::string built = Contestant::Build(kEscaped);
        benchmark::DoNotOptimize(built.data());
    });
}

template <class Contestant>
void RegisterList(const Items& items, const std::string& expected) {
    Items back;
    Contestant::Split(expected, [&](const std::string& item) { back.push_back(item); });
    Require(Contestant::Join(items) == expected && back == items, Contestant::kName,
            "the list differs");
    Register("list", Contestant::kName, [=] {
        Contestant::Split(Contestant::Join(items),
                          [](const std::string& item) { benchmark::DoNotOptimize(item.data()); });
    });
}

void RegisterNull(const std::string& phase, const std::string& text) {
    Register(phase, Null::kName, [=] {
        const std::string copy = Null::Copy(text);
        benchmark::DoNotOptimize(copy.data());
    });
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    const std::string plain = Ours::Build(kPlain);
    RegisterParse<Ours>(plain);
    RegisterParse<Ldap>(plain);
    RegisterNull("uid parse", plain);

    const std::string escaped =
        "net=Oslo\\cMetro,ne=10.44.7.213,path=C:\\\\boot\\\\image,label="
        "speed\\e1000\\cduplex\\efull,"
        "port=GigabitEthernet0/2/17";
    RegisterBuild<Ours>(escaped);
    RegisterBuild<Streams>(escaped);
    RegisterNull("uid build", escaped);

    const Items items = MakeItems();
    const std::string joined = Ours::Join(items);
    RegisterList<Ours>(items, joined);
    RegisterList<Streams>(items, joined);
    RegisterNull("list", joined);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
