#include <cstdint>
#include <new>

#include "frameutil/strutil.h"
#include "strutil/pool_text.h"

namespace FrameUtil {

struct StrLinker::Impl {
    explicit Impl(char sep) : separator(sep) {}

    // Behind a separator, unless the count says that it is the first.
    template <class Write>
    void Item(std::size_t room, Write write) {
        text.Room(room + 1);
        if (items != 0) {
            text.Append(separator);
        }
        write(text);
        // Wraps from 127 to -128, and after 256 items to 0.
        items = static_cast<std::int8_t>(items + 1);
    }

    void Escaped(std::string_view item) {
        Item(2 * item.size(), [&](PoolText& out) {
            char* const begin = out.Room(2 * item.size());
            char* end = begin;
            for (const char c : item) {
                if (c == separator) {
                    *end++ = '\\';
                }
                *end++ = c;
            }
            out.Grown(static_cast<std::size_t>(end - begin));
        });
    }

    PoolText text;
    const char separator;
    std::int8_t items = 0;
};

namespace {

constexpr std::size_t kLongestNumber = 20;
constexpr std::size_t kFirstVerbatim = 256;

}  // namespace

StrLinker::StrLinker(char sep) : m_pImpl(new (std::nothrow) Impl(sep)) {}
StrLinker::~StrLinker() = default;
StrLinker::StrLinker(StrLinker&&) noexcept = default;
StrLinker& StrLinker::operator=(StrLinker&&) noexcept = default;

StrLinker& StrLinker::operator<<(const char* item) {
    if (m_pImpl == nullptr || item == nullptr) {
        return *this;
    }
    std::string_view whole(item);
    // The linker's own text moves when it grows.
    std::string copy;
    if (whole.data() == m_pImpl->text.c_str()) {
        copy = whole;
        whole = copy;
    }
    if (whole.size() < kFirstVerbatim) {
        m_pImpl->Escaped(whole);
    } else {
        m_pImpl->Item(whole.size(), [&](PoolText& text) { text.Append(whole); });
    }
    return *this;
}

StrLinker& StrLinker::operator<<(unsigned long item) {
    if (m_pImpl != nullptr) {
        m_pImpl->Item(kLongestNumber, [&](PoolText& text) { text.Append(item); });
    }
    return *this;
}

StrLinker& StrLinker::operator<<(long item) {
    if (m_pImpl != nullptr) {
        m_pImpl->Item(kLongestNumber, [&](PoolText& text) { text.Append(item); });
    }
    return *this;
}

const char* StrLinker::operator()() const {
    return m_pImpl != nullptr ? m_pImpl->text.c_str() : "";
}

}  // namespace FrameUtil
