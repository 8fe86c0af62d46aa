// Reading every cell of a table of 20 columns by its column's name, beside reading it by the
// column's index; and the memory that a cell takes, beside a row of std::variant.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "frameutil/table.h"
#include "support/check.h"
#include "support/clock.h"
#include "support/heap.h"

namespace bench {

namespace {

using FrameUtil::CBMSTableObject;

constexpr int kRows = 1'000;
constexpr int kCols = 20;

// As columns of a database are called.
const char* const kNames[kCols] = {"id",          "ne_id",        "name",        "display_name",
                                   "ip_address",  "netmask",      "mac_address", "mtu",
                                   "speed",       "admin_status", "oper_status", "last_change",
                                   "description", "vendor",       "model",       "serial_no",
                                   "software",    "location",     "contact",     "remark"};

const CBMSTableObject& Source() {
    static const std::unique_ptr<CBMSTableObject> table = [] {
        auto made =
            std::make_unique<CBMSTableObject>(std::vector<std::string>(kNames, kNames + kCols));
        made->AddRow(kRows);
        for (int row = 0; row < kRows; ++row) {
            for (int col = 0; col < kCols; ++col) {
                made->SetCellValue(col, row, TEValue(row * kCols + col));
            }
        }
        return made;
    }();
    return *table;
}

long SumByIndex() {
    const CBMSTableObject& table = Source();
    long sum = 0;
    for (int row = 0; row < kRows; ++row) {
        for (int col = 0; col < kCols; ++col) {
            sum += table.GetCellValue(col, row).As_long();
        }
    }
    return sum;
}

long SumByName() {
    const CBMSTableObject& table = Source();
    long sum = 0;
    for (int row = 0; row < kRows; ++row) {
        for (const char* name : kNames) {
            sum += table.GetCellValue(name, row).As_long();
        }
    }
    return sum;
}

void Access(benchmark::State& state, long (*sum)()) {
    for (auto _ : state) {
        const double start = ThreadSeconds();
        benchmark::DoNotOptimize(sum());
        state.SetIterationTime(ThreadSeconds() - start);
    }
    state.counters["cells"] = kRows * kCols;
}

using Variant = std::variant<long, double, std::string>;

const std::string kText = "GigabitEth 0/1/7";  // 16 octets

// Both lists of rows hold the same.
std::unique_ptr<CBMSTableObject> OurCells(bool text) {
    auto table =
        std::make_unique<CBMSTableObject>(std::vector<std::string>(kNames, kNames + kCols));
    table->AddRow(kRows);
    for (int row = 0; row < kRows; ++row) {
        for (int col = 0; col < kCols; ++col) {
            table->SetCellValue(col, row, text ? TEValue(kText) : TEValue(long{row} * col));
        }
    }
    return table;
}

using Variants = std::vector<std::vector<Variant>>;

std::unique_ptr<Variants> VariantCells(bool text) {
    auto rows = std::make_unique<Variants>();
    rows->resize(kRows);
    for (int row = 0; row < kRows; ++row) {
        auto& cells = (*rows)[static_cast<std::size_t>(row)];
        cells.resize(kCols);
        for (int col = 0; col < kCols; ++col) {
            Variant& cell = cells[static_cast<std::size_t>(col)];
            if (text) {
                cell = kText;
            } else {
                cell = long{row} * col;
            }
        }
    }
    return rows;
}

template <class Make>
void Memory(benchmark::State& state, Make make) {
    const double before = HeapOctets();
    const auto cells = make();
    state.counters["heap_a_cell"] = (HeapOctets() - before) / (kRows * kCols);
    for (auto _ : state) {
        const double start = ThreadSeconds();
        const auto again = make();
        state.SetIterationTime(ThreadSeconds() - start);
    }
    state.counters["cells"] = kRows * kCols;
}

void VerifyCells(bool text) {
    const auto ours = OurCells(text);
    const auto theirs = VariantCells(text);
    for (int row = 0; row < kRows; ++row) {
        for (int col = 0; col < kCols; ++col) {
            const TEValue& cell = ours->GetCellValue(col, row);
            const Variant& other =
                (*theirs)[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
            Require(text ? cell.As_std_string() == std::get<std::string>(other)
                         : cell.As_long() == std::get<long>(other),
                    "variant", "a cell differs");
        }
    }
}

template <class Work>
void Register(const char* name, Work work) {
    benchmark::RegisterBenchmark(name, work)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    Require(SumByName() == SumByIndex(), "by name", "the sums differ");
    Register("access/name", [](benchmark::State& state) { Access(state, SumByName); });
    Register("access/index", [](benchmark::State& state) { Access(state, SumByIndex); });
    for (const bool text : {false, true}) {
        VerifyCells(text);
        const std::string phase = text ? "text" : "integer";
        Register((phase + "/ours").c_str(), [text](benchmark::State& state) {
            Memory(state, [text] { return OurCells(text); });
        });
        Register((phase + "/variant").c_str(), [text](benchmark::State& state) {
            Memory(state, [text] { return VariantCells(text); });
        });
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
