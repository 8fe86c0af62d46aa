#include <cstdarg>
#include <cstring>

#include "frameutil/log.h"
#include "kelp/secure.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kFormatSize = 4096;

constexpr std::string_view kFlowMarker = "[Frame],";
constexpr std::string_view kMarker = "[Frame]";

// A record text in one piece: the marker, and the arguments formatted right behind it,
// so that no string has to be put together on the heap. The buffer is not cleared
// first, which would cost more than a short record does: vsnprintf_s terminates
// whatever it leaves, and nothing is read beyond the terminator.
class RecordText {
  public:
    // Warns with `failure` at `where` when the text was cut or could not be formatted.
    RecordText(std::string_view marker, const char* failure, const LocationInfo& where,
               const char* fmt, std::va_list arguments) __attribute__((format(printf, 5, 0))) {
        std::memcpy(m_text, marker.data(), marker.size());
        if (vsnprintf_s(m_text + marker.size(), kFormatSize, kFormatSize - 1, fmt, arguments) ==
            -1) {
            LogProcess::Warn(failure, where);
        }
    }

    // Up to the first zero character, as every reader of a C text takes it.
    std::string_view Get() const { return m_text; }

  private:
    char m_text[kFlowMarker.size() + kFormatSize];
};

}  // namespace

void TraceFlow(LocationInfo& where, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kFlowMarker, "vsnprintf_s failed at line 47", where, fmt, arguments);
    va_end(arguments);
    LogProcess::Info(text.Get(), where);
}

void Trace(const char* fmt, ...) {
    const LocationInfo& nowhere = LocationInfo::getLocationUnavailable();
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kMarker, "vsnprintf_s failed at line 72", nowhere, fmt, arguments);
    va_end(arguments);
    LogProcess::Error(0, text.Get(), nowhere);
}

void TraceDebug(const char* fmt, ...) {
    const LocationInfo& nowhere = LocationInfo::getLocationUnavailable();
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kMarker, "vsnprintf_s failed at line 89", nowhere, fmt, arguments);
    va_end(arguments);
    LogProcess::Debug(text.Get(), nowhere);
}

void TraceInfo(const char* fmt, ...) {
    const LocationInfo& nowhere = LocationInfo::getLocationUnavailable();
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kMarker, "vsnprintf_s failed at line 106", nowhere, fmt, arguments);
    va_end(arguments);
    LogProcess::Info(text.Get(), nowhere);
}

void TraceWarn(const char* fmt, ...) {
    const LocationInfo& nowhere = LocationInfo::getLocationUnavailable();
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kMarker, "vsnprintf_s failed at line 123", nowhere, fmt, arguments);
    va_end(arguments);
    LogProcess::Warn(text.Get(), nowhere);
}

void TraceError(unsigned long code, const char* fmt, ...) {
    const LocationInfo& nowhere = LocationInfo::getLocationUnavailable();
    std::va_list arguments;
    va_start(arguments, fmt);
    const RecordText text(kMarker, "vsnprintf_s failed at line 140", nowhere, fmt, arguments);
    va_end(arguments);
    LogProcess::Error(static_cast<unsigned int>(code), text.Get(), nowhere);
}

}  // namespace FrameUtil
