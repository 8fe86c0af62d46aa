// support/file.h - reading a whole file that somebody else wrote.
//
// Thread rule: thread-safe.
#pragma once

#include <cstddef>
#include <string>

namespace app {

/// Reads the file at `path` ("-": standard input) into `out`. False, with `why` naming the
/// path and the reason, when it cannot be read, is a directory or holds more than
/// `limit_bytes`; `out` is empty then. Never holds more than limit_bytes + 1 in memory.
bool ReadFile(const std::string& path, std::size_t limit_bytes, std::string& out, std::string& why);

/// The same, but never waits: a pipe or a terminal is refused as well, and "-" is a name.
bool ReadRegularFile(const std::string& path, std::size_t limit_bytes, std::string& out,
                     std::string& why);

}  // namespace app
