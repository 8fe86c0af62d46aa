// sscanf_s, written here rather than on top of sscanf: the sizes of text buffers and
// the types of all targets are known, so nothing is stored by guess, and a number out
// of range has a defined result instead of the C library's undefined one.

#include <bitset>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "kelp/secure.h"
#include "secure/fault.h"

namespace kelp::secure {

namespace {

using Kind = ScanArgument::Kind;

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

// One "%..." of the format.
struct Conversion {
    bool stored = true;     // no '*'
    std::size_t width = 0;  // 0: none given
    int size = 0;           // -2 hh, -1 h, 0, 1 l or z, 2 ll
    char letter = '\0';
    std::bitset<256> set;  // of "%["
};

// Reads the set behind "%[" and leaves `format` behind its ']'; false when it has none.
bool ReadSet(const char*& format, std::bitset<256>& set) {
    const bool inverted = *format == '^';
    const char* from = inverted ? format + 1 : format;
    const char* end = *from == '\0' ? nullptr : std::strchr(from + 1, ']');
    if (end == nullptr) {
        return false;
    }
    for (const char* c = from; c != end; ++c) {
        const auto low = static_cast<unsigned char>(*c);
        auto high = low;
        if (c + 2 < end && c[1] == '-') {
            high = static_cast<unsigned char>(c[2]);
            c += 2;
        }
        for (int byte = low; byte <= high; ++byte) {
            set.set(static_cast<std::size_t>(byte));
        }
    }
    if (inverted) {
        set.flip();
    }
    format = end + 1;
    return true;
}

// Reads what stands behind a '%'; false when it is no conversion.
bool ReadConversion(const char*& format, Conversion& conversion) {
    if (*format == '*') {
        conversion.stored = false;
        ++format;
    }
    for (; *format >= '0' && *format <= '9'; ++format) {
        if (conversion.width > 1'000'000'000) {
            return false;
        }
        conversion.width = conversion.width * 10 + static_cast<std::size_t>(*format - '0');
    }
    for (; *format == 'h'; ++format) {
        --conversion.size;
    }
    for (; *format == 'l' || *format == 'z'; ++format) {
        ++conversion.size;
    }
    conversion.letter = *format;
    if (conversion.letter == '\0' || conversion.size < -2 || conversion.size > 2) {
        return false;
    }
    ++format;
    return conversion.letter != '[' || ReadSet(format, conversion.set);
}

// A whole number as it was spelt: its distance from zero, cut at the largest one.
struct Spelt {
    unsigned long long magnitude = 0;
    bool negative = false;
};

int DigitOf(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : 99;
}

// Reads a whole number of [text, end); `base` 0 tells it by its prefix. Leaves `text`
// behind it; false when there is none.
bool ReadWhole(const char*& text, const char* end, unsigned base, Spelt& number) {
    const char* at = text;
    if (at != end && (*at == '-' || *at == '+')) {
        number.negative = *at == '-';
        ++at;
    }
    const bool prefix =
        end - at > 2 && at[0] == '0' && (at[1] == 'x' || at[1] == 'X') && DigitOf(at[2]) < 16;
    if (prefix && (base == 0 || base == 16)) {
        at += 2;
        base = 16;
    } else if (base == 0) {
        base = at != end && *at == '0' ? 8 : 10;
    }
    const char* const digits = at;
    for (; at != end && DigitOf(*at) < static_cast<int>(base); ++at) {
        if (__builtin_mul_overflow(number.magnitude, base, &number.magnitude) ||
            __builtin_add_overflow(number.magnitude, static_cast<unsigned>(DigitOf(*at)),
                                   &number.magnitude)) {
            number.magnitude = std::numeric_limits<unsigned long long>::max();
        }
    }
    if (at == digits) {
        return false;
    }
    text = at;
    return true;
}

template <typename T>
void StoreWhole(void* target, const Spelt& number) {
    using Limits = std::numeric_limits<T>;
    const auto most = static_cast<unsigned long long>(Limits::max());
    T value;
    if (!number.negative) {
        value = number.magnitude > most ? Limits::max() : static_cast<T>(number.magnitude);
    } else if (!Limits::is_signed) {
        value = 0;
    } else {
        value = number.magnitude > most ? Limits::min()
                                        : static_cast<T>(-static_cast<long long>(number.magnitude));
    }
    std::memcpy(target, &value, sizeof value);
}

// Reads a floating number of [text, end), which no locale can change the spelling of.
bool ReadReal(const char*& text, const char* end, double& value) {
    const char* const digits = text != end && *text == '+' ? text + 1 : text;
    if (digits != text && digits != end && *digits == '-') {
        return false;
    }
    const std::from_chars_result result = std::from_chars(digits, end, value);
    if (result.ec == std::errc::invalid_argument) {
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // from_chars does not say which side; strtod does.
        const double side = std::strtod(digits, nullptr);
        const double most = std::numeric_limits<double>::max();
        value = side > most ? most : side < -most ? -most : side;
    }
    text = result.ptr;
    return true;
}

void StoreReal(Kind kind, void* target, double value) {
    if (kind == Kind::kDouble) {
        std::memcpy(target, &value, sizeof value);
        return;
    }
    const double most = std::numeric_limits<float>::max();
    const bool finite = value - value == 0.0;
    const float narrow = static_cast<float>(!finite         ? value
                                            : value > most  ? most
                                            : value < -most ? -most
                                                            : value);
    std::memcpy(target, &narrow, sizeof narrow);
}

bool StoreWholeAs(Kind kind, void* target, const Spelt& number) {
    switch (kind) {
        case Kind::kChars:
            StoreWhole<char>(target, number);
            return true;
        case Kind::kSignedChar:
            StoreWhole<signed char>(target, number);
            return true;
        case Kind::kUnsignedChar:
            StoreWhole<unsigned char>(target, number);
            return true;
        case Kind::kShort:
            StoreWhole<short>(target, number);
            return true;
        case Kind::kUnsignedShort:
            StoreWhole<unsigned short>(target, number);
            return true;
        case Kind::kInt:
            StoreWhole<int>(target, number);
            return true;
        case Kind::kUnsigned:
            StoreWhole<unsigned>(target, number);
            return true;
        case Kind::kLong:
            StoreWhole<long>(target, number);
            return true;
        case Kind::kUnsignedLong:
            StoreWhole<unsigned long>(target, number);
            return true;
        case Kind::kLongLong:
            StoreWhole<long long>(target, number);
            return true;
        case Kind::kUnsignedLongLong:
            StoreWhole<unsigned long long>(target, number);
            return true;
        case Kind::kSize:
        case Kind::kFloat:
        case Kind::kDouble:
            break;
    }
    return false;
}

// Whether a conversion of `letter` and `size` stores into this kind of target.
bool Fits(Kind kind, char letter, int size) {
    if (std::strchr("efg", letter) != nullptr) {
        return kind == (size == 1 ? Kind::kDouble : Kind::kFloat);
    }
    if (std::strchr("sc[", letter) != nullptr) {
        return kind == Kind::kChars;
    }
    const bool is_signed = std::strchr("din", letter) != nullptr;
    switch (size) {
        case -2:
            return kind == Kind::kChars ||
                   kind == (is_signed ? Kind::kSignedChar : Kind::kUnsignedChar);
        case -1:
            return kind == (is_signed ? Kind::kShort : Kind::kUnsignedShort);
        case 0:
            return kind == (is_signed ? Kind::kInt : Kind::kUnsigned);
        case 1:
            return kind == (is_signed ? Kind::kLong : Kind::kUnsignedLong);
        default:
            return kind == (is_signed ? Kind::kLongLong : Kind::kUnsignedLongLong);
    }
}

class Scanner {
  public:
    Scanner(const char* text, const ScanArgument* arguments, std::size_t count)
        : begin_(text),
          text_(text),
          end_(text + std::strlen(text)),
          next_(arguments),
          last_(arguments + count) {}

    int Run(const char* format);

  private:
    enum class Step { kOn, kMismatch, kEndOfText, kBadCall };

    Step Literal(char c);
    Step Convert(const Conversion& conversion);
    Step ConvertNumber(const Conversion& conversion, const ScanArgument* target);
    Step ConvertText(const Conversion& conversion, const ScanArgument* target);
    std::size_t TextLength(const Conversion& conversion) const;
    void SkipSpace();

    const char* const begin_;
    const char* text_;
    const char* const end_;
    const ScanArgument* next_;
    const ScanArgument* const last_;
    int stored_ = 0;
};

void Scanner::SkipSpace() {
    while (text_ != end_ && IsSpace(*text_)) {
        ++text_;
    }
}

Scanner::Step Scanner::Literal(char c) {
    if (text_ == end_) {
        return Step::kEndOfText;
    }
    if (*text_ != c) {
        return Step::kMismatch;
    }
    ++text_;
    return Step::kOn;
}

Scanner::Step Scanner::ConvertNumber(const Conversion& conversion, const ScanArgument* target) {
    SkipSpace();
    if (text_ == end_) {
        return Step::kEndOfText;
    }
    const auto left = static_cast<std::size_t>(end_ - text_);
    const char* const end =
        conversion.width == 0 || conversion.width > left ? end_ : text_ + conversion.width;
    if (std::strchr("efg", conversion.letter) != nullptr) {
        double value = 0;
        if (!ReadReal(text_, end, value)) {
            return Step::kMismatch;
        }
        if (target != nullptr) {
            StoreReal(target->kind, target->target, value);
        }
    } else {
        const unsigned base = conversion.letter == 'o'   ? 8
                              : conversion.letter == 'x' ? 16
                              : conversion.letter == 'i' ? 0
                                                         : 10;
        Spelt number;
        if (!ReadWhole(text_, end, base, number)) {
            return Step::kMismatch;
        }
        if (target != nullptr) {
            StoreWholeAs(target->kind, target->target, number);
        }
    }
    stored_ += target != nullptr ? 1 : 0;
    return Step::kOn;
}

std::size_t Scanner::TextLength(const Conversion& conversion) const {
    const auto left = static_cast<std::size_t>(end_ - text_);
    if (conversion.letter == 'c') {
        return conversion.width == 0 ? 1 : conversion.width;
    }
    std::size_t length = 0;
    while (length < left && (conversion.width == 0 || length < conversion.width) &&
           (conversion.letter == 's' ? !IsSpace(text_[length])
                                     : conversion.set[static_cast<unsigned char>(text_[length])])) {
        ++length;
    }
    return length;
}

Scanner::Step Scanner::ConvertText(const Conversion& conversion, const ScanArgument* target) {
    if (conversion.letter == 's') {
        SkipSpace();
    }
    const std::size_t length = TextLength(conversion);
    if (text_ == end_ || length > static_cast<std::size_t>(end_ - text_)) {
        return Step::kEndOfText;
    }
    if (length == 0) {
        return Step::kMismatch;
    }
    if (target != nullptr) {
        char* const buffer = static_cast<char*>(target->target);
        const std::size_t size = target[1].size;
        // %c stores bare characters, the other two a terminated text.
        const std::size_t needed = conversion.letter == 'c' ? length : length + 1;
        if (needed > size || size > KELP_SECURE_MAX) {
            if (size != 0 && size <= KELP_SECURE_MAX) {
                buffer[0] = '\0';
            }
            return Step::kMismatch;
        }
        std::memcpy(buffer, text_, length);
        if (needed > length) {
            buffer[length] = '\0';
        }
        ++stored_;
    }
    text_ += length;
    return Step::kOn;
}

Scanner::Step Scanner::Convert(const Conversion& conversion) {
    if (conversion.letter == '%') {
        SkipSpace();
        return Literal('%');
    }
    if (std::strchr("diuoxefgsc[n", conversion.letter) == nullptr) {
        return Step::kBadCall;
    }
    const bool is_text = std::strchr("sc[", conversion.letter) != nullptr;
    const ScanArgument* target = nullptr;
    if (conversion.stored) {
        if (next_ == last_ || next_->target == nullptr ||
            !Fits(next_->kind, conversion.letter, conversion.size)) {
            return Step::kBadCall;
        }
        target = next_++;
        if (is_text && (next_ == last_ || next_++->kind != Kind::kSize)) {
            return Step::kBadCall;
        }
    }
    if (conversion.letter == 'n') {
        if (target != nullptr) {
            StoreWholeAs(target->kind, target->target,
                         {static_cast<unsigned long long>(text_ - begin_), false});
        }
        return Step::kOn;
    }
    return is_text ? ConvertText(conversion, target) : ConvertNumber(conversion, target);
}

int Scanner::Run(const char* format) {
    while (*format != '\0') {
        Step step = Step::kOn;
        if (IsSpace(*format)) {
            SkipSpace();
            ++format;
        } else if (*format != '%') {
            step = Literal(*format++);
        } else {
            Conversion conversion;
            step = ReadConversion(++format, conversion) ? Convert(conversion) : Step::kBadCall;
        }
        if (step == Step::kBadCall || (step == Step::kEndOfText && stored_ == 0)) {
            return -1;
        }
        if (step != Step::kOn) {
            break;
        }
    }
    return stored_;
}

}  // namespace

int Scan(const char* text, const char* format, const ScanArgument* arguments,
         std::size_t argument_count) {
    if (text == nullptr || format == nullptr || InjectedError(Routine::kSscanf) != 0) {
        return -1;
    }
    return Scanner(text, arguments, argument_count).Run(format);
}

}  // namespace kelp::secure
