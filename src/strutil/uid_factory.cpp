#include <new>

#include "frameutil/strutil.h"
#include "strutil/pool_text.h"
#include "strutil/text_class.h"
#include "strutil/uid_escape.h"

namespace FrameUtil {

struct StrUIDFactory::Impl {
    explicit Impl(char sep) : separator(sep) {}

    // Writes the separator and the key, and has room for `more` characters behind them, so
    // that nothing fails half-way. False: this is no key.
    bool Key(std::string_view key, std::size_t more) {
        if (IsInteger(key) || !IsPrintable(key)) {
            return false;
        }
        text.Room(key.size() + more + 2);
        if (!text.empty()) {
            text.Append(separator);
        }
        text.Append(key).Append('=');
        return true;
    }

    PoolText text;
    const char separator;
};

StrUIDFactory::StrUIDFactory() : m_pImpl(new (std::nothrow) Impl(',')) {}
StrUIDFactory::~StrUIDFactory() = default;
StrUIDFactory::StrUIDFactory(StrUIDFactory&&) noexcept = default;
StrUIDFactory& StrUIDFactory::operator=(StrUIDFactory&&) noexcept = default;

void StrUIDFactory::Clear() {
    if (m_pImpl != nullptr) {
        m_pImpl->text.Clear();
    }
}

StrUIDFactory& StrUIDFactory::Append(const char* key, const char* value) {
    if (m_pImpl != nullptr && key != nullptr && value != nullptr) {
        const std::string_view whole(value);
        if (m_pImpl->Key(key, EscapedRoom(whole))) {
            AppendEscaped(m_pImpl->text, whole, m_pImpl->separator);
        }
    }
    return *this;
}

StrUIDFactory& StrUIDFactory::Append(const char* key, long value) {
    constexpr std::size_t kLongest = 20;
    if (m_pImpl != nullptr && key != nullptr && m_pImpl->Key(key, kLongest)) {
        m_pImpl->text.Append(value);
    }
    return *this;
}

StrUIDFactory& StrUIDFactory::AppendFDN(const char* fdn) {
    if (m_pImpl == nullptr || fdn == nullptr || *fdn == '\0') {
        return *this;
    }
    const std::string_view whole(fdn);
    PoolText& text = m_pImpl->text;
    text.Room(whole.size() + 1);
    if (!text.empty()) {
        text.Append(m_pImpl->separator);
    }
    text.Append(whole);
    return *this;
}

std::string StrUIDFactory::GetStr() const {
    return m_pImpl != nullptr ? std::string(m_pImpl->text.view()) : std::string();
}

}  // namespace FrameUtil
