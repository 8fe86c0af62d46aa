// The C types and functions that asn1c makes of docs/frameutil.asn1, in a namespace of
// their own: some have the names of our records. Link asn1c_frameutil (cmake/Asn1c.cmake).
//
//     asn1c::AsnCommonResponse_t* response = nullptr;
//     asn_codec_ctx_t context = asn1c::NoStackLimit();
//     asn1c::asn_dec_rval_t result =
//         asn1c::ber_decode(&context, &asn1c::asn_DEF_AsnCommonResponse,
//                           reinterpret_cast<void**>(&response), data, size);
//     asn1c::asn_DEF_AsnCommonResponse.free_struct(&asn1c::asn_DEF_AsnCommonResponse,
//                                                  response, 0);
#pragma once

// What the generated headers include stays outside of the namespace.
#include <assert.h>
#include <ctype.h>
#include <errno.h>
#include <inttypes.h>
#include <limits.h>
#include <math.h>
#include <netinet/in.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

namespace asn1c {

#include <AsnCommonRequest.h>
#include <AsnCommonRequestSeqOf.h>
#include <AsnCommonResponse.h>
#include <AsnCommonResponseSeqOf.h>
#include <AsnDataRow.h>
#include <AsnDistinguishedResource.h>
#include <AsnDistinguishedResourceSeqOf.h>
#include <AsnRelation.h>
#include <AsnResDNList.h>
#include <AsnSchemaDef.h>
#include <AsnSchemaItem.h>
#include <AsnTable.h>
#include <AsnTableList.h>
#include <AsnTableSeqOf.h>
#include <AsnValue.h>

/// A decoding context without asn1c's limit of 30 000 octets of stack.
inline asn_codec_ctx_t NoStackLimit() {
    asn_codec_ctx_t context;
    context.max_stack_size = 0;
    return context;
}

}  // namespace asn1c
