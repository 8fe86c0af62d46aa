#include <cstring>
#include <new>

#include "frameutil/strutil.h"
#include "strutil/identifier.h"
#include "strutil/splitter.h"
#include "strutil/text_class.h"

namespace FrameUtil {

struct StrUIDParser::Impl {
    Identifier identifier;
    // Pairs that Next() has gone to; the current pair is the last of them, if it is one.
    std::size_t reached = 0;

    bool HasCurrent() const { return reached - 1 < identifier.pairs(); }
    std::string_view Value() const {
        return HasCurrent() ? identifier.Value(reached - 1) : std::string_view();
    }
};

StrUIDParser::StrUIDParser() : m_pImpl(new (std::nothrow) Impl) {}
StrUIDParser::~StrUIDParser() = default;
StrUIDParser::StrUIDParser(StrUIDParser&&) noexcept = default;
StrUIDParser& StrUIDParser::operator=(StrUIDParser&&) noexcept = default;

bool StrUIDParser::Parse(const char* text, UIDFault* fault) {
    if (m_pImpl == nullptr) {
        return false;
    }
    UIDFault ignored;
    UIDFault& why = fault != nullptr ? *fault : ignored;
    if (text == nullptr) {
        why = {"no text", 0};
        return false;
    }
    const std::string_view whole(text);
    if (!IsPrintable(whole)) {
        why = {"a byte outside of 0x20..0x7E", PrintableLength(whole)};
        return false;
    }
    m_pImpl->reached = 0;
    return m_pImpl->identifier.Read(whole, why);
}

bool StrUIDParser::Next() {
    if (m_pImpl == nullptr) {
        return false;
    }
    if (m_pImpl->reached <= m_pImpl->identifier.pairs()) {
        ++m_pImpl->reached;
    }
    return m_pImpl->HasCurrent();
}

void StrUIDParser::SetCurToFirst() {
    if (m_pImpl != nullptr) {
        m_pImpl->reached = 0;
    }
}

std::string StrUIDParser::Type() const {
    return m_pImpl != nullptr && m_pImpl->HasCurrent()
               ? std::string(m_pImpl->identifier.Key(m_pImpl->reached - 1))
               : std::string();
}

std::string StrUIDParser::StrValue() const {
    return m_pImpl != nullptr ? std::string(m_pImpl->Value()) : std::string();
}

long StrUIDParser::IntValue() const {
    return m_pImpl != nullptr && IsInteger(m_pImpl->Value()) ? ToLong(m_pImpl->Value()) : 0;
}

unsigned long StrUIDParser::UIntValue() const {
    return m_pImpl != nullptr && IsInteger(m_pImpl->Value()) ? ToUnsignedLong(m_pImpl->Value()) : 0;
}

namespace {

// Gives what `take` makes of the value looked for; false: there is none.
template <class Take>
bool WithValue(const Identifier* identifier, const char* key, unsigned long index, Take take) {
    if (identifier == nullptr || key == nullptr) {
        return false;
    }
    const std::size_t pair = identifier->Find(key, index);
    return pair != identifier->pairs() && take(identifier->Value(pair));
}

template <typename Number>
bool TakeNumber(Number& out, std::string_view value, Number (*convert)(std::string_view) noexcept) {
    if (!IsInteger(value)) {
        return false;
    }
    out = convert(value);
    return true;
}

}  // namespace

bool StrUIDParser::GetValue(long& out, const char* key, unsigned long index) const {
    return WithValue(m_pImpl ? &m_pImpl->identifier : nullptr, key, index,
                     [&](auto value) { return TakeNumber<long>(out, value, ToLong); });
}

bool StrUIDParser::GetValue(unsigned long& out, const char* key, unsigned long index) const {
    return WithValue(m_pImpl ? &m_pImpl->identifier : nullptr, key, index, [&](auto value) {
        return TakeNumber<unsigned long>(out, value, ToUnsignedLong);
    });
}

bool StrUIDParser::GetValue(std::string& out, const char* key, unsigned long index) const {
    return WithValue(m_pImpl ? &m_pImpl->identifier : nullptr, key, index, [&](auto value) {
        out = value;
        return true;
    });
}

bool StrUIDParser::GetValue(StrSpliter& out, const char* key, unsigned long index) const {
    return WithValue(m_pImpl ? &m_pImpl->identifier : nullptr, key, index, [&](auto value) {
        return out.m_pImpl != nullptr && out.m_pImpl->Parse(value);
    });
}

std::string StrUIDParser::GetMOC() const {
    return m_pImpl != nullptr ? std::string(m_pImpl->identifier.LastKey()) : std::string();
}

std::string StrUIDParser::GetMOC(const char* text) {
    Identifier identifier;
    UIDFault fault;
    return text != nullptr && IsPrintable(text) && identifier.Read(text, fault)
               ? std::string(identifier.LastKey())
               : std::string();
}

std::string StrUIDParser::GetParentFDN(const char* text) {
    const char* const comma = text != nullptr ? std::strrchr(text, ',') : nullptr;
    return comma != nullptr ? std::string(text, comma) : std::string();
}

}  // namespace FrameUtil
