// The platform's variant going in and coming out.

#include "kelp/value.h"
#include "paraset/node.h"

namespace FrameUtil {

namespace {

enum class Kind { kNull, kInteger, kDouble, kString };

Kind KindOf(const TEValue& value) {
    if (value.IsNull()) {
        return Kind::kNull;
    }
    switch (static_cast<int>(value.GetType())) {
        case 12:
        case 22:
        case 41:
        case 47:
        case 15:
        case 16:
            return Kind::kString;
        case 13:
        case 14:
        case 23:
        case 24:
        case 25:
            return Kind::kInteger;
        case 17:
        case 18:
            return Kind::kDouble;
        default:
            return Kind::kNull;
    }
}

int IntegerOf(const TEValue& value) {
    switch (static_cast<int>(value.GetType())) {
        case 13:
            return value.As_short();
        case 14:
            return value.As_int();
        case 23:
            return value.As_unsigned_short();
        default:
            return static_cast<int>(value.As_unsigned_int());
    }
}

// An empty block has no octets to point at and leaves the string as it is; so does an
// empty text.
void StoreString(kelp::BlockText& target, const TEValue& value) {
    const auto code = static_cast<int>(value.GetType());
    if (code == 15 || code == 16) {
        target.assign(value.As_std_string());
    } else if (const std::string_view octets = value.Bytes(); !octets.empty()) {
        target.assign(octets);
    }
}

}  // namespace

CParaSet& CParaSet::operator=(const TEValue& value) {
    CParaSetImpl& impl = *m_pImpl;
    const Kind kind = KindOf(value);
    if (kind == Kind::kString) {
        StoreString(impl.m_strValue, value);  // before the type is looked at, also if it refuses
    }
    ValueType accepted = PARA_NULL;  // beside PARA_NULL itself
    switch (kind) {
        case Kind::kInteger:
            accepted = PARA_INT;
            break;
        case Kind::kDouble:
            accepted = PARA_DOUBLE;
            break;
        case Kind::kString:
            accepted = PARA_STRING;
            break;
        case Kind::kNull:
            if (impl.m_iValType > PARA_STRING || impl.m_iValType < PARA_NULL) {
                throw FRexception(-3);
            }
            impl.m_strValue.clear();
            impl.m_dValue = 0.0;
            impl.m_iValue = -1;
            return *this;
    }
    if (impl.m_iValType != PARA_NULL && impl.m_iValType != accepted) {
        throw FRexception(-3);
    }
    if (kind == Kind::kInteger) {
        impl.m_iValue = IntegerOf(value);
    } else if (kind == Kind::kDouble) {
        impl.m_dValue = value.As_double();
    }
    impl.m_iValType = accepted;
    return *this;
}

CParaSet& CParaSet::operator=(const refl::CValue& value) {
    return *this = TEValue(value);
}

TEValue CParaSet::value() const {
    const CParaSetImpl& impl = *m_pImpl;
    switch (impl.m_iValType) {
        case PARA_INT:
            return TEValue(static_cast<int>(impl.m_iValue));
        case PARA_DOUBLE:
            return TEValue(impl.m_dValue);
        case PARA_STRING:
            return TEValue(impl.m_strValue.view());
        default:
            throw FRexception(-1);
    }
}

}  // namespace FrameUtil
