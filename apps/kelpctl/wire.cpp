#include "kelpctl/wire.h"

#include <array>
#include <cstdio>

namespace kelpctl {
namespace {

// The first octet alone: tag numbers above 30 appear in no common record.
std::string NameOf(AsnIdentifier identifier) {
    const auto first = static_cast<unsigned>(identifier & 0xff);
    std::array<char, 32> text{};
    if ((first & 0xc0) == kAsnContext) {
        std::snprintf(text.data(), text.size(), "%02x [%u]", first, first & 0x1f);
        return text.data();
    }
    const char* name = first == kAsnSequence                           ? " SEQUENCE"
                       : first == kAsnInteger                          ? " INTEGER"
                       : (first & ~kAsnConstructed) == kAsnOctetString ? " OCTET STRING"
                       : first == kAsnReal                             ? " REAL"
                       : first == kAsnBoolean                          ? " BOOLEAN"
                                                                       : "";
    std::snprintf(text.data(), text.size(), "%02x%s", first, name);
    return text.data();
}

// The elements up to the end of the contents that `in` is narrowed to. One of indefinite
// length would have to be walked through to find its end; the outline stops there.
std::string InsideOf(AsnReader in) {
    std::string text;
    while (!in.AtEnd()) {
        const AsnIdentifier identifier = in.ReadIdentifier();
        text += (text.empty() ? " " : ", ") + NameOf(identifier);
        AsnReader ahead = in;
        const AsnReader::Length length = ahead.ReadLength();
        if (length.indefinite) {
            return text + " ...";
        }
        text += " (" + std::to_string(length.octets) + ")";
        const AsnReader::Scope outer = in.Enter(identifier, "kelpctl");
        in.TakeContent();
        in.Leave(outer);
    }
    return text;
}

}  // namespace

std::string OutlineOf(const void* data, std::size_t octets) {
    AsnReader in(data, octets);
    std::string text = std::to_string(octets) + " octets:";
    try {
        const AsnIdentifier identifier = in.ReadIdentifier();
        text += " " + NameOf(identifier);
        in.Enter(identifier, "kelpctl");
        text += " {" + InsideOf(in) + " }";
    } catch (const CSM_Exception& e) {
        text += std::string(" not BER: ") + e.Describe();
    }
    return text;
}

void ObservedResponse::Clear() {
    record.Clear();
    outline.clear();
}

void ObservedResponse::BDecContent(AsnReader& in) {
    const AsnReader contents = in;
    record.BDecContent(in);
    outline = std::to_string(in.Offset()) + " octets: " + NameOf(Identifier()) + " {" +
              InsideOf(contents) + " }";
}

}  // namespace kelpctl
