// Copies text up to the next character that means something, many characters at a time:
// names and items are mostly characters that mean nothing.
//
//     constexpr PlainRun kRun(',', '=', '\\');
//     const std::size_t plain = kRun.Copy(in, end, out);   // in[plain] is a stop, or end
//
// Thread rule: immutable.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace FrameUtil {

template <std::size_t kCount>
class PlainRun {
  public:
    template <typename... Char>
    constexpr explicit PlainRun(Char... stops) : m_stops{stops...} {}

    /// Copies from [in, end) to `out`, which has room for all of it, up to the first stop.
    /// The result is how many characters that are; behind them `out` may have been
    /// written to.
    std::size_t Copy(const char* in, const char* end, char* out) const {
        const auto length = static_cast<std::size_t>(end - in);
#if defined(__SSE2__)
        if (length >= 16) {
            return CopyWords<Word16>(in, length, out);
        }
#endif
        if constexpr (std::endian::native == std::endian::little) {
            if (length >= 8) {
                return CopyWords<Word8>(in, length, out);
            }
        }
        std::size_t at = 0;
        for (; at != length && !IsStop(in[at]); ++at) {
            out[at] = in[at];
        }
        return at;
    }

  private:
    // Eight characters. Same() marks the high bit of each that is `stop`; above the lowest
    // of them others may be marked as well, since the subtraction borrows.
    struct Word8 {
        using Marks = std::uint64_t;
        static constexpr std::size_t kBytes = 8;

        explicit Word8(const char* in) { std::memcpy(&word, in, sizeof word); }
        void Store(char* out) const { std::memcpy(out, &word, sizeof word); }
        Marks Same(char stop) const {
            constexpr std::uint64_t kOnes = 0x0101010101010101;
            constexpr std::uint64_t kHighs = 0x8080808080808080;
            const std::uint64_t differs = word ^ kOnes * static_cast<unsigned char>(stop);
            return (differs - kOnes) & ~differs & kHighs;
        }
        static std::size_t First(Marks marks) {
            return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
        }

        std::uint64_t word = 0;
    };

#if defined(__SSE2__)
    struct Word16 {
        using Marks = unsigned;
        static constexpr std::size_t kBytes = 16;

        explicit Word16(const char* in)
            : word(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(in))) {}
        void Store(char* out) const { _mm_storeu_si128(reinterpret_cast<__m128i_u*>(out), word); }
        Marks Same(char stop) const {
            return static_cast<Marks>(_mm_movemask_epi8(_mm_cmpeq_epi8(word, _mm_set1_epi8(stop))));
        }
        static std::size_t First(Marks marks) {
            return static_cast<std::size_t>(std::countr_zero(marks));
        }

        __m128i word;
    };
#endif

    // Copies a word; its stops.
    template <class Word>
    typename Word::Marks CopyWord(const char* in, char* out) const {
        const Word word(in);
        word.Store(out);
        typename Word::Marks marks = 0;
        for (const char stop : m_stops) {
            marks |= word.Same(stop);
        }
        return marks;
    }

    // `length` is a word at least.
    template <class Word>
    std::size_t CopyWords(const char* in, std::size_t length, char* out) const {
        std::size_t at = 0;
        for (; at + Word::kBytes <= length; at += Word::kBytes) {
            if (const auto marks = CopyWord<Word>(in + at, out + at); marks != 0) {
                return at + Word::First(marks);
            }
        }
        // The last word reaches back into what is known to be plain.
        at = length - Word::kBytes;
        const auto marks = CopyWord<Word>(in + at, out + at);
        return marks != 0 ? at + Word::First(marks) : length;
    }

    bool IsStop(char c) const {
        for (const char stop : m_stops) {
            if (c == stop) {
                return true;
            }
        }
        return false;
    }

    std::array<char, kCount> m_stops;
};

template <typename... Char>
PlainRun(Char...) -> PlainRun<sizeof...(Char)>;

}  // namespace FrameUtil
