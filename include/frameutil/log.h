// Trace functions: printf-style logging over the platform's logger (kelp/log.h), each
// record led by the library's marker.
//
//     FrameUtil::TraceInfo("%zu elements loaded", count);   // "[Frame]17 elements loaded"
//     FrameUtil::TraceError(0x42000064, "no answer from %s", host);
//
// thread-safe: no state of their own. Nothing throws and nothing is allocated here.
//
// A formatted text is at most 4095 characters long. A longer one is cut there, and the
// warning "vsnprintf_s failed at line N" (N is one number a function) stands before the
// cut record. A null or failing format gives the same warning and a record that is the
// marker alone. No level is filtered here: the logger decides what is written.
#pragma once

#include "frameutil/error_manage.h"
#include "frameutil/export.h"
#include "kelp/log.h"

namespace FrameUtil {

// An information record "[Frame],text" (with a comma) at the caller's own location.
FRAMEUTIL_API void TraceFlow(LocationInfo& where, const char* fmt, ...)
    __attribute__((format(printf, 2, 3)));

// An internal fault of the library: deliberately a record of error level with code 0,
// not a debug line. The records of this and of the functions below are "[Frame]text", no
// space between, at LocationInfo::getLocationUnavailable().
FRAMEUTIL_API void Trace(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

FRAMEUTIL_API void TraceDebug(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
FRAMEUTIL_API void TraceInfo(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
FRAMEUTIL_API void TraceWarn(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// An error record with `code`, of which the lower 32 bits are logged.
FRAMEUTIL_API void TraceError(unsigned long code, const char* fmt, ...)
    __attribute__((format(printf, 2, 3)));

}  // namespace FrameUtil
