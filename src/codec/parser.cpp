#include "codec/parser.h"

#include <memory>
#include <utility>

#include "codec/integer.h"
#include "codec/types.h"
#include "frameutil/log.h"
#include "kelp/asn1.h"
#include "kelp/secure.h"
#include "paraset/node.h"

namespace FrameUtil {

using namespace codec;

namespace {

constexpr std::size_t kMaxString = 655359;
constexpr int kFirstClassTag = 64;  // application, context and private classes
constexpr int kLastTag = 255;

// Adds `child` under `name`; a second one of that name is dropped, which is traced.
void AddNamed(CParaSet& para, std::string name, std::unique_ptr<CParaSet> child) {
    // What a structure's own order wrote arrives in that order, each behind the last.
    auto& index = NodeAccess::Index(para);
    CParaSet*& entry = index.try_emplace(index.end(), std::move(name), nullptr)->second;
    if (entry != nullptr) {
        Trace("[CEndeCode::parse] SomeOne recall this func at wrong place ,Please check.");
        return;
    }
    entry = child.release();
}

void CopyOctets(char* to, std::span<const unsigned char> from) {
    const int error = memcpy_s(to, from.size(), from.data(), from.size());
    if (error != 0) {
        Trace("memcpy_s failed at line %d errno: %d", 382, error);
    }
}

}  // namespace

const unsigned char* Parser::Element(CParaSet& para, const unsigned char* at,
                                     const unsigned char* end, int type, int desc, int tag) {
    // The structure around a list that is all it has was never there for readers. The list
    // is looked up in its turn: 257 may be a key as well.
    const DescItem* former = nullptr;
    while (desc == kNoDesc && tag == kTypesOwn) {
        const DescItem* const list = m_table.SoleList(type);
        if (list == nullptr) {
            break;
        }
        if (list == former) {
            return m_fault.At(at, "the description refers to itself");
        }
        former = list;
        type = list->type;
        desc = list->desc;
        tag = list->tag;
    }
    Header header;
    if (!ReadHeader(at, end, header)) {
        return nullptr;
    }
    if (type == kOfValue) {
        type = header.tag;
    }
    if (desc >= kFirstClassTag && desc <= kLastTag && desc != header.tag) {
        return at;
    }
    if (type > kLastCode) {
        desc = type;
        type = kStructure;
    }
    if (tag == kTypesOwn) {
        if (type != kWrapper) {
            const int expected = type == kList || type == kNamedValue ? kStructure : type;
            if (header.tag != expected) {
                return at;
            }
        }
    } else if (header.tag != (tag & 0xFF)) {
        return at;
    }
    const bool wrapped =
        header.tag >= kFirstExplicit && type != kStructure && type != kList && type != kNamedValue;
    if (!wrapped) {
        switch (type) {
            case kInteger:
                return Integer(para, header);
            case kString:
                return String(para, header);
            case kNull:
                return Null(header);
            case kReal:
                return Real(para, header);
            default:
                break;
        }
    }
    if (m_depth == kMaxDepth) {
        return m_fault.At(at, "more than 128 elements are inside one another");
    }
    ++m_depth;
    const unsigned char* next = nullptr;
    if (wrapped) {
        next = Explicit(para, at, header, type, desc);
    } else {
        switch (type) {
            case kWrapper:
                // The element's own tag says what it is: there is no wrapper around it.
                next = Element(para, at, end, header.tag, kNoDesc, kTypesOwn);
                break;
            case kStructure:
                next = Structure(para, header, desc);
                break;
            case kList:
                next = List(para, header, desc);
                break;
            case kNamedValue:
                next = NamedValue(para, header);
                break;
            default:
                next = m_fault.At(at, "the type cannot be read");
        }
    }
    --m_depth;
    return next;
}

bool Parser::ReadHeader(const unsigned char* at, const unsigned char* end, Header& header) {
    const unsigned char* const start = at;
    if (end - at < 2) {
        m_fault.At(at, "the input ends inside an element's header");
        return false;
    }
    header.tag = *at++;
    if ((header.tag & 0x1F) == 0x1F) {
        m_fault.At(start, "the tag has several octets");
        return false;
    }
    std::size_t length = *at++;
    if (length >= 0x80) {
        const std::size_t count = length & 0x7F;
        if (count == 0 || count > 4) {
            m_fault.At(start, count == 0 ? "the length is indefinite"
                                         : "the length has more than four octets");
            return false;
        }
        if (static_cast<std::size_t>(end - at) < count) {
            m_fault.At(start, "the input ends inside an element's header");
            return false;
        }
        unsigned char octets[4] = {};
        const int error = memcpy_s(octets, sizeof octets, at, count);
        if (error != 0) {
            Trace("memcpy_s failed at line %d errno: %d", 540, error);
        }
        at += count;
        length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            length = length << 8 | octets[i];
        }
    }
    if (length > static_cast<std::size_t>(end - at)) {
        m_fault.At(start, "the length exceeds the input");
        return false;
    }
    header.contents = {at, length};
    return true;
}

// ---- scalars

const unsigned char* Parser::Integer(CParaSet& para, const Header& header) {
    const auto value = ReadInteger(header.contents);
    if (!value) {
        return m_fault.At(header.contents.data(), "the integer has not 1 to 8 octets");
    }
    if (para.type() == CParaSet::PARA_DOUBLE) {
        para.SetType(CParaSet::PARA_NULL);  // it would keep the number as a double
    }
    para = static_cast<long>(*value);
    para.SetType(CParaSet::PARA_INT);
    return header.end();
}

const unsigned char* Parser::String(CParaSet& para, const Header& header) {
    if (header.contents.size() > kMaxString) {
        return m_fault.At(header.contents.data(), "the string has more than 655359 octets");
    }
    CopyOctets(NodeAccess::OverwriteText(para, header.contents.size()), header.contents);
    return header.end();
}

const unsigned char* Parser::Null(const Header& header) {
    if (header.tag != kNull || !header.contents.empty()) {
        return m_fault.At(header.contents.data(), "the null element is not 05 00");
    }
    return header.end();
}

const unsigned char* Parser::Real(CParaSet& para, const Header& header) {
    AsnReal value;
    try {
        AsnReader reader(header.contents.data(), header.contents.size());
        value.BDecContent(reader);
    } catch (const CSM_Exception&) {
        return m_fault.At(header.contents.data(), "the real has a form that is not allowed");
    }
    para = static_cast<double>(value);
    para.SetType(CParaSet::PARA_DOUBLE);
    return header.end();
}

// ---- elements with elements inside

const unsigned char* Parser::Explicit(CParaSet& para, const unsigned char* at, const Header& header,
                                      int type, int desc) {
    const unsigned char* const inner = header.contents.data();
    const unsigned char* const next = Element(para, inner, header.end(), type, desc, kTypesOwn);
    if (next == nullptr) {
        return nullptr;
    }
    return next == inner ? at : header.end();
}

const unsigned char* Parser::Structure(CParaSet& para, const Header& header, int desc) {
    const unsigned char* at = header.contents.data();
    for (const DescItem& item : m_table.Find(desc).items) {
        if (at == header.end()) {
            if (item.tag < kFirstClassTag) {
                m_fault.At(at, "the input ends before a child that is not optional");
                return m_fault.In(item.name);
            }
            continue;
        }
        std::unique_ptr<CParaSet> child(NodeAccess::NewChild(item.name));
        at = Element(*child, at, header.end(), item.type, item.desc, item.tag);
        if (at == nullptr) {
            return m_fault.In(item.name);
        }
        if (!child->isNull()) {
            AddNamed(para, item.name, std::move(child));
        }
    }
    para.SetType(CParaSet::PARA_STRUCT);
    return header.end();
}

const unsigned char* Parser::List(CParaSet& para, const Header& header, int desc) {
    const bool named = desc == kNamedValue;
    const unsigned char* at = header.contents.data();
    for (std::size_t index = 0; at != header.end(); ++index) {
        std::unique_ptr<CParaSet> child(NodeAccess::NewElement());
        at = Element(*child, at, header.end(), desc, kNoDesc, kTypesOwn);
        if (at == nullptr) {
            return m_fault.In(index);
        }
        if (child->isNull()) {
            break;
        }
        if (named) {
            std::string name = child->name();
            AddNamed(para, std::move(name), std::move(child));
        } else {
            NodeAccess::List(para).push_back(child.get());
            static_cast<void>(child.release());
        }
    }
    para.SetType(named ? CParaSet::PARA_STRUCT : CParaSet::PARA_ARRAY);
    return header.end();
}

const unsigned char* Parser::NamedValue(CParaSet& para, const Header& header) {
    const unsigned char* at = header.contents.data();
    Header name;
    if (!ReadHeader(at, header.end(), name)) {
        return nullptr;
    }
    if (name.tag != kString || name.contents.size() > kMaxString) {
        return m_fault.At(at, "a named value does not begin with a name");
    }
    CopyOctets(NodeAccess::Impl(para).m_strName.Overwrite(name.contents.size()), name.contents);
    const unsigned char* const next =
        Element(para, name.end(), header.end(), kOfValue, kNoDesc, kTypesOwn);
    return next == nullptr ? nullptr : header.end();
}

}  // namespace FrameUtil
