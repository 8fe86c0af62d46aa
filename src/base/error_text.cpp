#include "base/error_text.h"

#include <cstdarg>
#include <string_view>

#include "kelp/secure.h"

namespace FrameUtil {

void LogError(const LocationInfo& where, unsigned int code, const char* fmt, ...) {
    char text[4096];
    std::va_list arguments;
    va_start(arguments, fmt);
    // A cut text is still the best that there is to say.
    static_cast<void>(vsnprintf_s(text, sizeof text, sizeof text - 1, fmt, arguments));
    va_end(arguments);
    LogProcess::Error(code, std::string_view(text), where);
}

}  // namespace FrameUtil
