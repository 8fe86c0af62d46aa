// How a record becomes one line, in either format. A line never holds a line break or
// another control character, whatever the record's text is, and a JSON line is valid
// JSON (hence valid UTF-8) for any bytes.
#pragma once

#include <cstdint>
#include <string>

#include "kelp/log.h"
#include "log/context.h"

namespace kelp::log {

// The line of `record`, without a line break at its end.
std::string Render(const Record& record, const LineContext& context);

// "debug", "info", "warn", "error", "off".
const char* LevelName(Level level) noexcept;

// Writes the UTC time "2024-11-21T09:27:13.123456Z" and a terminator. Years from 0 to
// 9999. Async-signal-safe.
constexpr std::size_t kTimeSize = 28;
void PrintTime(std::int64_t microseconds_since_epoch, char (&text)[kTimeSize]) noexcept;

}  // namespace kelp::log
