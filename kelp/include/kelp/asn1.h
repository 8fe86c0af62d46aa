// kelp/asn1.h - the ASN.1 runtime: typed values, records and lists in BER.
//
// A record is a class over AsnSequence that describes its fields once; the runtime
// encodes, decodes, copies, clears and prints it from that description. What is
// written is BER (ITU-T X.690) with definite lengths; what is read may use every
// form BER allows. Nothing read from outside can overflow the stack, read past the
// input or make the process hold more than 32 times the octets of the input, which is
// what lists of the smallest records there are come to.
//
//     AsnBuffer octets;
//     if (AsnEncode(request, octets, 100000)) send(octets.data(), octets.size());
//     std::string why;
//     if (!AsnDecode(data, length, response, &why)) log(why);
//
// Thread rule: thread-compatible. Objects share nothing.
#pragma once

#include <cstddef>
#include <string>

#include "kelp/asn1/ber.h"
#include "kelp/asn1/list.h"
#include "kelp/asn1/sequence.h"
#include "kelp/asn1/types.h"
#include "kelp/export.h"

/// Encodes `value` as one whole element into `out`, whose former contents are dropped.
/// False, with `out` empty, when the encoding would exceed `limit_octets`. Throws
/// std::bad_alloc only.
KELP_API bool AsnEncode(const AsnType& value, AsnBuffer& out,
                        std::size_t limit_octets = AsnBuffer::kDefaultLimit);

/// Decodes the `octets` octets at `data`, which must be exactly one element, into
/// `out`. False when they are not; then `out` is cleared and `*why`, if given, says
/// what is wrong at which offset. Throws std::bad_alloc only.
KELP_API bool AsnDecode(const void* data, std::size_t octets, AsnType& out,
                        std::string* why = nullptr);
