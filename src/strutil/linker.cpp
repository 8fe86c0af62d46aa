#include <charconv>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>

#include "frameutil/strutil.h"
#include "strutil/plain_run.h"
#include "strutil/pool_text.h"

namespace FrameUtil {

struct StrLinker::Impl {
    explicit Impl(char sep) : separator(sep) {}

    // Appends an item that `write` writes, in at most `room` characters, to where it is told,
    // returning the end; behind a separator, unless the count says that it is the first.
    template <class Write>
    void Item(std::size_t room, Write write) {
        char* const begin = text.Room(room + 1);
        char* out = begin;
        if (items != 0) {
            *out++ = separator;
        }
        text.Grown(static_cast<std::size_t>(write(out) - begin));
        // Wraps from 127 to -128, and after 256 items to 0.
        items = static_cast<std::int8_t>(items + 1);
    }

    void Text(std::string_view item) {
        if (item.size() >= kFirstVerbatim) {
            Item(item.size(), [&](char* out) {
                std::memcpy(out, item.data(), item.size());
                return out + item.size();
            });
        } else {
            Item(2 * item.size(), [&](char* out) { return Escaped(item, out); });
        }
    }

    template <typename Integer>
    void Number(Integer number) {
        Item(kLongestNumber,
             [&](char* out) { return std::to_chars(out, out + kLongestNumber, number).ptr; });
    }

    char* Escaped(std::string_view item, char* out) const {
        const PlainRun run(separator);
        const char* in = item.data();
        const char* const end = in + item.size();
        for (;;) {
            const std::size_t plain = run.Copy(in, end, out);
            in += plain;
            out += plain;
            if (in == end) {
                return out;
            }
            *out++ = '\\';
            *out++ = *in++;
        }
    }

    // Whether `item` stands in the linker's own text.
    bool Holds(const char* item) const {
        const std::string_view own = text.view();
        const std::less<> before;
        return !before(item, own.data()) && before(item, own.data() + own.size());
    }

    static constexpr std::size_t kFirstVerbatim = 256;

    // A list is seldom as short as a name.
    PoolText text{256};
    const char separator;
    std::int8_t items = 0;
};

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
    if (m_pImpl->Holds(item)) {
        copy = whole;
        whole = copy;
    }
    m_pImpl->Text(whole);
    return *this;
}

StrLinker& StrLinker::operator<<(unsigned long item) {
    if (m_pImpl != nullptr) {
        m_pImpl->Number(item);
    }
    return *this;
}

StrLinker& StrLinker::operator<<(long item) {
    if (m_pImpl != nullptr) {
        m_pImpl->Number(item);
    }
    return *this;
}

const char* StrLinker::operator()() const {
    return m_pImpl != nullptr ? m_pImpl->text.c_str() : "";
}

}  // namespace FrameUtil
