#include "kelp/asn1/types.h"

#include <bit>
#include <cstring>
#include <ostream>

namespace kelp::asn1 {

void PrintIndent(std::ostream& out, int indent) {
    for (int i = 0; i < indent; ++i) {
        out << "  ";
    }
}

void PrintOpen(std::ostream& out, std::size_t elements) {
    out << '[' << elements << "] {\n";
}

void PrintClose(std::ostream& out, int indent) {
    PrintIndent(out, indent);
    out << "}\n";
}

}  // namespace kelp::asn1

AsnType::~AsnType() = default;

void AsnType::BDec(AsnReader& in) {
    const std::size_t start = in.Offset();
    const AsnIdentifier identifier = in.ReadIdentifier();
    if (!Accepts(identifier)) {
        in.SetUnit(Unit());
        in.FailAt("Unexpected Tag", start);
    }
    BDecElement(in, identifier);
}

void AsnType::BDecForm(AsnReader& in, AsnIdentifier) {
    BDecContent(in);
}

void AsnBool::BEncContent(AsnBuffer& out) const {
    *out.Prepend(1) = value_ ? 0xff : 0x00;
}

void AsnBool::BDecContent(AsnReader& in) {
    const auto content = in.TakeContent();
    if (content.size() != 1) {
        in.Fail("Bad Boolean");
    }
    value_ = content[0] != 0;
}

void AsnBool::Print(std::ostream& out, int) const {
    out << (value_ ? "true\n" : "false\n");
}

void AsnInt::BEncContent(AsnBuffer& out) const {
    // The fewest octets whose sign bit is right: one bit more than the magnitude.
    const auto bits = static_cast<std::uint64_t>(value_ < 0 ? ~value_ : value_);
    const unsigned octets = (64 - static_cast<unsigned>(std::countl_zero(bits))) / 8 + 1;
    auto rest = static_cast<std::uint64_t>(value_);
    unsigned char* at = out.Prepend(octets);
    for (unsigned i = octets; i != 0; --i) {
        at[i - 1] = static_cast<unsigned char>(rest);
        rest >>= 8;
    }
}

void AsnInt::BDecContent(AsnReader& in) {
    const auto content = in.TakeContent();
    if (content.empty() || content.size() > 8) {
        in.Fail("Bad Integer");
    }
    std::uint64_t value = (content[0] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (const unsigned char octet : content) {
        value = value << 8 | octet;
    }
    value_ = static_cast<std::int64_t>(value);
}

void AsnInt::Print(std::ostream& out, int) const {
    out << value_ << '\n';
}

std::string& AsnOcts::str() {
    if (edited_ == nullptr) {
        edited_ = std::make_unique<std::string>(text_.view());
    }
    return *edited_;
}

void AsnOcts::BEncContent(AsnBuffer& out) const {
    if (const std::string_view octets = view(); !octets.empty()) {
        std::memcpy(out.Prepend(octets.size()), octets.data(), octets.size());
    }
}

void AsnOcts::BDecContent(AsnReader& in) {
    const auto content = in.TakeContent();
    *this = std::string_view(reinterpret_cast<const char*>(content.data()), content.size());
}

namespace {

// Joins the segments of a constructed octet string, which may be constructed in turn;
// the reader bounds the depth.
void TakeSegments(AsnReader& in, std::string& value) {
    while (!in.AtEnd()) {
        const std::size_t start = in.Offset();
        const AsnIdentifier identifier = in.ReadIdentifier();
        if ((identifier & ~kAsnConstructed) != kAsnOctetString) {
            in.FailAt("Unexpected Tag", start);
        }
        const AsnReader::Scope outer = in.Enter(identifier, in.unit());
        if ((identifier & kAsnConstructed) != 0) {
            TakeSegments(in, value);
        } else {
            const auto content = in.TakeContent();
            value.append(reinterpret_cast<const char*>(content.data()), content.size());
        }
        in.Leave(outer);
    }
}

}  // namespace

void AsnOcts::BDecForm(AsnReader& in, AsnIdentifier identifier) {
    if ((identifier & kAsnConstructed) == 0) {
        BDecContent(in);
        return;
    }
    std::string joined;
    TakeSegments(in, joined);
    *this = std::string_view(joined);
}

void AsnOcts::Print(std::ostream& out, int) const {
    out << '"';
    for (const char c : view()) {
        const auto octet = static_cast<unsigned char>(c);
        if (octet < 0x20 || octet == 0x7f || c == '"' || c == '\\') {
            static constexpr char kHex[] = "0123456789abcdef";
            out << "\\x" << kHex[octet >> 4] << kHex[octet & 15];
        } else {
            out << c;
        }
    }
    out << "\"\n";
}
