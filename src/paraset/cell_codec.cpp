// How a cell is written and read: what its description says, spelled out. Tables are
// made of cells, and the walk over the description took most of their time.

#include "frameutil/records.h"

namespace FrameUtil {

namespace {

// The context tags of the fields, as in the description.
constexpr int kBoolTag = 0;
constexpr int kIntTag = 1;
constexpr int kRealTag = 2;
constexpr int kOctsTag = 3;

constexpr unsigned Pair(int tag, AsnIdentifier inner) {
    return static_cast<unsigned>(AsnContextIdentifier(tag, true) << 8 | inner);
}

template <class T>
void Write(AsnBuffer& out, int tag, const AsnOptional<T>& field) {
    if (field) {
        const std::size_t behind = out.size();
        field->T::BEncContent(out);
        out.PrependHeader(field->T::Identifier(), out.size() - behind);
        out.PrependHeader(AsnContextIdentifier(tag, true), out.size() - behind);
    }
}

template <class T>
void Read(AsnReader& in, AsnOptional<T>& field) {
    T& value = field.Ensure();
    const char* const unit = in.unit();
    in.SkipPlainTag();
    in.SetUnit(value.T::Unit());
    value.T::BDecContent(in);
    in.SetUnit(unit);
}

}  // namespace

void AsnValue::BEncContent(AsnBuffer& out) const {
    if (GetContextTags() != ContextTags::kExplicit) {
        AsnSequence::BEncContent(out);
        return;
    }
    Write(out, kOctsTag, sVal);
    Write(out, kRealTag, dVal);
    Write(out, kIntTag, iVal);
    Write(out, kBoolTag, bVal);
}

void AsnValue::BDecContent(AsnReader& in) {
    const bool is_explicit = GetContextTags() == ContextTags::kExplicit;
    switch (is_explicit ? in.PlainTagged() : 0) {
        case Pair(kBoolTag, kAsnBoolean):
            return Read(in, bVal);
        case Pair(kIntTag, kAsnInteger):
            return Read(in, iVal);
        case Pair(kRealTag, kAsnReal):
            return Read(in, dVal);
        case Pair(kOctsTag, kAsnOctetString):
            return Read(in, sVal);
        default:
            AsnSequence::BDecContent(in);
    }
}

}  // namespace FrameUtil
