#include <cerrno>
#include <cstring>
#include <optional>

#include "kelp/secure.h"
#include "secure/fault.h"

namespace {

using kelp::secure::InjectedError;
using kelp::secure::Routine;

bool Overlap(const void* a, std::size_t a_size, const void* b, std::size_t b_size) {
    // As numbers: comparing pointers into different objects has no defined result.
    const auto first = reinterpret_cast<std::uintptr_t>(a);
    const auto second = reinterpret_cast<std::uintptr_t>(b);
    return first < second ? second - first < a_size : first - second < b_size;
}

int Zeroed(void* dest, std::size_t size, int error) {
    std::memset(dest, 0, size);
    return error;
}

int Emptied(char* dest, int error) {
    dest[0] = '\0';
    return error;
}

// Copies `length` characters that are known to be readable, and a terminator.
int CopyText(char* dest, std::size_t dest_size, const char* src, std::size_t length,
             std::size_t src_size) {
    if (length >= dest_size) {
        return Emptied(dest, ERANGE);
    }
    if (Overlap(dest, length + 1, src, src_size)) {
        return Emptied(dest, EINVAL);
    }
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

// What memcpy_s and memset_s answer before they look at anything else; nothing when they
// are to write `count` bytes, which fit.
std::optional<int> SettledByBounds(Routine routine, void* dest, std::size_t dest_size,
                                   std::size_t count) {
    if (dest_size > KELP_SECURE_MAX) {
        return ERANGE;
    }
    if (const int error = InjectedError(routine); error != 0) [[unlikely]] {
        return dest == nullptr ? error : Zeroed(dest, dest_size, error);
    }
    if (count == 0) {
        return 0;
    }
    if (dest == nullptr) {
        return EINVAL;
    }
    if (count > dest_size) {
        return Zeroed(dest, dest_size, ERANGE);
    }
    return std::nullopt;
}

}  // namespace

int memcpy_s(void* dest, std::size_t dest_size, const void* src, std::size_t count) {
    if (const std::optional<int> settled =
            SettledByBounds(Routine::kMemcpy, dest, dest_size, count)) {
        return *settled;
    }
    if (src == nullptr || Overlap(dest, count, src, count)) {
        return Zeroed(dest, dest_size, EINVAL);
    }
    std::memcpy(dest, src, count);
    return 0;
}

int memset_s(void* dest, std::size_t dest_size, int value, std::size_t count) {
    if (const std::optional<int> settled =
            SettledByBounds(Routine::kMemset, dest, dest_size, count)) {
        return *settled;
    }
    std::memset(dest, value, count);
    // Tells the compiler that somebody reads the bytes, however dead they look.
    __asm__ __volatile__("" : : "r"(dest) : "memory");
    return 0;
}

int strcpy_s(char* dest, std::size_t dest_size, const char* src) {
    if (dest == nullptr) {
        return EINVAL;
    }
    if (dest_size == 0 || dest_size > KELP_SECURE_MAX) {
        return ERANGE;
    }
    if (const int error = InjectedError(Routine::kStrcpy); error != 0) [[unlikely]] {
        return Emptied(dest, error);
    }
    if (src == nullptr) {
        return Emptied(dest, EINVAL);
    }
    const std::size_t length = strnlen(src, dest_size);
    return CopyText(dest, dest_size, src, length, length + 1);
}

int strncpy_s(char* dest, std::size_t dest_size, const char* src, std::size_t count) {
    if (dest == nullptr) {
        return EINVAL;
    }
    if (dest_size == 0 || dest_size > KELP_SECURE_MAX) {
        return ERANGE;
    }
    if (const int error = InjectedError(Routine::kStrncpy); error != 0) [[unlikely]] {
        return Emptied(dest, error);
    }
    if (src == nullptr) {
        return Emptied(dest, count == 0 ? 0 : EINVAL);
    }
    // No further than the destination reaches: `src` may have no terminator.
    const std::size_t length = strnlen(src, count < dest_size ? count : dest_size);
    return CopyText(dest, dest_size, src, length, length);
}
