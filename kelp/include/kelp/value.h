// The platform's variant value: a number of any width, a text, a byte block, or nothing.
//
//     TEValue port(8443);
//     TEValue name("lo0");
//     long number = port;                        // 8443, by the conversion operator
//     std::string text = port.As_std_string();   // "8443"
//     if (name.GetType() == refl::Enum::DT_TEXT) ...
//
// thread-compatible: one thread changes a value at a time; unchanged values may be read
// by many. A value owns what it holds and is 24 bytes large: numbers and texts of up to
// 22 bytes live in it, longer texts and blocks on the free store. Only constructors and
// assignments can throw (std::bad_alloc); moves and readers of numbers never do.
//
// Every reader works on every value. What it yields:
//
// | value            | as an integer          | as float, double | as text       | as bytes      |
// |------------------|------------------------|------------------|---------------|---------------|
// | empty (0)        | 0                      | 0                | ""            | none          |
// | char kinds       | the character's number | the same number  | the character | that one byte |
// |   (12, 22)       |                        |                  |               |               |
// | other integers   | the low bits           | the nearest      | decimal       | the text      |
// | float, double    | toward zero; the       | the number; a    | the shortest  | the text      |
// |   (17, 18)       | nearest of the type;   | float's nearest  | that reads    |               |
// |                  | not-a-number: 0        |                  | back equal    |               |
// | text (41)        | as the number that the text begins with, |               |               |
// |                  | 0 when it begins with none               | the text      | the text      |
// | binary (47)      | 0                      | 0                | the bytes     | the bytes     |
//
// "The low bits": -1 read as an unsigned 16-bit integer is 65535; 2^32 + 5 read as int is
// 5. A text's number is, after white space: a sign, digits, a fraction, an exponent, each
// optional but some digit. Whole ones that 64 bits hold are exact (as an unsigned one if
// they exceed the signed range) and behave as an integer of 64 bits; all others behave as a
// double. A floating number beyond the range of the target takes the target's largest or
// smallest value. Texts may hold any bytes, zero bytes too. No locale has an effect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kelp/export.h"

// The platform's string class: a std::string under the name that its interfaces use.
class CStdString : public std::string {
  public:
    using std::string::string;
    CStdString() = default;
    CStdString(const std::string& text) : std::string(text) {}
    CStdString(std::string&& text) noexcept : std::string(std::move(text)) {}
};

namespace refl {

namespace Enum {

// The type code of a value, and the declared type of a table's column.
enum DataTypeEnum : int {
    DT_EMPTY = 0,
    DT_CHAR = 12,
    DT_SHORT = 13,
    DT_INT = 14,
    DT_LONG = 15,
    DT_LONG_LONG = 16,
    DT_FLOAT = 17,
    DT_DOUBLE = 18,
    DT_UNSIGNED_CHAR = 22,
    DT_UNSIGNED_SHORT = 23,
    DT_UNSIGNED_INT = 24,
    DT_UNSIGNED_LONG = 25,  // 64 bits, long and long long alike
    DT_TEXT = 41,
    DT_BINARY = 47,
};

}  // namespace Enum

// A block of bytes that it owns. thread-compatible.
class CBinary {
  public:
    CBinary() = default;
    // Copies `length` bytes. A null pointer or a length of 0 gives the empty block.
    CBinary(const void* data, std::size_t length)
        : m_bytes(data == nullptr ? "" : static_cast<const char*>(data),
                  data == nullptr ? 0 : length) {}

    // The first byte, or null when the block is empty; valid until the block changes.
    const char* data() const noexcept { return m_bytes.empty() ? nullptr : m_bytes.data(); }
    // In bytes.
    std::size_t length() const noexcept { return m_bytes.size(); }
    std::size_t size() const noexcept { return m_bytes.size(); }
    bool empty() const noexcept { return m_bytes.empty(); }

    friend bool operator==(const CBinary& a, const CBinary& b) { return a.m_bytes == b.m_bytes; }

  private:
    std::string m_bytes;
};

// A number of a kind that is known only at run time: a signed or an unsigned whole number of
// 64 bits, exact, or a floating one. immutable apart from assignment; 16 bytes.
class KELP_API CNumeric {
  public:
    enum class Kind : std::uint8_t { kSigned, kUnsigned, kDouble };

    constexpr CNumeric() noexcept : CNumeric(0LL) {}
    constexpr CNumeric(int value) noexcept : CNumeric(static_cast<long long>(value)) {}
    constexpr CNumeric(unsigned int value) noexcept
        : CNumeric(static_cast<unsigned long long>(value)) {}
    constexpr CNumeric(long value) noexcept : CNumeric(static_cast<long long>(value)) {}
    constexpr CNumeric(unsigned long value) noexcept
        : CNumeric(static_cast<unsigned long long>(value)) {}
    constexpr CNumeric(long long value) noexcept : m_signed(value), m_kind(Kind::kSigned) {}
    constexpr CNumeric(unsigned long long value) noexcept
        : m_unsigned(value), m_kind(Kind::kUnsigned) {}
    constexpr CNumeric(double value) noexcept : m_double(value), m_kind(Kind::kDouble) {}

    // The number that `text` begins with (see the top of this file), 0 if with none.
    static CNumeric FromText(std::string_view text) noexcept;

    Kind GetKind() const noexcept { return m_kind; }
    // Conversions as in the table above; the widths below 64 bits are its low bits, or for a
    // floating number the nearest value of the type.
    template <typename T>
    T As() const noexcept;
    // Decimal, or the shortest form that reads back as the same floating number.
    std::string ToString() const;

    // Equal numbers of equal kind.
    KELP_API friend bool operator==(const CNumeric& a, const CNumeric& b) noexcept;

  private:
    union {
        long long m_signed;
        unsigned long long m_unsigned;
        double m_double;
    };
    Kind m_kind;
};

// The readers of a value; its first byte is the type code. Not made on its own: a value is
// handed around as a reference to this where it is only read.
class KELP_API CStdBasicTypeConstRefrence {
  public:
    Enum::DataTypeEnum GetType() const noexcept { return static_cast<Enum::DataTypeEnum>(m_type); }
    // Whether it holds nothing. An empty text or block is something.
    bool IsNull() const noexcept { return m_type == Enum::DT_EMPTY; }

    char As_char() const noexcept;
    unsigned char As_unsigned_char() const noexcept;
    short As_short() const noexcept;
    unsigned short As_unsigned_short() const noexcept;
    int As_int() const noexcept;
    unsigned int As_unsigned_int() const noexcept;
    long As_long() const noexcept;
    unsigned long As_unsigned_long() const noexcept;
    long long As_long_long() const noexcept;
    unsigned long long As_unsigned_long_long() const noexcept;
    float As_float() const noexcept;
    double As_double() const noexcept;
    CNumeric As_CNumeric() const noexcept;
    CBinary As_CBinary() const;
    std::string As_std_string() const;

    // The bytes of a text, a block or a character as they lie in the value, without a copy:
    // valid until the value changes or goes. Empty for all other kinds.
    std::string_view Bytes() const noexcept;

  private:
    template <typename T>
    T Read() const noexcept;

  protected:
    CStdBasicTypeConstRefrence() noexcept = default;
    CStdBasicTypeConstRefrence(const CStdBasicTypeConstRefrence&) = default;
    CStdBasicTypeConstRefrence& operator=(const CStdBasicTypeConstRefrence&) = default;
    ~CStdBasicTypeConstRefrence() = default;

    // What is behind the type code. A number, or the address of a long text, lies at the
    // eighth byte, a long text's length at the sixteenth; a short text begins at the third.
    static constexpr std::size_t kShortMax = 22;
    static constexpr std::size_t kNumberAt = 6;  // both within m_bytes
    static constexpr std::size_t kLengthAt = 14;
    static constexpr std::uint8_t kLong = 0xFF;
    alignas(8) std::uint8_t m_type = Enum::DT_EMPTY;
    std::uint8_t m_short_length = 0;  // of a text or block; kLong: it is on the free store
    char m_bytes[kShortMax] = {};
};

// A value that owns what it holds.
class KELP_API CValue : public CStdBasicTypeConstRefrence {
  public:
    CValue() noexcept = default;
    CValue(const CValue& other) : CStdBasicTypeConstRefrence(other) {
        if (m_short_length == kLong) {
            CopyLong(other.Bytes());
        }
    }
    // Leaves `other` empty, as does the assignment.
    CValue(CValue&& other) noexcept : CStdBasicTypeConstRefrence(other) { other.Forget(); }
    CValue& operator=(const CValue& other) {
        ReadFrom(other);
        return *this;
    }
    CValue& operator=(CValue&& other) noexcept {
        if (this != &other) {
            Clear();
            CStdBasicTypeConstRefrence::operator=(other);
            other.Forget();
        }
        return *this;
    }
    ~CValue() {
        if (m_short_length == kLong) {
            Release();
        }
    }

    // Becomes a copy of `other`; stays as it was when memory fails. Reading from itself
    // changes nothing.
    void ReadFrom(const CValue& other);

    // Becomes empty.
    void Clear() noexcept {
        if (m_short_length == kLong) {
            Release();
        }
        Forget();
    }

  protected:
    // A text or a block (DT_TEXT, DT_BINARY) of these bytes.
    CValue(Enum::DataTypeEnum type, std::string_view bytes);

    // A number, stored in its own width; `type` must say the same.
    template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T>>>
    CValue(Enum::DataTypeEnum type, T number) noexcept {
        m_type = static_cast<std::uint8_t>(type);
        std::memcpy(m_bytes + kNumberAt, &number, sizeof number);
    }

  private:
    void CopyLong(std::string_view bytes);
    void Release() noexcept;
    void Forget() noexcept {
        m_type = Enum::DT_EMPTY;
        m_short_length = 0;
    }
};

}  // namespace refl

// The variant as the library and its callers use it: made from and turned into the built-in
// types. The constructors and the conversions are implicit, so a value stands wherever a number
// does. A std::string variable takes a value by initialisation or As_std_string(); plain
// assignment does not compile, since it could also mean a character.
class KELP_API TEValue : public refl::CValue {
  public:
    TEValue() noexcept = default;
    TEValue(char value) noexcept : CValue(refl::Enum::DT_CHAR, value) {}
    TEValue(signed char value) noexcept : CValue(refl::Enum::DT_CHAR, value) {}
    TEValue(unsigned char value) noexcept : CValue(refl::Enum::DT_UNSIGNED_CHAR, value) {}
    TEValue(short value) noexcept : CValue(refl::Enum::DT_SHORT, value) {}
    TEValue(unsigned short value) noexcept : CValue(refl::Enum::DT_UNSIGNED_SHORT, value) {}
    TEValue(int value) noexcept : CValue(refl::Enum::DT_INT, value) {}
    TEValue(unsigned int value) noexcept : CValue(refl::Enum::DT_UNSIGNED_INT, value) {}
    TEValue(long value) noexcept : CValue(refl::Enum::DT_LONG, value) {}
    TEValue(unsigned long value) noexcept : CValue(refl::Enum::DT_UNSIGNED_LONG, value) {}
    TEValue(long long value) noexcept : CValue(refl::Enum::DT_LONG_LONG, value) {}
    TEValue(unsigned long long value) noexcept : CValue(refl::Enum::DT_UNSIGNED_LONG, value) {}
    TEValue(float value) noexcept : CValue(refl::Enum::DT_FLOAT, value) {}
    TEValue(double value) noexcept : CValue(refl::Enum::DT_DOUBLE, value) {}
    // Null gives the empty value.
    TEValue(const char* text)
        : CValue(text == nullptr ? refl::Enum::DT_EMPTY : refl::Enum::DT_TEXT,
                 text == nullptr ? std::string_view() : std::string_view(text)) {}
    TEValue(const std::string& text) : CValue(refl::Enum::DT_TEXT, std::string_view(text)) {}
    TEValue(std::string_view text) : CValue(refl::Enum::DT_TEXT, text) {}
    TEValue(const refl::CBinary& bytes)
        : CValue(refl::Enum::DT_BINARY, std::string_view(bytes.data(), bytes.length())) {}
    // Of type DT_LONG_LONG, DT_UNSIGNED_LONG or DT_DOUBLE, as the number's kind is.
    TEValue(const refl::CNumeric& number) noexcept;
    TEValue(const refl::CValue& value) : CValue(value) {}
    TEValue(refl::CValue&& value) noexcept : CValue(static_cast<refl::CValue&&>(value)) {}

    operator char() const noexcept { return As_char(); }
    operator signed char() const noexcept { return As_CNumeric().As<signed char>(); }
    operator unsigned char() const noexcept { return As_unsigned_char(); }
    operator short() const noexcept { return As_short(); }
    operator unsigned short() const noexcept { return As_unsigned_short(); }
    operator int() const noexcept { return As_int(); }
    operator unsigned int() const noexcept { return As_unsigned_int(); }
    operator long() const noexcept { return As_long(); }
    operator unsigned long() const noexcept { return As_unsigned_long(); }
    operator long long() const noexcept { return As_long_long(); }
    operator unsigned long long() const noexcept { return As_unsigned_long_long(); }
    operator float() const noexcept { return As_float(); }
    operator double() const noexcept { return As_double(); }
    operator std::string() const { return As_std_string(); }

    // The text form as the platform's string class.
    CStdString As_TEString() const { return As_std_string(); }
};
