#include "conformance/asn1/peer_value.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "support/asn1c/peer.h"
#include "support/record_outline.h"

namespace {

using Type = asn1c::asn_TYPE_descriptor_t;

const Type& TypeNamed(std::string_view name) {
    static const Type* const kTypes[] = {&asn1c::asn_DEF_AsnValue,
                                         &asn1c::asn_DEF_AsnSchemaItem,
                                         &asn1c::asn_DEF_AsnSchemaDef,
                                         &asn1c::asn_DEF_AsnDataRow,
                                         &asn1c::asn_DEF_AsnTableSeqOf,
                                         &asn1c::asn_DEF_AsnTable,
                                         &asn1c::asn_DEF_AsnTableList,
                                         &asn1c::asn_DEF_AsnResDNList,
                                         &asn1c::asn_DEF_AsnRelation,
                                         &asn1c::asn_DEF_AsnDistinguishedResourceSeqOf,
                                         &asn1c::asn_DEF_AsnDistinguishedResource,
                                         &asn1c::asn_DEF_AsnCommonRequest,
                                         &asn1c::asn_DEF_AsnCommonResponse,
                                         &asn1c::asn_DEF_AsnCommonRequestSeqOf,
                                         &asn1c::asn_DEF_AsnCommonResponseSeqOf};
    for (const Type* type : kTypes) {
        if (type->name == name) {
            return *type;
        }
    }
    throw std::invalid_argument("no such type in the module");
}

enum class Kind { kBoolean, kInteger, kReal, kOctets, kSequence, kList };

Kind KindOf(const Type& type) {
    if (type.ber_decoder == asn1c::BOOLEAN_decode_ber) {
        return Kind::kBoolean;
    }
    if (type.ber_decoder == asn1c::NativeInteger_decode_ber) {
        return Kind::kInteger;
    }
    if (type.ber_decoder == asn1c::NativeReal_decode_ber) {
        return Kind::kReal;
    }
    if (type.ber_decoder == asn1c::OCTET_STRING_decode_ber) {
        return Kind::kOctets;
    }
    return type.ber_decoder == asn1c::SEQUENCE_decode_ber ? Kind::kSequence : Kind::kList;
}

// The generated lists differ in their element's type only.
using AnyList = asn1c::asn_anonymous_sequence_;

std::string OutlineOf(const Type& type, const void* value) {
    switch (KindOf(type)) {
        case Kind::kBoolean:
            return *static_cast<const asn1c::BOOLEAN_t*>(value) != 0 ? "true" : "false";
        case Kind::kInteger:
            return std::to_string(*static_cast<const long*>(value));
        case Kind::kReal:
            return support::OutlineOfReal(*static_cast<const double*>(value));
        case Kind::kOctets: {
            const auto& octets = *static_cast<const asn1c::OCTET_STRING_t*>(value);
            return support::OutlineOfOctets(
                {reinterpret_cast<const char*>(octets.buf), static_cast<std::size_t>(octets.size)});
        }
        case Kind::kSequence: {
            std::string text = "{";
            for (int i = 0; i < type.elements_count; ++i) {
                const asn1c::asn_TYPE_member_t& member = type.elements[i];
                const void* field = static_cast<const char*>(value) + member.memb_offset;
                if ((member.flags & asn1c::ATF_POINTER) != 0) {
                    field = *static_cast<void* const*>(field);
                }
                if (field != nullptr) {
                    text += (text.size() == 1 ? "" : " ") + std::string(member.name) + "=" +
                            OutlineOf(*member.type, field);
                }
            }
            return text + '}';
        }
        case Kind::kList:
            break;
    }
    const auto& list = *static_cast<const AnyList*>(value);
    std::string text = "[";
    for (int i = 0; i < list.count; ++i) {
        text += (i == 0 ? "" : " ") + OutlineOf(*type.elements[0].type, list.array[i]);
    }
    return text + ']';
}

std::size_t SizeOf(const Type& type) {
    switch (KindOf(type)) {
        case Kind::kBoolean:
            return sizeof(asn1c::BOOLEAN_t);
        case Kind::kInteger:
            return sizeof(long);
        case Kind::kReal:
            return sizeof(double);
        case Kind::kOctets:
            return sizeof(asn1c::OCTET_STRING_t);
        case Kind::kSequence:
            return static_cast<std::size_t>(
                static_cast<const asn1c::asn_SEQUENCE_specifics_t*>(type.specifics)->struct_size);
        case Kind::kList:
            break;
    }
    return static_cast<std::size_t>(
        static_cast<const asn1c::asn_SET_OF_specifics_t*>(type.specifics)->struct_size);
}

void Fill(const Type& type, void* target, const AsnType& ours);

void* NewFrom(const Type& type, const AsnType& ours) {
    void* const value = std::calloc(1, SizeOf(type));
    Fill(type, value, ours);
    return value;
}

template <class Element>
bool FillFromListOf(const Type& element, void* target, const AsnType& ours) {
    const auto* list = dynamic_cast<const AsnList<Element>*>(&ours);
    if (list != nullptr) {
        for (const Element& value : *list) {
            asn1c::asn_set_add(target, NewFrom(element, value));
        }
    }
    return list != nullptr;
}

template <class... Elements>
void FillList(const Type& element, void* target, const AsnType& ours) {
    static_cast<void>((FillFromListOf<Elements>(element, target, ours) || ...));
}

void Fill(const Type& type, void* target, const AsnType& ours) {
    using namespace FrameUtil;
    switch (KindOf(type)) {
        case Kind::kBoolean:
            *static_cast<asn1c::BOOLEAN_t*>(target) = dynamic_cast<const AsnBool&>(ours) ? 1 : 0;
            return;
        case Kind::kInteger:
            *static_cast<long*>(target) = dynamic_cast<const AsnInt&>(ours);
            return;
        case Kind::kReal:
            *static_cast<double*>(target) = dynamic_cast<const AsnReal&>(ours);
            return;
        case Kind::kOctets: {
            const std::string& text = dynamic_cast<const AsnOcts&>(ours).str();
            asn1c::OCTET_STRING_fromBuf(static_cast<asn1c::OCTET_STRING_t*>(target), text.data(),
                                        static_cast<int>(text.size()));
            return;
        }
        case Kind::kList:
            FillList<AsnOcts, AsnValue, AsnSchemaItem, AsnDataRow, AsnTable, AsnRelation,
                     AsnCommonRequest, AsnCommonResponse>(*type.elements[0].type, target, ours);
            return;
        case Kind::kSequence:
            break;
    }
    const auto& record = dynamic_cast<const AsnSequence&>(ours);
    const auto& fields = record.GetClassInfor().Attributes();
    for (int i = 0; i < type.elements_count; ++i) {
        const asn1c::asn_TYPE_member_t& member = type.elements[i];
        const refl::CAttribInfor& field = fields.at(static_cast<std::size_t>(i));
        if (std::strcmp(field.name, member.name) != 0) {
            throw std::logic_error(std::string("the module has no field ") + field.name);
        }
        const char* const place = reinterpret_cast<const char*>(&record) + field.offset;
        char* const slot = static_cast<char*>(target) + member.memb_offset;
        if (!field.optional) {
            Fill(*member.type, slot, *reinterpret_cast<const AsnType*>(place));
        } else if (const AsnType* value =
                       reinterpret_cast<const AsnOptionalBase*>(place)->get_type()) {
            *reinterpret_cast<void**>(slot) = NewFrom(*member.type, *value);
        }
    }
}

}  // namespace

PeerValue PeerValue::Decode(std::string_view type, std::string_view octets) {
    const Type& described = TypeNamed(type);
    void* value = nullptr;
    asn1c::asn_codec_ctx_t context = asn1c::NoStackLimit();
    const asn1c::asn_dec_rval_t result = asn1c::ber_decode(&context, const_cast<Type*>(&described),
                                                           &value, octets.data(), octets.size());
    if (result.code != asn1c::RC_OK || result.consumed != octets.size()) {
        described.free_struct(const_cast<Type*>(&described), value, 0);
        value = nullptr;
    }
    return {&described, value};
}

PeerValue PeerValue::From(std::string_view type, const AsnType& ours) {
    const Type& described = TypeNamed(type);
    return {&described, NewFrom(described, ours)};
}

PeerValue::PeerValue(PeerValue&& other) noexcept : type_(other.type_), value_(other.value_) {
    other.value_ = nullptr;
}

PeerValue::~PeerValue() {
    if (value_ != nullptr) {
        type_->free_struct(const_cast<Type*>(type_), value_, 0);
    }
}

std::string PeerValue::Outline() const {
    return OutlineOf(*type_, value_);
}

std::string PeerValue::Encode() const {
    std::string octets;
    const auto append = [](const void* data, std::size_t size, void* target) {
        static_cast<std::string*>(target)->append(static_cast<const char*>(data), size);
        return 0;
    };
    const asn1c::asn_enc_rval_t result =
        asn1c::der_encode(const_cast<Type*>(type_), value_, append, &octets);
    if (result.encoded < 0) {
        throw std::runtime_error("asn1c cannot encode its value");
    }
    return octets;
}
