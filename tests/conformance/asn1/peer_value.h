// Values of the code that asn1c makes, by its own description of the types: read from
// octets, written as DER, shown as an outline, made from ours.
//
// Thread rule: thread-compatible.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kelp/asn1.h"

namespace asn1c {
struct asn_TYPE_descriptor_s;
}

class PeerValue {
  public:
    /// A value of the module's type `type`; ok() is false if `octets` are not exactly one
    /// element of it.
    static PeerValue Decode(std::string_view type, std::string_view octets);
    /// The peer's value that equals `ours`, field by field.
    static PeerValue From(std::string_view type, const AsnType& ours);

    PeerValue(PeerValue&& other) noexcept;
    PeerValue& operator=(PeerValue&&) = delete;
    ~PeerValue();

    bool ok() const { return value_ != nullptr; }
    /// The text that support::Outline() makes of an equal record of ours.
    std::string Outline() const;
    /// Its encoding in DER.
    std::string Encode() const;

  private:
    PeerValue(const asn1c::asn_TYPE_descriptor_s* type, void* value) : type_(type), value_(value) {}

    const asn1c::asn_TYPE_descriptor_s* type_;
    void* value_;
};
