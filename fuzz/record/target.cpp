// Any octets as a common request and as a common response: what is accepted reads back
// from its own encoding, becomes a parameter tree and records again, and none of it
// holds more memory than the input accounts for.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "frameutil/paraset.h"
#include "frameutil/records.h"
#include "require.h"
#include "support/heap_meter.h"

namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnCommonResponse;
using FrameUtil::CParaSet;

std::string Encoding(const AsnType& value) {
    AsnBuffer out;
    Require(AsnEncode(value, out), "an accepted record does not encode");
    return {reinterpret_cast<const char*>(out.data()), out.size()};
}

// A column may be named like the row count: what such a table claims is not what it has.
void BoundRowCount(CParaSet& table) {
    if (CParaSet* count = table.find("##RowCount"); count != nullptr && count->asInt() > 100) {
        *count = 100;
    }
}

void Convert(AsnCommonRequest& record, CParaSet& tree) {
    tree.CommonReqAsn2Para(record);
}
void Convert(AsnCommonResponse& record, CParaSet& tree) {
    tree.CommonRspAsn2Para(record);
}
void Convert(CParaSet& tree, AsnCommonRequest& record) {
    tree.Para2CommonReqAsn(record);
}
void Convert(CParaSet& tree, AsnCommonResponse& record) {
    tree.Para2CommonRspAsn(record);
}

// A node is worth a few cells; null slots that short rows leave are bounded as well.
constexpr std::size_t kTreeMultiple = 256;
constexpr std::size_t kTreeSpare = std::size_t{2} << 20;

template <class Record>
void ThroughATree(Record& record, std::size_t size) {
    CParaSet tree("root");
    try {
        const std::size_t before = support::HeapInUse();
        Convert(record, tree);
        Require(support::HeapInUse() <= before + kTreeMultiple * size + kTreeSpare,
                "a tree holds too much memory");
        BoundRowCount(tree);
        for (auto& [name, child] : tree.GetMapValue()) {
            if (child != nullptr) {
                BoundRowCount(*child);
            }
        }
        Record written;
        Convert(tree, written);
        const std::string octets = Encoding(written);
        Record read;
        Require(AsnDecode(octets.data(), octets.size(), read), "a tree's record is refused");
        Require(Encoding(read) == octets, "a tree's record changes when it is read");
    } catch (const FrameUtil::FRexception&) {
        // A column that contradicts a header or another column is refused this way.
    }
}

template <class Record>
void Check(const std::uint8_t* data, std::size_t size) {
    Record record;
    const std::size_t before = support::HeapInUse();
    std::string why;
    if (!AsnDecode(data, size, record, &why)) {
        Require(!why.empty(), "a refusal without a reason");
        Require(Encoding(record) == Encoding(Record()), "a refused record is not cleared");
        return;
    }
    Require(support::HeapInUse() <= before + 32 * size + support::kHeapNoise,
            "a record holds too much memory");
    const std::string octets = Encoding(record);
    // Definite lengths in their shortest form are never longer than what was read, except
    // that a REAL in few characters may have a mantissa of many octets.
    Require(octets.size() <= 4 * size, "an encoding is longer than what was read");
    Record again;
    Require(AsnDecode(octets.data(), octets.size(), again), "an encoding is refused");
    Require(Encoding(again) == octets, "an encoding changes when it is read");
    std::ostringstream printed;
    again.Print(printed);
    Require(!printed.str().empty(), "nothing is printed");
    ThroughATree(record, size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Check<AsnCommonRequest>(data, size);
    Check<AsnCommonResponse>(data, size);
    return 0;
}
