// support/write_file.h - writing a whole file, or nothing.
//
// Thread rule: thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace app {

/// Makes `octets` the contents of the file at `path`, in one step: they are written to a
/// new file beside it, which then takes its name, so whoever opens `path` finds the old
/// contents or the new ones. An existing file keeps its permissions and, if `path` is a
/// symbolic link, its place. What is no regular file (a pipe, a device) is written to as
/// it stands. False, with `why` naming the path and the reason; the file is as it was then.
bool WriteFile(const std::string& path, std::string_view octets, std::string& why);

/// Writes `octets` to the open descriptor `fd`. False with errno.
bool WriteAll(int fd, std::string_view octets);

}  // namespace app
