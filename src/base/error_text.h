// An error record with a formatted text, for messages that name where they come from.
//
//     LogError(LocationInfo("restgroup", __func__, __LINE__), 0xb00001a,
//              "parse json fail: %s", body.c_str());
//
// A text is at most 4095 characters long and cut there, as a trace is: a body that came from
// elsewhere may be of any length. thread-safe; does not throw.
#pragma once

#include "kelp/log.h"

namespace FrameUtil {

void LogError(const LocationInfo& where, unsigned int code, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace FrameUtil
