// kelpctl/wire.h - what went over the wire, for --verbose.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "frameutil/records.h"

namespace kelpctl {

/// One line about the element of `octets` octets at `data`: its length and identifier, and
/// identifier and content length of each element directly inside it:
/// "61 octets: 30 SEQUENCE { 02 INTEGER (1), a1 [1] (54) }". What is not BER is said
/// at the place where it begins.
std::string OutlineOf(const void* data, std::size_t octets);

/// A common response that remembers what it was decoded from.
class ObservedResponse final : public AsnCopyable<ObservedResponse, AsnType> {
  public:
    FrameUtil::AsnCommonResponse record;
    std::string outline;  ///< as OutlineOf(); empty until decoded

    AsnIdentifier Identifier() const override { return record.Identifier(); }
    const char* Unit() const override { return record.Unit(); }
    void Clear() override;
    void BEncContent(AsnBuffer& out) const override { record.BEncContent(out); }
    void BDecContent(AsnReader& in) override;
    void Print(std::ostream& out, int indent = 0) const override { record.Print(out, indent); }
};

}  // namespace kelpctl
