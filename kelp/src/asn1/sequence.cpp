#include "kelp/asn1/sequence.h"

#include <atomic>
#include <cassert>
#include <map>
#include <mutex>
#include <ostream>
#include <string>

namespace {

std::atomic<AsnSequence::ContextTags> g_context_tags{AsnSequence::ContextTags::kExplicit};

const AsnType* FieldOf(const AsnSequence& record, const refl::CAttribInfor& field) {
    const char* member = reinterpret_cast<const char*>(&record) + field.offset;
    return field.optional ? reinterpret_cast<const AsnOptionalBase*>(member)->get_type()
                          : reinterpret_cast<const AsnType*>(member);
}

AsnOptionalBase& OptionalOf(AsnSequence& record, const refl::CAttribInfor& field) {
    return *reinterpret_cast<AsnOptionalBase*>(reinterpret_cast<char*>(&record) + field.offset);
}

// The field's value, made when it is optional and absent.
AsnType& EnsureField(AsnSequence& record, const refl::CAttribInfor& field) {
    char* member = reinterpret_cast<char*>(&record) + field.offset;
    if (!field.optional) {
        return *reinterpret_cast<AsnType*>(member);
    }
    auto& holder = *reinterpret_cast<AsnOptionalBase*>(member);
    if (holder.get_type() == nullptr) {
        holder.reset_type(field.create());
    }
    return *holder.get_type();
}

struct TypeRegister {
    std::mutex lock;
    std::map<std::string, AsnType* (*)(), std::less<>> factories;
};

TypeRegister& Types() {
    static TypeRegister* types = new TypeRegister;
    return *types;
}

}  // namespace

namespace refl {

void CClassInfor::AddAttribInfor(int position, const char* name, const AsnType& member, int tag) {
    Append(position, name, &member, tag, member, nullptr);
}

void CClassInfor::AddOptional(int position, const char* name, const AsnOptionalBase& member,
                              int tag, AsnType* (*create)()) {
    const std::unique_ptr<AsnType> example(create());
    Append(position, name, &member, tag, *example, create);
}

void CClassInfor::Append(int position, const char* name, const void* member, int tag,
                         const AsnType& value, AsnType* (*create)()) {
    assert(static_cast<std::size_t>(position) == attributes_.size());
    static_cast<void>(position);
    const auto offset = static_cast<std::size_t>(static_cast<const char*>(member) -
                                                 reinterpret_cast<const char*>(shape_));
    const AsnIdentifier identifier =
        tag == kNoTag ? value.Identifier() : AsnContextIdentifier(tag, true);
    attributes_.push_back({name, tag, create != nullptr, offset, identifier, create});
}

void CClassInfor::RegisterType(const char* name, AsnType* (*create)()) {
    TypeRegister& types = Types();
    const std::lock_guard guard(types.lock);
    types.factories[name] = create;
}

std::unique_ptr<AsnType> CClassInfor::CreateType(const std::string& name) {
    TypeRegister& types = Types();
    AsnType* (*create)() = nullptr;
    {
        const std::lock_guard guard(types.lock);
        const auto found = types.factories.find(name);
        create = found == types.factories.end() ? nullptr : found->second;
    }
    return std::unique_ptr<AsnType>(create == nullptr ? nullptr : create());
}

}  // namespace refl

void AsnSequence::SetContextTags(ContextTags tags) {
    g_context_tags.store(tags, std::memory_order_relaxed);
}

AsnSequence::ContextTags AsnSequence::GetContextTags() {
    return g_context_tags.load(std::memory_order_relaxed);
}

void AsnSequence::Assign(const AsnSequence& other) {
    if (this == &other) {
        return;
    }
    assert(&GetClassInfor() == &other.GetClassInfor());
    for (const refl::CAttribInfor& field : GetClassInfor().Attributes()) {
        const AsnType* source = FieldOf(other, field);
        if (field.optional) {
            OptionalOf(*this, field)
                .reset_type(source == nullptr ? nullptr : source->Clone().release());
        } else {
            EnsureField(*this, field).CopyFrom(*source);
        }
    }
}

void AsnSequence::Clear() {
    for (const refl::CAttribInfor& field : GetClassInfor().Attributes()) {
        if (field.optional) {
            OptionalOf(*this, field).reset_type();
        } else {
            EnsureField(*this, field).Clear();
        }
    }
}

void AsnSequence::BEncContent(AsnBuffer& out) const {
    const auto& fields = GetClassInfor().Attributes();
    const bool implicit = GetContextTags() == ContextTags::kImplicit;
    for (auto field = fields.rbegin(); field != fields.rend(); ++field) {
        const AsnType* value = FieldOf(*this, *field);
        if (value == nullptr) {
            continue;
        }
        if (field->tag == refl::CClassInfor::kNoTag) {
            value->BEnc(out);
        } else if (implicit) {
            const bool constructed = (value->Identifier() & kAsnConstructed) != 0;
            value->BEncDefLenImpl(out, AsnContextIdentifier(field->tag, constructed));
        } else {
            const std::size_t behind = out.size();
            value->BEnc(out);
            out.PrependHeader(field->identifier, out.size() - behind);
        }
    }
}

namespace {

// Whether an element with this identifier is (or, with implicit tags, may be) the field.
bool Fits(const refl::CAttribInfor& field, AsnIdentifier identifier, bool implicit) {
    if (identifier == field.identifier) {
        return true;
    }
    if (field.tag != refl::CClassInfor::kNoTag) {
        return implicit && (identifier | kAsnConstructed) == field.identifier;
    }
    return field.identifier == kAsnOctetString && identifier == (kAsnOctetString | kAsnConstructed);
}

// Decodes a field whose identifier stands at `start`, has been read and fits.
void DecodeField(AsnReader& in, std::size_t start, AsnIdentifier identifier,
                 const refl::CAttribInfor& field, AsnType& value, bool implicit, const char* unit) {
    if (field.tag == refl::CClassInfor::kNoTag) {
        value.BDecElement(in, identifier);
        return;
    }
    if (implicit) {
        const AsnIdentifier form = identifier & kAsnConstructed;
        if (!value.Accepts((value.Identifier() & ~kAsnConstructed) | form)) {
            in.FailAt("Unexpected Tag", start);
        }
        value.BDecElement(in, identifier);
        return;
    }
    const AsnReader::Scope outer = in.Enter(identifier, unit);
    const std::size_t inner_start = in.Offset();
    const AsnIdentifier inner = in.AtEnd() ? 0 : in.ReadIdentifier();
    if (!value.Accepts(inner)) {
        in.FailAt("Unexpected Tag", inner_start);
    }
    value.BDecElement(in, inner);
    in.Leave(outer);
}

}  // namespace

void AsnSequence::BDecContent(AsnReader& in) {
    const refl::CClassInfor& infor = GetClassInfor();
    const bool implicit = GetContextTags() == ContextTags::kImplicit;
    auto field = infor.Attributes().begin();
    const auto end = infor.Attributes().end();
    while (!in.AtEnd()) {
        const std::size_t start = in.Offset();
        const AsnIdentifier identifier = in.ReadIdentifier();
        for (;; ++field) {
            if (field == end) {
                in.FailAt("Unexpected Tag", start);
            }
            if (Fits(*field, identifier, implicit)) {
                break;
            }
            if (!field->optional) {
                in.FailAt("Unexpected Tag", start);
            }
        }
        DecodeField(in, start, identifier, *field, EnsureField(*this, *field), implicit,
                    infor.Unit());
        ++field;
    }
    for (; field != end; ++field) {
        if (!field->optional) {
            in.Fail("Unexpected End");
        }
    }
}

void AsnSequence::Print(std::ostream& out, int indent) const {
    const refl::CClassInfor& infor = GetClassInfor();
    out << infor.Name() << " {\n";
    for (const refl::CAttribInfor& field : infor.Attributes()) {
        if (const AsnType* value = FieldOf(*this, field)) {
            kelp::asn1::PrintIndent(out, indent + 1);
            out << field.name << ' ';
            value->Print(out, indent + 1);
        }
    }
    kelp::asn1::PrintClose(out, indent);
}
