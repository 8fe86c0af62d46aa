#include <cstdio>

#include "kelp/secure.h"
#include "secure/fault.h"

int vsnprintf_s(char* buffer, std::size_t size, std::size_t count, const char* format,
                std::va_list arguments) {
    if (buffer == nullptr || size == 0 || size > KELP_SECURE_MAX) {
        return -1;
    }
    buffer[0] = '\0';
    if (format == nullptr || kelp::secure::InjectedError(kelp::secure::Routine::kSnprintf) != 0)
        [[unlikely]] {
        return -1;
    }
    const std::size_t limit = count < size - 1 ? count : size - 1;
    const int length = std::vsnprintf(buffer, limit + 1, format, arguments);
    if (length < 0) {
        buffer[0] = '\0';  // a conversion that failed leaves half a text
        return -1;
    }
    return static_cast<std::size_t>(length) > limit ? -1 : length;
}

int snprintf_s(char* buffer, std::size_t size, std::size_t count, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf_s(buffer, size, count, format, arguments);
    va_end(arguments);
    return length;
}
