// Sweeps over the golden records: what is cut off is refused, what is changed is
// refused or taken for what it then is, and nothing reads a single octet too far.
#include <gtest/gtest.h>

#include <memory>

#include "support/asn1_coding.h"
#include "support/golden_records.h"
#include "support/sweeps.h"

namespace FrameUtil {
namespace {

using namespace support;

constexpr std::size_t kSweptSize = 1500;  // larger ones add octets, not forms

TEST(GoldenRecords, AreMany) {
    EXPECT_GE(GoldenRecords().size(), 200U);
}

TEST(GoldenRecords, ReadBack) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        SCOPED_TRACE(golden.name);
        const std::unique_ptr<AsnType> read = MakeRecord(golden.type);
        ASSERT_NE(read, nullptr) << golden.type;
        EXPECT_EQ(Decode(golden.octets, *read), "");
        EXPECT_EQ(Encoded(*read), golden.octets);
        EXPECT_EQ(Printed(*read), Printed(*golden.value));
    }
}

TEST(GoldenRecords, CutAnywhereAreRefused) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        if (golden.octets.size() > kSweptSize) {
            continue;
        }
        SCOPED_TRACE(golden.name);
        const std::unique_ptr<AsnType> read = MakeRecord(golden.type);
        const std::string empty = Encoded(*read);
        EachTruncation(golden.octets, [&](std::string_view cut) {
            ASSERT_FALSE(AsnDecode(cut.data(), cut.size(), *read)) << cut.size();
            ASSERT_EQ(Encoded(*read), empty) << cut.size();
        });
    }
}

// The contents cut without their header fail too, or stop between two elements of a
// list; a partly filled record is as good to use as any.
TEST(GoldenRecords, ContentsCutAnywhereLeaveAUsableRecord) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        if (golden.octets.size() > kSweptSize) {
            continue;
        }
        SCOPED_TRACE(golden.name);
        const std::size_t header = golden.octets.size() < 0x82 ? 2 : golden.octets[1] - '\x80' + 2U;
        EachTruncation(std::string_view(golden.octets).substr(header), [&](std::string_view cut) {
            const std::unique_ptr<AsnType> partly = MakeRecord(golden.type);
            AsnReader in(cut.data(), cut.size());
            try {
                partly->BDecContent(in);
            } catch (const CSM_Exception&) {
            }
            const std::string written = Encoded(*partly);
            const std::unique_ptr<AsnType> read = MakeRecord(golden.type);
            ASSERT_EQ(Decode(written, *read), "") << cut.size();
            ASSERT_EQ(Encoded(*read), written) << cut.size();
        });
    }
}

TEST(GoldenRecords, WithAnyBitFlippedAreRefusedOrMeanSomethingElse) {
    std::size_t accepted = 0;
    std::size_t refused = 0;
    for (const GoldenRecord& golden : GoldenRecords()) {
        if (golden.octets.size() > kSweptSize) {
            continue;
        }
        SCOPED_TRACE(golden.name);
        const std::unique_ptr<AsnType> read = MakeRecord(golden.type);
        const std::unique_ptr<AsnType> again = MakeRecord(golden.type);
        EachBitFlipped(golden.octets, [&](std::string_view flipped, std::size_t bit) {
            if (!AsnDecode(flipped.data(), flipped.size(), *read)) {
                ++refused;
                return;
            }
            ++accepted;
            const std::string written = Encoded(*read);
            ASSERT_EQ(Decode(written, *again), "") << "bit " << bit;
            ASSERT_EQ(Encoded(*again), written) << "bit " << bit;
        });
    }
    EXPECT_GT(accepted, 1000U);
    EXPECT_GT(refused, 1000U);
}

}  // namespace
}  // namespace FrameUtil
