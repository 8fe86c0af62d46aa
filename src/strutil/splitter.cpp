#include "strutil/splitter.h"

#include <cstring>
#include <new>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "strutil/plain_run.h"
#include "strutil/text_class.h"

namespace FrameUtil {

bool StrSpliter::Impl::Parse(std::string_view text) noexcept {
    Clear();
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
        if (items < lengths.size()) {
            lengths[items] = static_cast<std::size_t>(out - item);
        }
        ++items;
        *out++ = '\0';
        item = out;
    };
    const PlainRun run(separator, '\\');
    const char* in = text.data();
    const char* const end = in + text.size();
    for (;;) {
        const std::size_t plain = run.Copy(in, end, out);
        in += plain;
        out += plain;
        if (in == end) {
            break;
        }
        if (*in == separator) {
            ++in;
            end_item();
        } else if (++in == end) {
            *out++ = '\\';
        } else {
            if (*in != '|') {
                *out++ = '\\';
            }
            *out++ = *in++;
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
        m_pImpl->Clear();
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
    if (const auto item = m_pImpl != nullptr ? m_pImpl->Item() : std::nullopt; item) {
        text.assign(*item);
        m_pImpl->Skip(*item);
    } else {
        text.clear();
    }
    return *this;
}

bool StrSpliter::HasNext() const {
    return m_pImpl != nullptr && m_pImpl->taken != m_pImpl->items;
}

bool StrSpliter::HasError() const {
    return false;
}

unsigned int StrSpliter::GetValueMask() const {
    unsigned int mask = 0;
    const std::size_t items = m_pImpl != nullptr ? m_pImpl->items : 0;
    for (std::size_t i = 0; i < items && i < m_pImpl->lengths.size(); ++i) {
        mask |= m_pImpl->lengths[i] != 0 ? 1U << i : 0U;
    }
    return mask;
}

}  // namespace FrameUtil
