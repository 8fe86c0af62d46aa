#include "strutil/splitter.h"

#include <cstring>
#include <new>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "strutil/text_class.h"

namespace FrameUtil {

bool StrSpliter::Impl::Parse(std::string_view text) noexcept {
    next = nullptr;
    left = 0;
    mask = 0;
    buffer.reset();
    const std::size_t bytes = text.size() + 1;
    buffer.reset(static_cast<char*>(std::malloc(bytes)));
    if (buffer == nullptr) {
        return false;
    }
    if (const int error = memset_s(buffer.get(), bytes, 0, bytes); error != 0) {
        Trace("memset_s failed at line 950 errno: %d", error);
    }
    char* out = buffer.get();
    const char* item = out;
    const auto end_item = [&] {
        if (left < 32 && out != item) {
            mask |= 1U << left;
        }
        ++left;
        *out++ = '\0';
        item = out;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == separator) {
            end_item();
        } else if (c == '\\' && i + 1 < text.size()) {
            ++i;
            if (text[i] != '|') {
                *out++ = '\\';
            }
            *out++ = text[i];
        } else {
            *out++ = c;
        }
    }
    end_item();
    next = buffer.get();
    return true;
}

StrSpliter::StrSpliter(char sep) : m_pImpl(new (std::nothrow) Impl(sep)) {}

StrSpliter::StrSpliter(const char* text, char sep) : StrSpliter(sep) {
    Parse(text);
}

StrSpliter::~StrSpliter() = default;
StrSpliter::StrSpliter(StrSpliter&&) noexcept = default;
StrSpliter& StrSpliter::operator=(StrSpliter&&) noexcept = default;

bool StrSpliter::Parse(const char* text) {
    if (m_pImpl == nullptr) {
        return false;
    }
    if (text == nullptr) {
        m_pImpl->next = nullptr;
        m_pImpl->left = 0;
        m_pImpl->mask = 0;
        m_pImpl->buffer.reset();
        return false;
    }
    return m_pImpl->Parse(text);
}

StrSpliter& StrSpliter::operator>>(char* buffer) {
    constexpr std::size_t kMost = 4095;
    const auto item = m_pImpl != nullptr ? m_pImpl->Item() : std::nullopt;
    if (!item || buffer == nullptr) {
        return *this;
    }
    const std::size_t length = ::strnlen(buffer, kMost + 1);
    if (length == 0 || length > kMost) {
        return *this;
    }
    if (const int error = strncpy_s(buffer, length + 1, item->data(), length - 1); error != 0) {
        Trace("strncpy_s failed at line 1039 errno: %d", error);
    }
    // The contract terminates at the item's length; behind the shown text is not ours.
    if (item->size() <= length) {
        buffer[item->size()] = '\0';
    }
    m_pImpl->Skip(*item);
    return *this;
}

StrSpliter& StrSpliter::operator>>(long& number) {
    const auto item = m_pImpl != nullptr ? m_pImpl->Item() : std::nullopt;
    number = item && IsInteger(*item) ? ToLong(*item) : 0;
    if (item) {
        m_pImpl->Skip(*item);
    }
    return *this;
}

StrSpliter& StrSpliter::operator>>(unsigned long& number) {
    const auto item = m_pImpl != nullptr ? m_pImpl->Item() : std::nullopt;
    number = item && IsInteger(*item) ? ToUnsignedLong(*item) : 0;
    if (item) {
        m_pImpl->Skip(*item);
    }
    return *this;
}

StrSpliter& StrSpliter::operator>>(std::string& text) {
    const auto item = m_pImpl != nullptr ? m_pImpl->Item() : std::nullopt;
    text = item ? *item : std::string_view();
    if (item) {
        m_pImpl->Skip(*item);
    }
    return *this;
}

bool StrSpliter::HasNext() const {
    return m_pImpl != nullptr && m_pImpl->left != 0;
}

bool StrSpliter::HasError() const {
    return false;
}

unsigned int StrSpliter::GetValueMask() const {
    return m_pImpl != nullptr ? m_pImpl->mask : 0;
}

}  // namespace FrameUtil
