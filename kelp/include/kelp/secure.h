// Bounded copies, formatting and scanning: every routine is told how large its
// destination is and never writes beyond it.
//
//     char name[32];
//     if (int error = strcpy_s(name, sizeof name, input); error != 0) {
//         Trace("strcpy_s failed at line %d errno: %d", __LINE__, error);
//     }                               // name is a terminated text either way
//
// thread-safe: the routines keep no state.
//
// The contract, the same for all of them:
//
// | situation                          | result       | destination afterwards            |
// |------------------------------------|--------------|-----------------------------------|
// | done                               | 0 (a count)  | the copy, texts terminated        |
// | destination or source is null      | EINVAL (-1)  | zeroed (texts: "") if there is one|
// | source and destination overlap     | EINVAL       | zeroed (texts: "")                |
// | the copy does not fit              | ERANGE       | zeroed (texts: "")                |
// | formatted text does not fit        | -1           | as many characters as fit, then 0 |
// | destination size is 0 (texts), or  | ERANGE (-1)  | untouched                         |
// |   above KELP_SECURE_MAX            |              |                                   |
//
// Nothing throws. A size above KELP_SECURE_MAX is a negative number that became
// unsigned on its way here, so such a size is refused instead of believed. Copying
// 0 bytes succeeds whatever the pointers are, so an empty block needs no special case.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kelp/export.h"

// The largest size, in bytes, that a destination can honestly have.
inline constexpr std::size_t KELP_SECURE_MAX = SIZE_MAX >> 1;

// Copies `count` bytes. Result: 0, EINVAL or ERANGE; after a failure the whole
// destination (`dest_size` bytes) is zero. Overlapping blocks are refused.
KELP_API int memcpy_s(void* dest, std::size_t dest_size, const void* src, std::size_t count);

// Sets `count` bytes to the low byte of `value`. Result: 0, EINVAL or ERANGE; after
// a failure the whole destination is zero. The compiler never removes the store, so
// it also serves to wipe secrets.
KELP_API int memset_s(void* dest, std::size_t dest_size, int value, std::size_t count);

// Copies the text `src` with its terminator. Result: 0, EINVAL or ERANGE; after a
// failure `dest` is the empty text. `src` must be terminated within `dest_size`
// characters or anywhere later.
KELP_API int strcpy_s(char* dest, std::size_t dest_size, const char* src);

// Copies at most `count` characters of `src`, stopping at its terminator, and
// terminates. ERANGE when what is to be copied and the terminator do not fit: this
// form never cuts silently.
KELP_API int strncpy_s(char* dest, std::size_t dest_size, const char* src, std::size_t count);

// Formats like printf, at most `count` characters and never more than `size` - 1,
// and terminates. Result: the number of characters written, or -1 when the text was
// cut (the characters that fit stay), when an argument is bad or the conversion
// failed (the text is empty). `format` belongs to the program: it must never come
// from outside.
KELP_API int snprintf_s(char* buffer, std::size_t size, std::size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
KELP_API int vsnprintf_s(char* buffer, std::size_t size, std::size_t count, const char* format,
                         std::va_list arguments) __attribute__((format(printf, 4, 0)));

namespace kelp::secure {

// One argument of sscanf_s: where a conversion stores, or how large the text buffer
// before it is. Made by the compiler from the call's arguments.
struct ScanArgument {
    enum class Kind {
        kSize,
        kChars,
        kSignedChar,
        kUnsignedChar,
        kShort,
        kUnsignedShort,
        kInt,
        kUnsigned,
        kLong,
        kUnsignedLong,
        kLongLong,
        kUnsignedLongLong,
        kFloat,
        kDouble,
    };
    Kind kind;
    void* target;      // null for kSize
    std::size_t size;  // kSize only
};

template <typename T>
constexpr ScanArgument::Kind KindOf() {
    using Kind = ScanArgument::Kind;
    if constexpr (std::is_same_v<T, char>)
        return Kind::kChars;
    else if constexpr (std::is_same_v<T, signed char>)
        return Kind::kSignedChar;
    else if constexpr (std::is_same_v<T, unsigned char>)
        return Kind::kUnsignedChar;
    else if constexpr (std::is_same_v<T, short>)
        return Kind::kShort;
    else if constexpr (std::is_same_v<T, unsigned short>)
        return Kind::kUnsignedShort;
    else if constexpr (std::is_same_v<T, int>)
        return Kind::kInt;
    else if constexpr (std::is_same_v<T, unsigned int>)
        return Kind::kUnsigned;
    else if constexpr (std::is_same_v<T, long>)
        return Kind::kLong;
    else if constexpr (std::is_same_v<T, unsigned long>)
        return Kind::kUnsignedLong;
    else if constexpr (std::is_same_v<T, long long>)
        return Kind::kLongLong;
    else if constexpr (std::is_same_v<T, unsigned long long>)
        return Kind::kUnsignedLongLong;
    else if constexpr (std::is_same_v<T, float>)
        return Kind::kFloat;
    else {
        static_assert(std::is_same_v<T, double>, "sscanf_s cannot store into this type");
        return Kind::kDouble;
    }
}

template <typename T>
ScanArgument MakeScanArgument(T* target) {
    return {KindOf<T>(), target, 0};
}
template <typename T, typename = std::enable_if_t<std::is_integral_v<T>>>
ScanArgument MakeScanArgument(T size) {
    return {ScanArgument::Kind::kSize, nullptr, static_cast<std::size_t>(size)};
}

KELP_API int Scan(const char* text, const char* format, const ScanArgument* arguments,
                  std::size_t argument_count);

}  // namespace kelp::secure

// Reads values out of `text` as sscanf does: %d %i %u %o %x with hh, h, l, ll, z;
// %f %e %g (float) and with l (double); %s %c %[set] ; %n, %%, %* and field widths.
// Every %s, %c and %[ is followed by its buffer and then the buffer's size in
// characters:
//
//     int port; char host[64];
//     if (sscanf_s(line, "%63[^:]:%d", host, sizeof host, &port) == 2) ...
//
// Result: the number of values stored, or -1 when nothing was read before the text
// ended, or an argument is null, missing or of another type than its conversion. A
// text that does not fit its buffer ends the scan before it: the buffer is the empty
// text and the value does not count. A number outside its type's range takes the
// nearest value of the type.
template <typename... Arguments>
int sscanf_s(const char* text, const char* format, Arguments... arguments) {
    // One element more than there are arguments: an array of none is not allowed.
    const kelp::secure::ScanArgument list[] = {
        kelp::secure::MakeScanArgument(arguments)...,
        {kelp::secure::ScanArgument::Kind::kSize, nullptr, 0}};
    return kelp::secure::Scan(text, format, list, sizeof...(arguments));
}
