#include "strutil/identifier.h"

#include <algorithm>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "strutil/plain_run.h"

namespace FrameUtil {

// One reading of a text. Each function takes what its name says at m_in and leaves m_in
// behind it; false: there is a fault at m_in.
class Identifier::Reading {
  public:
    Reading(Identifier& identifier, std::string_view text) noexcept
        : m_identifier(identifier),
          m_in(text.data()),
          m_in_end(text.data() + text.size()),
          m_begin(identifier.m_buffer.data()),
          m_end(m_begin + kBufferBytes),
          m_out(m_begin) {}

    bool Pairs() noexcept {
        if (m_in == m_in_end) {
            return true;
        }
        for (;; ++m_in) {
            if (!Key() || !Value()) {
                return false;
            }
            if (m_in == m_in_end) {
                return true;
            }
        }
    }

    const char* at() const { return m_in; }
    const char* reason() const { return m_reason; }

  private:
    bool Fault(const char* reason) noexcept {
        m_reason = reason;
        return false;
    }
    bool Full() noexcept { return Fault("keys and values of more than 256 bytes"); }

    // The character at hand; a zero behind the last one.
    char Now() const { return m_in != m_in_end ? *m_in : '\0'; }

    // Copies what means nothing. False: the buffer is full.
    bool Plain() noexcept {
        constexpr PlainRun kRun(',', '=', '\\');
        const auto room = std::min(m_in_end - m_in, m_end - m_out);
        const std::size_t plain = kRun.Copy(m_in, m_in + room, m_out);
        m_in += plain;
        m_out += plain;
        return m_out != m_end;
    }

    std::uint16_t Offset() const { return static_cast<std::uint16_t>(m_out - m_begin); }

    bool Key() noexcept {
        if (m_out == m_end) {
            return Full();
        }
        const std::uint16_t begin = Offset();
        const bool room = Plain();
        if (Offset() == begin) {
            return Fault("a key is missing");
        }
        Pair& pair = m_identifier.m_pairs[m_identifier.m_count++];
        pair = {begin, static_cast<std::uint16_t>(Offset() - begin), 0, 0};
        if (!room) {
            return Full();
        }
        if (Now() != '=') {
            return Fault(Now() == '\\' ? "a backslash in a key" : "a key without a value");
        }
        ++m_in;
        *m_out++ = '\0';
        return true;
    }

    bool Value() noexcept {
        if (m_out == m_end) {
            return Full();
        }
        if (const char c = Now(); c == '=' || c == ',' || c == '\0') {
            return Fault(c == '=' ? "an '=' in a value" : "a value is missing");
        }
        Pair& pair = m_identifier.m_pairs[m_identifier.m_count - 1];
        pair.value_at = Offset();
        const bool whole = Characters();
        pair.value_length = static_cast<std::uint16_t>(Offset() - pair.value_at);
        if (whole) {
            *m_out++ = '\0';
        }
        return whole;
    }

    // Up to what ends a value.
    bool Characters() noexcept {
        for (;;) {
            if (!Plain()) {
                return Full();
            }
            const char c = Now();
            if (c == '=') {
                return Fault("an '=' in a value");
            }
            if (c != '\\') {
                return true;
            }
            if (!Escape()) {
                return false;
            }
        }
    }

    bool Escape() noexcept {
        ++m_in;
        switch (Now()) {
            case 'c':
                *m_out++ = ',';
                break;
            case 'e':
                *m_out++ = '=';
                break;
            case '\\':
                *m_out++ = '\\';
                break;
            case '|':
                // Both characters, for the splitter that the value may be meant for.
                if (m_end - m_out < 2) {
                    return Full();
                }
                *m_out++ = '\\';
                *m_out++ = '|';
                break;
            default:
                return Fault("an unknown escape");
        }
        ++m_in;
        return true;
    }

    Identifier& m_identifier;
    const char* m_in;
    const char* const m_in_end;
    char* const m_begin;
    char* const m_end;
    char* m_out;
    const char* m_reason = "";
};

Identifier::Identifier() noexcept {
    if (const int error = memset_s(m_buffer.data(), m_buffer.size(), 0, m_buffer.size());
        error != 0) {
        Trace("memset_s failed at line 422 errno: %d", error);
    }
}

bool Identifier::Read(std::string_view text, UIDFault& fault) noexcept {
    if (const int error = memset_s(m_buffer.data(), m_buffer.size(), 0, m_buffer.size());
        error != 0) {
        Trace("memset_s failed at line 465 errno: %d", error);
    }
    m_count = 0;
    Reading reading(*this, text);
    if (reading.Pairs()) {
        return true;
    }
    fault = {reading.reason(), static_cast<unsigned long>(reading.at() - text.data())};
    return false;
}

std::size_t Identifier::Find(std::string_view key, unsigned long index) const {
    std::size_t pair = 0;
    for (; pair < m_count; ++pair) {
        if (Key(pair) == key && index-- == 0) {
            break;
        }
    }
    return pair;
}

}  // namespace FrameUtil
