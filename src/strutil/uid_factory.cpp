#include <charconv>
#include <cstring>
#include <new>

#include "frameutil/strutil.h"
#include "strutil/pool_text.h"
#include "strutil/text_class.h"
#include "strutil/uid_escape.h"

namespace FrameUtil {

struct StrUIDFactory::Impl {
    explicit Impl(char sep) : separator(sep) {}

    // Appends a pair whose value `write` writes, in at most `room` characters, to where it is
    // told, returning the end. There is room for all of it before anything is written.
    template <class Write>
    void Pair(std::string_view key, std::size_t room, Write write) {
        if (IsInteger(key) || !IsPrintable(key)) {
            return;
        }
        char* const begin = text.Room(key.size() + room + 2);
        char* out = begin;
        if (!text.empty()) {
            *out++ = separator;
        }
        std::memcpy(out, key.data(), key.size());
        out += key.size();
        *out++ = '=';
        text.Grown(static_cast<std::size_t>(write(out) - begin));
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
        m_pImpl->Pair(key, EscapedRoom(whole),
                      [&](char* out) { return WriteEscaped(whole, m_pImpl->separator, out); });
    }
    return *this;
}

StrUIDFactory& StrUIDFactory::Append(const char* key, long value) {
    if (m_pImpl != nullptr && key != nullptr) {
        m_pImpl->Pair(key, kLongestNumber, [&](char* out) {
            return std::to_chars(out, out + kLongestNumber, value).ptr;
        });
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
