// What every contestant codes: some named scalars beside a list of records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Port {
    std::int32_t index;
    std::int32_t mtu;
    double rate;
    std::string name;
    std::string location;

    bool operator==(const Port&) const = default;
};

struct Element {
    std::vector<std::int32_t> integers;  // named "i0", "i1", ...
    std::vector<double> doubles;         // "d0", ...
    std::vector<std::string> texts;      // "t0", ...
    std::vector<Port> ports;             // "ports", absent when there are none

    bool operator==(const Element&) const = default;
};

/// `scalars` named scalars (two integers, a double and two texts in turn) and `ports` records.
inline Element MakeElement(int scalars, int ports) {
    Element element;
    for (int i = 0; i < scalars; ++i) {
        switch (i % 5) {
            case 0:
            case 3:
                element.integers.push_back(i % 2 == 0 ? 100 + i : -70'000 * i);
                break;
            case 1:
                element.doubles.push_back(0.25 + 1.001 * i);
                break;
            default:
                element.texts.push_back("GigabitEthernet0/3/" + std::to_string(i));
        }
    }
    for (int i = 0; i < ports; ++i) {
        element.ports.push_back({i, 1500 + i % 7, 1234.567 * i, "eth" + std::to_string(i),
                                 "rack " + std::to_string(i % 40) + ", shelf 2, row 17"});
    }
    return element;
}

/// Calls with each scalar's name and value.
template <class Visit>
void ForEachScalar(const Element& element, Visit visit) {
    for (std::size_t i = 0; i < element.integers.size(); ++i) {
        visit("i" + std::to_string(i), element.integers[i]);
    }
    for (std::size_t i = 0; i < element.doubles.size(); ++i) {
        visit("d" + std::to_string(i), element.doubles[i]);
    }
    for (std::size_t i = 0; i < element.texts.size(); ++i) {
        visit("t" + std::to_string(i), element.texts[i]);
    }
}

}  // namespace bench
