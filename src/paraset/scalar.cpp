// The scalar value: assignment from every type, reading as every type.

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "paraset/node.h"

namespace FrameUtil {

CParaSet& CParaSet::operator=(int value) {
    CParaSetImpl& impl = *m_pImpl;
    switch (impl.m_iValType) {
        case PARA_DOUBLE:
            impl.m_dValue = value;
            return *this;
        case PARA_NULL:
        case PARA_INT:
            break;
        default:
            Trace(
                "[CParaSet::operator=(const int iValue)], Some one recall this function at a "
                "wrong place, Please check, m_iValType = %d",
                static_cast<int>(impl.m_iValType));
    }
    impl.m_iValue = value;
    impl.m_iValType = PARA_INT;
    return *this;
}

CParaSet& CParaSet::operator=(unsigned int value) {
    return *this = static_cast<int>(value);
}

CParaSet& CParaSet::operator=(long value) {
    return *this = static_cast<int>(value);
}

CParaSet& CParaSet::operator=(unsigned long value) {
    return *this = static_cast<int>(value);
}

CParaSet& CParaSet::operator=(double value) {
    CParaSetImpl& impl = *m_pImpl;
    if (impl.m_iValType != PARA_NULL && impl.m_iValType != PARA_DOUBLE) {
        throw FRexception(-3);
    }
    impl.m_dValue = value;
    impl.m_iValType = PARA_DOUBLE;
    return *this;
}

CParaSet& CParaSet::operator=(const char* value) {
    CParaSetImpl& impl = *m_pImpl;
    if (impl.m_iValType != PARA_NULL && impl.m_iValType != PARA_STRING) {
        throw FRexception(-3);
    }
    if (value == nullptr) {
        throw std::logic_error("parameter set: null text");
    }
    impl.m_strValue.assign(value);
    impl.m_iValType = PARA_STRING;
    return *this;
}

namespace {

void BecomeText(CParaSetImpl& impl) {
    if (impl.m_iValType != CParaSet::PARA_NULL && impl.m_iValType != CParaSet::PARA_STRING) {
        Trace("[CParaSet::operator =(const std::string strValue)], m_iValType = %d",
              static_cast<int>(impl.m_iValType));
    }
    impl.m_iValType = CParaSet::PARA_STRING;
}

}  // namespace

void NodeAccess::AssignText(CParaSet& node, std::string_view text) {
    CParaSetImpl& impl = Impl(node);
    impl.m_strValue.assign(text);
    BecomeText(impl);
}

char* NodeAccess::OverwriteText(CParaSet& node, std::size_t size) {
    CParaSetImpl& impl = Impl(node);
    char* const octets = impl.m_strValue.Overwrite(size);
    BecomeText(impl);
    return octets;
}

CParaSet& CParaSet::operator=(const std::string& value) {
    NodeAccess::AssignText(*this, value);
    return *this;
}

CParaSet& CParaSet::operator=(const AsnDistinguishedResource* resource) {
    if (resource != nullptr) {
        auto* copy = new AsnDistinguishedResource(*resource);
        delete m_pResID;
        m_pResID = copy;
        m_pImpl->m_iValType = PARA_RESID;
    }
    return *this;
}

int CParaSet::asInt() const {
    const CParaSetImpl& impl = *m_pImpl;
    switch (impl.m_iValType) {
        case PARA_INT:
            return impl.m_iValue;
        case PARA_STRING:
            return static_cast<int>(std::strtol(impl.m_strValue.c_str(), nullptr, 10));
        default:
            return -1;
    }
}

double CParaSet::asDouble() const {
    const CParaSetImpl& impl = *m_pImpl;
    switch (impl.m_iValType) {
        case PARA_DOUBLE:
            return impl.m_dValue;
        case PARA_INT:
            return impl.m_iValue;
        default:
            return 0.0;
    }
}

const char* CParaSet::asString() {
    CParaSetImpl& impl = *m_pImpl;
    char text[32];
    switch (impl.m_iValType) {
        case PARA_INT: {
            const auto end = std::to_chars(text, text + sizeof text, impl.m_iValue).ptr;
            impl.m_strValue.assign({text, end});
            break;
        }
        case PARA_DOUBLE: {
            // What a stream writes by default: "%g" in the classic locale.
            const auto end = std::to_chars(text, text + sizeof text, impl.m_dValue,
                                           std::chars_format::general, 6)
                                 .ptr;
            impl.m_strValue.assign({text, end});
            break;
        }
        case PARA_STRING:
            break;
        default:
            return nullptr;
    }
    return impl.m_strValue.c_str();
}

AsnDistinguishedResource* CParaSet::asResID() const {
    return m_pResID;
}

void CParaSet::getBytes(void* buffer, unsigned long length, unsigned long offset) const {
    const std::string_view value = m_pImpl->m_strValue.view();
    if (m_pImpl->m_iValType != PARA_STRING || offset >= value.size() || length == 0) {
        return;
    }
    const unsigned long left = value.size() - offset;
    const unsigned long copied = length > left ? left : length;
    const int error = memcpy_s(buffer, copied, value.data() + offset, copied);
    if (error != 0) {
        Trace("memcpy_s failed at line %d errno: %d", length > left ? 1284 : 1280, error);
    }
}

int CParaSet::getBytes(std::string& out) const {
    switch (m_pImpl->m_iValType) {
        case PARA_STRING:
            out = m_pImpl->m_strValue.view();
            return static_cast<int>(out.size());
        case PARA_DOUBLE:
        case PARA_INT:
            return static_cast<int>(out.size());
        default:
            return 0;
    }
}

void CParaSet::setBytes(const void* data, unsigned long length) {
    CParaSetImpl& impl = *m_pImpl;
    if (impl.m_iValType != PARA_NULL && impl.m_iValType != PARA_STRING) {
        throw FRexception(-3);
    }
    if (data == nullptr || length == 0) {
        return;
    }
    kelp::BlockText& value = impl.m_strValue;
    std::memmove(value.data(), data, length < value.size() ? length : value.size());
    impl.m_iValType = PARA_STRING;
}

int CParaSet::setBytes(const std::string& value) {
    CParaSetImpl& impl = *m_pImpl;
    if (impl.m_iValType != PARA_NULL && impl.m_iValType != PARA_STRING) {
        throw FRexception(-3);
    }
    impl.m_strValue.assign(value);
    impl.m_iValType = PARA_STRING;
    return static_cast<int>(impl.m_strValue.size());
}

}  // namespace FrameUtil
