// The ten named scalars that travel as one command's arguments.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace bench {

struct Arguments {
    std::array<std::int32_t, 4> integers = {17, -40'000, 2'147'483'647, 0};
    std::array<double, 2> doubles = {0.25, 1234.567};
    std::array<std::string, 4> texts = {"tokyo-1", "GigabitEthernet0/3/12", "administrator",
                                        "planned maintenance, ask shift lead"};

    bool operator==(const Arguments&) const = default;
};

inline constexpr std::array<const char*, 4> kIntegerNames = {"port", "offset", "limit", "flags"};
inline constexpr std::array<const char*, 2> kDoubleNames = {"threshold", "rate"};
inline constexpr std::array<const char*, 4> kTextNames = {"ne", "interface", "operator", "comment"};

}  // namespace bench
