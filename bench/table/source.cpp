#include "table/source.h"

#include <map>
#include <random>
#include <string_view>

namespace bench {

namespace {

// The engine's numbers are fixed by the standard, those of its distributions are not.
class Random {
  public:
    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(engine_() % bound);
    }
    std::int32_t Integer() { return static_cast<std::int32_t>(engine_()); }
    double Rate() { return Below(2'000'000'000) / 1000.0; }
    std::string Text() {
        constexpr std::string_view kOctets =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.";
        std::string text(6 + Below(35), ' ');
        for (char& c : text) {
            c = kOctets[Below(kOctets.size())];
        }
        return text;
    }

  private:
    std::mt19937 engine_{20240229};
};

Table MakeTable(std::size_t rows) {
    Random random;
    Table table(rows);
    for (Row& row : table) {
        row.index = random.Integer();
        row.mtu = static_cast<std::int32_t>(random.Below(10'000));
        row.rx_rate = random.Rate();
        row.tx_rate = random.Rate();
        for (std::string& text : row.texts) {
            text = random.Text();
        }
    }
    return table;
}

}  // namespace

const Table& SourceTable(std::size_t rows) {
    static std::map<std::size_t, Table> tables;
    Table& table = tables[rows];
    if (table.empty()) {
        table = MakeTable(rows);
    }
    return table;
}

}  // namespace bench
