#include "codec/builder.h"

#include <cstring>

#include "codec/integer.h"
#include "codec/types.h"
#include "frameutil/log.h"
#include "kelp/asn1.h"
#include "kelp/secure.h"
#include "paraset/node.h"

namespace FrameUtil {

using namespace codec;

namespace {

constexpr const char* kNoRoom = "the buffer is too small";
constexpr const char* kTooDeep = "more than 128 elements are inside one another";
constexpr const char* kTooLong = "the contents do not fit the reserved header";
constexpr const char* kNoSuchType = "the type cannot be written";

// Octets of the shortest length field.
std::size_t LengthOctets(std::size_t length) {
    return length < 0x80        ? 1
           : length < 0x100     ? 2
           : length < 0x10000   ? 3
           : length <= 0xFFFFFF ? 4
                                : 5;
}

unsigned char* WriteLength(unsigned char* at, std::size_t length) {
    const std::size_t octets = LengthOctets(length) - 1;
    if (octets == 0) {
        *at++ = static_cast<unsigned char>(length);
        return at;
    }
    *at++ = static_cast<unsigned char>(0x80 | octets);
    for (std::size_t left = octets; left != 0; --left) {
        *at++ = static_cast<unsigned char>(length >> (8 * (left - 1)));
    }
    return at;
}

}  // namespace

unsigned char* Builder::Element(CParaSet& para, unsigned char* at, int type, int desc, int tag) {
    if (NodeAccess::Impl(para).m_iValType == CParaSet::PARA_NULL) {
        return at;
    }
    if (type == kOfValue) {
        type = para.getType();
    } else if (type > kLastCode) {
        desc = type;
        type = kStructure;
    }
    if (tag == kTypesOwn) {
        tag = type == kList || type == kNamedValue ? kStructure : type;
    }
    switch (type) {
        case kInteger:
            return Integer(para, at, tag);
        case kString:
            return String(para, at, tag);
        case kReal:
            return Real(para, at, tag);
        default:
            break;
    }
    if (m_depth == kMaxDepth) {
        return m_fault.At(at, kTooDeep);
    }
    ++m_depth;
    unsigned char* next = nullptr;
    switch (type) {
        case kStructure:
            next = Structure(para, at, desc, tag);
            break;
        case kWrapper:
            next = Wrapper(para, at, tag);
            break;
        case kList:
            next = List(para, at, desc, tag);
            break;
        case kNamedValue:
            next = NamedValue(para, at, tag);
            break;
        default:
            next = m_fault.At(at, kNoSuchType);
    }
    --m_depth;
    return next;
}

// ---- scalars

// The header of an element whose contents of `length` octets fit behind it.
unsigned char* Builder::Primitive(unsigned char* at, int tag, std::size_t length) {
    const std::size_t header = 1 + LengthOctets(length);
    if (Room(at) < header || Room(at) - header < length) {
        return m_fault.At(at, kNoRoom);
    }
    *at++ = static_cast<unsigned char>(tag);
    return WriteLength(at, length);
}

unsigned char* Builder::Integer(const CParaSet& para, unsigned char* at, int tag) {
    unsigned char octets[kMaxInteger];
    const std::size_t count = WriteInteger(para.asInt(), octets);
    at = Primitive(at, tag, count);
    if (at == nullptr) {
        return nullptr;
    }
    std::memcpy(at, octets, count);
    return at + count;
}

unsigned char* Builder::String(const CParaSet& para, unsigned char* at, int tag) {
    const auto count = static_cast<std::size_t>(para.size());
    at = Primitive(at, tag, count);
    if (at == nullptr) {
        return nullptr;
    }
    if (NodeAccess::Impl(para).m_iValType == CParaSet::PARA_STRING) {
        para.getBytes(at, count, 0);
    } else {
        std::memset(at, 0, count);  // it has a size, but no octets to give
    }
    return at + count;
}

unsigned char* Builder::Real(const CParaSet& para, unsigned char* at, int tag) {
    unsigned char contents[AsnReal::kMaxOctets];
    const std::size_t count = AsnReal(para.asDouble()).Contents(contents);
    at = Primitive(at, tag, count);
    if (at == nullptr) {
        return nullptr;
    }
    const int error = memcpy_s(at, count, contents, count);
    if (error != 0) {
        Trace("memcpy_s failed at line %d errno: %d", m_form.real_copy_line, error);
    }
    return at + count;
}

unsigned char* Builder::Null(unsigned char* at) {
    return Primitive(at, kNull, 0);
}

unsigned char* Builder::EmptyStructure(unsigned char* at) {
    return Primitive(at, kStructure, 0);
}

// ---- elements with elements inside

// The position behind a header to be filled in when the contents are there.
unsigned char* Builder::Reserve(unsigned char* at, int octets) {
    return Room(at) < static_cast<std::size_t>(octets) ? m_fault.At(at, kNoRoom) : at + octets;
}

unsigned char* Builder::FillReserved(unsigned char* header, unsigned char* at, int tag) {
    const std::ptrdiff_t length = at - header - kReserved;
    if (length > kMaxReserved) {
        return m_fault.At(header, kTooLong);
    }
    header[0] = static_cast<unsigned char>(tag);
    header[1] = 0x83;
    header[2] = static_cast<unsigned char>(length >> 16);
    header[3] = static_cast<unsigned char>(length >> 8);
    header[4] = static_cast<unsigned char>(length);
    return at;
}

unsigned char* Builder::Structure(CParaSet& para, unsigned char* at, int desc, int tag) {
    unsigned char* const header = at;
    at = Reserve(at, kReserved);
    if (at == nullptr) {
        return nullptr;
    }
    for (const DescItem& item : m_table.Find(desc)) {
        if (item.type == kNull) {
            at = Null(at);
        } else if (CParaSet* child = para.GetMapValue()[item.name]) {
            at = Element(*child, at, item.type, item.desc, item.tag);
        } else if (item.tag < 128 && (item.type == kEmptyList || item.type == kList)) {
            at = EmptyStructure(at);
        }
        if (at == nullptr) {
            return m_fault.In(item.name);
        }
    }
    return FillReserved(header, at, tag);
}

unsigned char* Builder::Wrapper(CParaSet& para, unsigned char* at, int tag) {
    unsigned char* const header = at;
    at = Reserve(at, kReservedWrapper);
    if (at == nullptr) {
        return nullptr;
    }
    at = para.getType() == kNull ? Null(at) : Element(para, at, kOfValue, kNoDesc, kTypesOwn);
    if (at == nullptr) {
        return nullptr;
    }
    // The format has no room for a longer length, and shifting the contents would make
    // another one.
    const std::ptrdiff_t length = at - header - kReservedWrapper;
    if (length > kMaxReservedWrapper) {
        return m_fault.At(header, kTooLong);
    }
    header[0] = static_cast<unsigned char>(tag);
    header[1] = static_cast<unsigned char>(length);
    return at;
}

unsigned char* Builder::List(CParaSet& para, unsigned char* at, int desc, int tag) {
    unsigned char* const header = at;
    at = Reserve(at, kReserved);
    if (at == nullptr) {
        return nullptr;
    }
    if (desc == kNamedValue) {
        for (const auto& [name, child] : NodeAccess::Index(para)) {
            if (child == nullptr) {
                continue;
            }
            at = Element(*child, at, kNamedValue, kNoDesc, kTypesOwn);
            if (at == nullptr) {
                return m_fault.In(name);
            }
        }
    } else {
        const std::vector<CParaSet*>& list = NodeAccess::List(para);
        for (std::size_t index = 0; index < list.size(); ++index) {
            if (list[index] == nullptr) {
                continue;
            }
            at = Element(*list[index], at, desc, kNoDesc, kTypesOwn);
            if (at == nullptr) {
                return m_fault.In(index);
            }
        }
    }
    return FillReserved(header, at, tag);
}

unsigned char* Builder::NamedValue(CParaSet& para, unsigned char* at, int tag) {
    unsigned char* const header = at;
    at = Reserve(at, kReserved);
    if (at == nullptr) {
        return nullptr;
    }
    const std::string_view name = NodeAccess::Impl(para).m_strName.view();
    at = Primitive(at, kString, name.size());
    if (at == nullptr) {
        return nullptr;
    }
    std::memcpy(at, name.data(), name.size());
    at += name.size();
    if (m_form.integers_as_text && para.getType() == kInteger) {
        para = std::to_string(para.asInt());
    }
    at = Element(para, at, kOfValue, kNoDesc, kTypesOwn);
    return at == nullptr ? nullptr : FillReserved(header, at, tag);
}

}  // namespace FrameUtil
