// The table that every contestant works on: pseudo-random, the same in every run.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::size_t kColumns = 8;
inline constexpr std::array<const char*, kColumns> kColumnNames = {
    "index", "mtu", "rxRate", "txRate", "name", "alias", "vendor", "location"};

struct Row {
    std::int32_t index;
    std::int32_t mtu;
    double rx_rate;  // three decimals, as measured rates have: short texts for who writes text
    double tx_rate;
    std::array<std::string, 4> texts;  // 6 to 40 letters and digits: nothing to escape

    bool operator==(const Row&) const = default;
};

using Table = std::vector<Row>;

/// The table of `rows` rows, made once and kept.
const Table& SourceTable(std::size_t rows);

}  // namespace bench
