#include "codec/builder.h"

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

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

// Names and texts are mostly short: a call of the C library costs more than the octets.
bool Same(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) {
        return false;
    }
    if (size > 16) {
        return std::memcmp(a.data(), b.data(), size) == 0;
    }
    if (size >= 8) {
        const auto word = [](const char* octets) {
            std::uint64_t value;
            std::memcpy(&value, octets, sizeof value);
            return value;
        };
        return word(a.data()) == word(b.data()) &&
               word(a.data() + size - 8) == word(b.data() + size - 8);
    }
    for (std::size_t i = 0; i < size; ++i) {
        if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

unsigned char* Copy(unsigned char* to, std::string_view from) {
    const std::size_t size = from.size();
    const char* octets = from.data();
    if (size > 32) {
        std::memcpy(to, octets, size);
    } else if (size >= 16) {
        std::memcpy(to, octets, 16);
        std::memcpy(to + size - 16, octets + size - 16, 16);
    } else if (size >= 8) {
        std::memcpy(to, octets, 8);
        std::memcpy(to + size - 8, octets + size - 8, 8);
    } else {
        for (std::size_t i = 0; i < size; ++i) {
            to[i] = static_cast<unsigned char>(octets[i]);
        }
    }
    return to + size;
}

// As CParaSet::getType().
int TypeOf(CParaSet::ValueType type) {
    switch (type) {
        case CParaSet::PARA_DOUBLE:
            return kReal;
        case CParaSet::PARA_INT:
            return kInteger;
        case CParaSet::PARA_STRING:
            return kString;
        case CParaSet::PARA_ARRAY:
            return kList;
        case CParaSet::PARA_STRUCT:
        case CParaSet::PARA_RESID:
            return kStructure;
        default:
            return kNull;
    }
}

// How many children of a structure are looked up in one walk; the stack is short.
constexpr std::size_t kGathered = 32;

// The children that the description names, by the items' positions; null where there is
// none. Both sides are in the order of the names, so that each step is mostly one comparison.
void Gather(const std::map<std::string, CParaSet*>& index, const Description& description,
            std::array<CParaSet*, kGathered>& children) {
    auto entry = index.begin();
    for (const unsigned position : description.by_name) {
        const std::string& name = description.items[position].name;
        children[position] = nullptr;
        if (entry == index.end() || !Same(entry->first, name)) {
            entry = index.lower_bound(name);
            if (entry == index.end() || entry->first != name) {
                continue;
            }
        }
        children[position] = entry->second;
        ++entry;
    }
}

// A long list does not fit the caches: while an element is written, the memory of those
// behind it is on its way, of the nearer ones that of their children too.
void PrefetchAhead(const std::vector<CParaSet*>& list, std::size_t index) {
    constexpr std::size_t kNodes = 8;
    constexpr std::size_t kEntries = 5;
    constexpr std::size_t kChildren = 2;
    if (index + kNodes >= list.size()) {
        return;
    }
    if (const CParaSet* node = list[index + kNodes]) {
        NodeAccess::PrefetchAll(node);
    }
    const auto first = [&](std::size_t ahead) {
        const CParaSet* node = list[index + ahead];
        return node == nullptr || NodeAccess::Index(*node).empty()
                   ? nullptr
                   : &*NodeAccess::Index(*node).begin();
    };
    __builtin_prefetch(first(kEntries));
    if (const auto* entry = first(kChildren); entry != nullptr && entry->second != nullptr) {
        NodeAccess::PrefetchAll(entry->second);
    }
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

template <class Write>
unsigned char* Builder::Deeper(unsigned char* at, Write write) {
    if (m_depth == kMaxDepth) {
        return m_fault.At(at, kTooDeep);
    }
    ++m_depth;
    unsigned char* const next = write();
    --m_depth;
    return next;
}

unsigned char* Builder::Element(CParaSet& para, unsigned char* at, int type, int desc, int tag) {
    const CParaSet::ValueType value_type = NodeAccess::Impl(para).m_iValType;
    if (value_type == CParaSet::PARA_NULL) {
        return at;
    }
    if (type == kOfValue) {
        type = TypeOf(value_type);
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
        case kStructure:
            return Deeper(at, [&] { return Structure(para, at, desc, tag); });
        case kWrapper:
            return Deeper(at, [&] { return Wrapper(para, at, tag); });
        case kList:
            return Deeper(at, [&] { return List(para, at, desc, tag); });
        case kNamedValue:
            return Deeper(at, [&] { return NamedValue(para, at, tag); });
        default:
            return m_fault.At(at, kNoSuchType);
    }
}

// ---- scalars

// The header of an element whose contents of `length` octets fit behind it.
unsigned char* Builder::Primitive(unsigned char* at, int tag, std::size_t length) {
    const std::size_t room = Room(at);
    if (length < 0x80 && room >= length + 2) [[likely]] {
        at[0] = static_cast<unsigned char>(tag);
        at[1] = static_cast<unsigned char>(length);
        return at + 2;
    }
    const std::size_t header = 1 + LengthOctets(length);
    if (room < header || room - header < length) {
        return m_fault.At(at, kNoRoom);
    }
    *at++ = static_cast<unsigned char>(tag);
    return WriteLength(at, length);
}

unsigned char* Builder::Integer(const CParaSet& para, unsigned char* at, int tag) {
    const CParaSetImpl& impl = NodeAccess::Impl(para);
    const std::int64_t value = impl.m_iValType == CParaSet::PARA_INT ? impl.m_iValue : para.asInt();
    const std::size_t count = IntegerOctets(value);
    at = Primitive(at, tag, count);
    return at == nullptr ? nullptr : WriteInteger(at, value, count);
}

unsigned char* Builder::String(const CParaSet& para, unsigned char* at, int tag) {
    const CParaSetImpl& impl = NodeAccess::Impl(para);
    const bool has_octets = impl.m_iValType == CParaSet::PARA_STRING;
    const auto count = has_octets ? impl.m_strValue.size() : static_cast<std::size_t>(para.size());
    at = Primitive(at, tag, count);
    if (at == nullptr) {
        return nullptr;
    }
    if (has_octets) {
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
    const Description& description = m_table.Find(desc);
    const std::size_t count = description.items.size();
    std::array<CParaSet*, kGathered> gathered;
    const bool at_once = count <= gathered.size();
    if (at_once) {
        Gather(NodeAccess::Index(para), description, gathered);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const DescItem& item = description.items[i];
        if (item.type == kNull) {
            at = Null(at);
        } else if (CParaSet* child = at_once ? gathered[i] : NodeAccess::Child(para, item.name)) {
            at = Element(*child, at, item.type, item.desc, item.tag);
        } else {
            // Callers rely on finding the name that was looked for, without a child.
            NodeAccess::Index(para).try_emplace(item.name, nullptr);
            if (item.tag < 128 && (item.type == kEmptyList || item.type == kList)) {
                at = EmptyStructure(at);
            }
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
            // As Element() does for this type, of which all of them are.
            if (child == nullptr || NodeAccess::Impl(*child).m_iValType == CParaSet::PARA_NULL) {
                continue;
            }
            at = Deeper(at, [&, value = child] { return NamedValue(*value, at, kStructure); });
            if (at == nullptr) {
                return m_fault.In(name);
            }
        }
    } else {
        const std::vector<CParaSet*>& list = NodeAccess::List(para);
        for (std::size_t index = 0; index < list.size(); ++index) {
            PrefetchAhead(list, index);
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
    at = Copy(at, name);
    if (m_form.integers_as_text && para.getType() == kInteger) {
        para = std::to_string(para.asInt());
    }
    switch (NodeAccess::Impl(para).m_iValType) {
        case CParaSet::PARA_INT:
            at = Integer(para, at, kInteger);
            break;
        case CParaSet::PARA_STRING:
            at = String(para, at, kString);
            break;
        default:
            at = Element(para, at, kOfValue, kNoDesc, kTypesOwn);
    }
    return at == nullptr ? nullptr : FillReserved(header, at, tag);
}

}  // namespace FrameUtil
