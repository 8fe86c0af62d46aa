#include "kelp/asn1.h"

bool AsnEncode(const AsnType& value, AsnBuffer& out, std::size_t limit_octets) {
    out.Clear(limit_octets);
    try {
        value.BEnc(out);
        return true;
    } catch (const CSM_Exception&) {
        out.Clear(limit_octets);
        return false;
    }
}

bool AsnDecode(const void* data, std::size_t octets, AsnType& out, std::string* why) {
    out.Clear();
    try {
        AsnReader in(data, octets);
        out.BDec(in);
        if (in.Offset() != octets) {
            in.Fail("Octets Behind Element");
        }
        return true;
    } catch (const CSM_Exception& failure) {
        out.Clear();
        if (why != nullptr) {
            *why = failure.Describe();
        }
        return false;
    }
}
