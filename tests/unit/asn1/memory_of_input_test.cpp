// What an input can make the process hold: a small multiple of its own size, however it
// is made up. The smallest elements, of two octets each, cost most.
#include <gtest/gtest.h>

#include <memory>

#include "support/asn1_coding.h"
#include "support/heap_meter.h"
#include "unit/asn1/shapes.h"

namespace asn1_test {
namespace {

using namespace support;

constexpr std::size_t kMultiple = 32;

using Lists = AsnSeqOf<ASNULList>;
using Chains = AsnSeqOf<Chain>;

// Reads without clearing afterwards, so that what a failed reading holds is seen too.
std::size_t HeldBy(std::string_view octets, AsnType& value) {
    const std::size_t before = support::HeapInUse();
    AsnReader in(octets.data(), octets.size());
    try {
        value.BDec(in);
    } catch (const CSM_Exception&) {
    }
    const std::size_t after = support::HeapInUse();
    return after > before ? after - before : 0;
}

TEST(MemoryOfInput, IsASmallMultipleOfTheInput) {
    const std::size_t many = 100'000;
    const auto list = [](std::string_view content) { return Element(0x30, content); };
    const struct {
        const char* name;
        std::string octets;
        std::unique_ptr<AsnType> value;
    } rows[] = {
        {"empty strings", list(Repeat(Octets("04 00"), many)), std::make_unique<Names>()},
        {"integers", list(Repeat(Octets("02 01 05"), many)), std::make_unique<ASNULList>()},
        {"empty lists", list(Repeat(Octets("30 00"), many)), std::make_unique<Lists>()},
        {"lists of one", list(Repeat(Octets("30 03 02 01 05"), many)), std::make_unique<Lists>()},
        {"lists of nine", list(Repeat(list(Repeat(Octets("02 01 05"), 9)), many)),
         std::make_unique<Lists>()},
        {"open lists of one", list(Repeat(Octets("30 80 02 01 05 00 00"), many)),
         std::make_unique<Lists>()},
        {"open lists of fourteen",
         list(Repeat(IndefiniteElement(0x30, Repeat(Octets("02 01 05"), 14)), many)),
         std::make_unique<Lists>()},
        {"empty records", list(Repeat(Octets("30 00"), many)), std::make_unique<Chains>()},
        {"records of one", list(Repeat(Octets("30 04 a0 02 30 00"), many)),
         std::make_unique<Chains>()},
        {"one string", Element(4, std::string(many * 10, 'x')), std::make_unique<AsnOcts>()},
        {"empty segments", Element(0x24, Repeat(Octets("04 00"), many)),
         std::make_unique<AsnOcts>()},
        {"segments of one", Element(0x24, Repeat(Octets("04 01 61"), many)),
         std::make_unique<AsnOcts>()},
        {"strings, and a wrong element at the end",
         list(Repeat(Octets("04 00"), many) + Octets("02 01 05")), std::make_unique<Names>()},
    };
    for (const auto& row : rows) {
        EXPECT_LE(HeldBy(row.octets, *row.value),
                  kMultiple * row.octets.size() + support::kHeapNoise)
            << row.name;
    }
}

// A length that lies reserves nothing.
TEST(MemoryOfInput, DoesNotDependOnWhatLengthsClaim) {
    const struct {
        const char* name;
        std::string octets;
        std::unique_ptr<AsnType> value;
    } rows[] = {
        {"a list of 16 MB with 3 octets", Octets("30 83 ff ff ff 02 01 05"),
         std::make_unique<ASNULList>()},
        {"a string of 2 GB", Octets("04 84 7f ff ff ff 61"), std::make_unique<AsnOcts>()},
        {"a string of 2^63", Octets("04 88 7f ff ff ff ff ff ff ff 61"),
         std::make_unique<AsnOcts>()},
        {"a segment of 2 GB", Octets("24 80 04 84 7f ff ff ff 61"), std::make_unique<AsnOcts>()},
    };
    for (const auto& row : rows) {
        EXPECT_LE(HeldBy(row.octets, *row.value), support::kHeapNoise) << row.name;
    }
}

}  // namespace
}  // namespace asn1_test
