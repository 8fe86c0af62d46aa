// Our runtime and the code that asn1c makes of docs/frameutil.asn1, each reading what
// the other writes.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "conformance/asn1/peer_value.h"
#include "support/asn1_coding.h"
#include "support/golden_records.h"
#include "support/record_outline.h"
#include "support/sweeps.h"

namespace {

using namespace support;

TEST(Asn1cPeer, ReadsWhatWeWrite) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        SCOPED_TRACE(golden.name);
        const PeerValue peer = PeerValue::Decode(golden.type, golden.octets);
        ASSERT_TRUE(peer.ok()) << Hex(golden.octets);
        EXPECT_EQ(peer.Outline(), Outline(*golden.value));
    }
}

// asn1c gives a subnormal the leading bit that only normal numbers have.
bool HoldsASubnormal(const std::string& outline) {
    return outline.find("dVal=000") != std::string::npos &&
           outline.find("dVal=0000000000000000") == std::string::npos;
}

TEST(Asn1cPeer, WritesWhatWeRead) {
    for (const GoldenRecord& golden : GoldenRecords()) {
        SCOPED_TRACE(golden.name);
        const std::string outline = Outline(*golden.value);
        if (HoldsASubnormal(outline)) {
            continue;
        }
        const PeerValue peer = PeerValue::From(golden.type, *golden.value);
        EXPECT_EQ(peer.Outline(), outline);
        const std::string octets = peer.Encode();
        const std::unique_ptr<AsnType> read = MakeRecord(golden.type);
        EXPECT_EQ(Decode(octets, *read), "") << Hex(octets);
        EXPECT_EQ(Outline(*read), outline);
        if (outline.find("dVal") == std::string::npos) {  // its mantissas may begin with zeros
            EXPECT_EQ(Hex(octets), Hex(golden.octets)) << "both write what DER writes";
        }
    }
}

// Whether `octets` end with the value they hold, so that what follows makes no
// difference: no length is left open to the end of the input.
bool EndsOnItsOwn(std::string_view octets, AsnType& value) {
    const std::string more = std::string(octets) + Octets("05 00");
    AsnReader in(more.data(), more.size());
    value.Clear();
    try {
        value.BDec(in);
        return in.Offset() == octets.size();
    } catch (const CSM_Exception&) {
        return false;
    }
}

// Why our runtime and asn1c differ over some octets; "" if there is no reason.
std::string ReasonToDiffer(std::string_view octets, const std::string& why, AsnType& ours,
                           const PeerValue& peer) {
    if (peer.ok()) {
        // X.690 forbids all of these; asn1c lets them pass, most of them as zero.
        for (const char* strict :
             {"Bad Tag", "Bad Boolean", "Bad Integer", "Bad Real", "Indefinite Primitive"}) {
            if (why.starts_with(strict)) {
                return strict;
            }
        }
        return "";
    }
    if (!EndsOnItsOwn(octets, ours)) {
        return "a length left open to the end of the input";
    }
    const std::string outline = Outline(ours);
    for (const char* limit : {"{dVal=7ff0000000000000}", "{dVal=fff0000000000000}",
                              "{dVal=0000000000000000}", "{dVal=8000000000000000}"}) {
        if (outline == limit) {
            return "a REAL beyond a double's range";  // refused by asn1c, rounded by us
        }
    }
    return "";
}

// Every octet of the golden records replaced by every other: both accept or both refuse,
// and then read the same value, but for what either documents.
TEST(Asn1cPeer, AcceptsAndRefusesWhatWeDo) {
    std::map<std::string, std::size_t> differences;
    std::size_t accepted_by_both = 0;
    std::size_t refused_by_both = 0;
    for (const GoldenRecord& golden : GoldenRecords()) {
        if (golden.octets.size() > 60 && golden.name != "request for resource 63" &&
            golden.name != "table of 1") {
            continue;
        }
        SCOPED_TRACE(golden.name);
        const std::unique_ptr<AsnType> ours = MakeRecord(golden.type);
        EachOctetReplaced(golden.octets, [&](std::string_view changed) {
            const std::string why = Decode(changed, *ours);
            const PeerValue peer = PeerValue::Decode(golden.type, changed);
            if (why.empty() && peer.ok()) {
                ++accepted_by_both;
                ASSERT_EQ(peer.Outline(), Outline(*ours)) << Hex(changed);
            } else if (!why.empty() && !peer.ok()) {
                ++refused_by_both;
            } else {
                const std::string reason = ReasonToDiffer(changed, why, *ours, peer);
                ASSERT_NE(reason, "") << Hex(changed) << "\nours: " << why;
                ++differences[reason];
            }
        });
    }
    EXPECT_GT(accepted_by_both, 100'000U);
    EXPECT_GT(refused_by_both, 100'000U);
    EXPECT_EQ(differences.size(), 7U) << "a documented difference is gone";
}

}  // namespace
