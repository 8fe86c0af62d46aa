// Cells are written and read by code of their own: whatever it is given, it does what the
// walk over the description does.
#include <gtest/gtest.h>

#include <string>

#include "support/asn1_coding.h"
#include "support/golden_records.h"
#include "support/sweeps.h"

namespace FrameUtil {
namespace {

using namespace support;

struct Outcome {
    std::string failure;  // text, offset and unit
    std::string read;     // also what was read before a failure
    std::size_t offset = 0;
    bool operator==(const Outcome&) const = default;
};

// Reads one whole cell, its contents with `decode`.
template <class Decode>
Outcome ReadCell(std::string_view octets, Decode decode) {
    AsnValue cell;
    AsnReader in(octets.data(), octets.size());
    Outcome outcome;
    try {
        const AsnIdentifier identifier = in.ReadIdentifier();
        const AsnReader::Scope outer = in.Enter(identifier, cell.Unit());
        decode(cell, in);
        in.Leave(outer);
    } catch (const CSM_Exception& failure) {
        outcome.failure = failure.Describe();
    }
    outcome.read = Printed(cell);
    outcome.offset = in.Offset();
    return outcome;
}

void ExpectSame(std::string_view octets) {
    const Outcome own =
        ReadCell(octets, [](AsnValue& cell, AsnReader& in) { cell.BDecContent(in); });
    const Outcome walked =
        ReadCell(octets, [](AsnValue& cell, AsnReader& in) { cell.AsnSequence::BDecContent(in); });
    ASSERT_EQ(own.failure, walked.failure) << Hex(octets);
    ASSERT_EQ(own.read, walked.read) << Hex(octets);
    if (own.failure.empty()) {
        ASSERT_EQ(own.offset, walked.offset) << Hex(octets);
    }
}

TEST(CellCodec, ReadsWhatTheDescriptionReads) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        if (golden.type != "AsnValue" || golden.octets.size() > 400) {
            continue;
        }
        SCOPED_TRACE(golden.name);
        ExpectSame(golden.octets);
        EachTruncation(golden.octets, ExpectSame);
        if (golden.octets.size() < 40) {
            EachOctetReplaced(golden.octets, ExpectSame);
        } else {
            EachBitFlipped(golden.octets,
                           [](std::string_view flipped, std::size_t) { ExpectSame(flipped); });
        }
    }
}

TEST(CellCodec, ReadsOtherFormsThanItsOwn) {
    for (const char* octets :
         {"30 80 a1 03 02 01 05 00 00", "30 07 a1 80 02 01 05 00 00", "30 06 a1 04 02 81 01 05",
          "30 06 a1 81 03 02 01 05", "30 08 a3 06 24 04 04 00 04 00", "30 81 05 a1 03 02 01 05",
          "30 0a a1 03 02 01 05 a3 03 04 01 78", "30 05 a1 03 24 01 05", "30 02 a1 00"}) {
        ExpectSame(Octets(octets));
    }
}

TEST(CellCodec, WritesWhatTheDescriptionWrites) {
    for (const auto tags :
         {AsnSequence::ContextTags::kExplicit, AsnSequence::ContextTags::kImplicit}) {
        AsnSequence::SetContextTags(tags);
        for (const GoldenRecord& golden : GoldenRecords()) {
            const auto* cell = dynamic_cast<const AsnValue*>(golden.value.get());
            if (cell == nullptr) {
                continue;
            }
            AsnBuffer walked;
            cell->AsnSequence::BEncContent(walked);
            AsnBuffer own;
            cell->BEncContent(own);
            ASSERT_EQ(Hex({reinterpret_cast<const char*>(own.data()), own.size()}),
                      Hex({reinterpret_cast<const char*>(walked.data()), walked.size()}))
                << golden.name;
            AsnValue read;
            ASSERT_EQ(Decode(Encoded(*cell), read), "") << golden.name;
            ASSERT_EQ(Printed(read), Printed(*cell)) << golden.name;
        }
        ExpectSame(Octets("30 03 81 01 05"));
        ExpectSame(Octets("30 05 a1 03 02 01 05"));
    }
    AsnSequence::SetContextTags(AsnSequence::ContextTags::kExplicit);
}

}  // namespace
}  // namespace FrameUtil
