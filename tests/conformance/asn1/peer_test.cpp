// The judge itself: the module in docs/ is what our records are, as far as one request
// of every type shows.
#include "support/asn1c/peer.h"

#include <gtest/gtest.h>

namespace {

TEST(Asn1cPeer, ReadsAndWritesARequest) {
    const unsigned char octets[] = {0x30, 0x03, 0x02, 0x01, 0x07};
    asn1c::AsnCommonRequest_t* request = nullptr;
    asn1c::asn_codec_ctx_t context = asn1c::NoStackLimit();
    const asn1c::asn_dec_rval_t result =
        asn1c::ber_decode(&context, &asn1c::asn_DEF_AsnCommonRequest,
                          reinterpret_cast<void**>(&request), octets, sizeof octets);
    ASSERT_EQ(result.code, asn1c::RC_OK);
    EXPECT_EQ(result.consumed, sizeof octets);
    EXPECT_EQ(request->userID, 7);
    EXPECT_EQ(request->tables, nullptr);
    unsigned char again[sizeof octets];
    const asn1c::asn_enc_rval_t written =
        asn1c::der_encode_to_buffer(&asn1c::asn_DEF_AsnCommonRequest, request, again, sizeof again);
    EXPECT_EQ(written.encoded, 5);
    EXPECT_EQ(memcmp(again, octets, sizeof octets), 0);
    asn1c::asn_DEF_AsnCommonRequest.free_struct(&asn1c::asn_DEF_AsnCommonRequest, request, 0);
}

}  // namespace
