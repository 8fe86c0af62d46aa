// Encoding and decoding in one call, for the tables of tests.
//
// Thread rule: thread-safe.
#pragma once

#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include "kelp/asn1.h"
#include "support/octets.h"

namespace support {

inline std::string Encoded(const AsnType& value) {
    AsnBuffer out;
    value.BEnc(out);
    return {reinterpret_cast<const char*>(out.data()), out.size()};
}

/// "" when `octets` are exactly one element of value's type; else what is wrong where.
inline std::string Decode(std::string_view octets, AsnType& value) {
    std::string why;
    return AsnDecode(octets.data(), octets.size(), value, &why) ? "" : why;
}

/// What is wrong with `octets` as a T; "" if nothing is.
template <class T>
std::string WhyNot(std::string_view octets) {
    T value;
    return Decode(octets, value);
}

inline std::string Printed(const AsnType& value, int indent = 0) {
    std::ostringstream out;
    value.Print(out, indent);
    return out.str();
}

}  // namespace support
