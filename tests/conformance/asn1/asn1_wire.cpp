// Our runtime as a filter, for judges in other languages.
//
//   asn1_wire golden        prints the golden records, "TYPE HEX OUTLINE" a line
//   asn1_wire decode        reads "TYPE HEX" lines and answers each with
//                           "yes OUTLINE" or "no REASON"
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "support/asn1_coding.h"
#include "support/golden_records.h"
#include "support/record_outline.h"

namespace {

using namespace support;

int PrintGolden() {
    for (const GoldenRecord& golden : GoldenRecords()) {
        std::cout << golden.type << ' ' << OutlineOfOctets(golden.octets) << ' '
                  << Outline(*golden.value) << '\n';
    }
    return 0;
}

int DecodeLines() {
    std::string line;
    while (std::getline(std::cin, line)) {
        const std::size_t blank = line.find(' ');
        const std::unique_ptr<AsnType> record = MakeRecord(line.substr(0, blank));
        if (blank == std::string::npos || record == nullptr) {
            std::cerr << "asn1_wire: not a type and its octets: " << line << '\n';
            return 2;
        }
        const std::string why = Decode(Octets(std::string_view(line).substr(blank + 1)), *record);
        std::cout << (why.empty() ? "yes " + Outline(*record) : "no " + why) << '\n';
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 2 ? argv[1] : "";
    if (mode == "golden") {
        return PrintGolden();
    }
    if (mode == "decode") {
        return DecodeLines();
    }
    std::cerr << "usage: asn1_wire golden|decode\n";
    return 2;
}
