// Sorting a table of 10,000 rows: ours; the exchanges one by one, as the order is defined;
// and for one key of distinct numbers std::sort on keys that have been extracted, rows not
// moved, which is the least that sorting can be.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <string>

#include "frameutil/table.h"
#include "support/check.h"
#include "support/clock.h"

namespace bench {

namespace {

using Rows = std::vector<std::vector<TEValue>>;

constexpr int kRows = 10'000;

// A scenario's rows: the key columns, and last the row's number, by which results are
// compared.
struct Scenario {
    const char* name;
    std::vector<int> keys;
    std::function<std::vector<TEValue>(std::mt19937_64&, int row)> make;
};

int Below(std::mt19937_64& random, unsigned limit) {
    return static_cast<int>(random() % limit);
}

const std::vector<Scenario>& Scenarios() {
    static const std::vector<Scenario> scenarios{
        {"distinct",
         {0},
         [](auto&, int row) {
             // Every number below a prime once, in no order.
             return std::vector<TEValue>{static_cast<int>((row + 1) * 7919L % 10007)};
         }},
        {"wide",
         {0},
         [](auto& random, int) { return std::vector<TEValue>{static_cast<long>(random())}; }},
        {"equal", {0}, [](auto& random, int) { return std::vector<TEValue>{Below(random, 20)}; }},
        {"text",
         {0},
         [](auto& random, int) {
             return std::vector<TEValue>{"port " + std::to_string(Below(random, 500))};
         }},
        {"two",
         {0, 1},
         [](auto& random, int) {
             return std::vector<TEValue>{Below(random, 1'000'000), Below(random, 1'000'000)};
         }},
        {"two_few",
         {0, 1},
         [](auto& random, int) {
             return std::vector<TEValue>{Below(random, 50), Below(random, 50)};
         }},
        {"two_text",
         {0, 1},
         [](auto& random, int) {
             return std::vector<TEValue>{"ne " + std::to_string(Below(random, 100)),
                                         Below(random, 1000)};
         }},
        {"three",
         {0, 1, 2},
         [](auto& random, int) {
             return std::vector<TEValue>{Below(random, 1000), Below(random, 1000),
                                         Below(random, 1000)};
         }},
    };
    return scenarios;
}

Rows MakeRows(const Scenario& scenario) {
    std::mt19937_64 random(20261121);
    Rows rows;
    for (int row = 0; row < kRows; ++row) {
        rows.push_back(scenario.make(random, row));
        rows.back().emplace_back(row);
    }
    return rows;
}

int Compare(const TEValue& left, const TEValue& right) {
    switch (left.GetType()) {
        case 13:
        case 14:
        case 15:
        case 16:
        case 23:
        case 24: {
            const long a = left.As_long();
            const long b = right.As_long();
            return a < b ? -1 : a > b;
        }
        case 25: {
            const unsigned long a = left.As_unsigned_long();
            const unsigned long b = right.As_unsigned_long();
            return a < b ? -1 : a > b;
        }
        default:
            return std::strcmp(left.As_TEString().c_str(), right.As_TEString().c_str());
    }
}

bool Precedes(const std::vector<TEValue>& a, const std::vector<TEValue>& b,
              const std::vector<int>& keys) {
    for (const int key : keys) {
        const auto col = static_cast<std::size_t>(key);
        if (Compare(a[col], b[col]) < 0) {
            return true;
        }
    }
    return false;
}

void Exchange(Rows& rows, const std::vector<int>& keys) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = i + 1; j < rows.size(); ++j) {
            if (!Precedes(rows[i], rows[j], keys)) {
                rows[i].swap(rows[j]);
            }
        }
    }
}

double OurSeconds(Rows& rows, const Scenario& scenario) {
    FrameUtil::CBMSTableObject table;
    table.GetTable()->swap(rows);
    std::vector<int> keys = scenario.keys;
    const double start = ThreadSeconds();
    table.Sort(keys, 0);
    const double seconds = ThreadSeconds() - start;
    rows.swap(*table.GetTable());
    return seconds;
}

double ExchangeSeconds(Rows& rows, const Scenario& scenario) {
    const double start = ThreadSeconds();
    Exchange(rows, scenario.keys);
    return ThreadSeconds() - start;
}

struct Extracted {
    long key;
    int row;
};

double StdSortSeconds(Rows& rows, const Scenario&) {
    std::vector<Extracted> keys;
    for (const auto& row : rows) {
        keys.push_back({row[0].As_long(), row.back().As_int()});
    }
    const double start = ThreadSeconds();
    std::sort(keys.begin(), keys.end(),
              [](const Extracted& a, const Extracted& b) { return a.key < b.key; });
    const double seconds = ThreadSeconds() - start;
    Rows sorted;
    for (const Extracted& key : keys) {
        sorted.push_back(std::move(rows[static_cast<std::size_t>(key.row)]));
    }
    rows.swap(sorted);
    return seconds;
}

using Contestant = double (*)(Rows&, const Scenario&);

std::vector<int> OrderOf(const Scenario& scenario, Contestant sort) {
    Rows rows = MakeRows(scenario);
    sort(rows, scenario);
    std::vector<int> order;
    for (const auto& row : rows) {
        order.push_back(row.back());
    }
    return order;
}

void Run(benchmark::State& state, const Scenario& scenario, Contestant sort) {
    const Rows rows = MakeRows(scenario);
    for (auto _ : state) {
        Rows copy = rows;
        state.SetIterationTime(sort(copy, scenario));
    }
}

void Register(const Scenario& scenario, const char* contestant, Contestant sort) {
    benchmark::RegisterBenchmark(
        (std::string(scenario.name) + "/" + contestant).c_str(),
        [&scenario, sort](benchmark::State& state) { Run(state, scenario, sort); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    for (const Scenario& scenario : Scenarios()) {
        const std::vector<int> order = OrderOf(scenario, ExchangeSeconds);
        Require(OrderOf(scenario, OurSeconds) == order, "ours", scenario.name);
        Register(scenario, "ours", OurSeconds);
        Register(scenario, "exchanges", ExchangeSeconds);
        if (std::strcmp(scenario.name, "distinct") == 0 ||
            std::strcmp(scenario.name, "wide") == 0) {
            Require(OrderOf(scenario, StdSortSeconds) == order, "std::sort", scenario.name);
            Register(scenario, "std_sort", StdSortSeconds);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
