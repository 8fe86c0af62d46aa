// kelp/resource.h - texts for people, looked up by key, in the language of the installation.
//
//     // /opt/nms/oss/res/errors.res:   port.busy.desc=The port is in use.
//     if (KelpAddResFileWithAbsolute("/opt/nms/oss/res/errors.res") == 1) {
//         const char* text = KelpGetResString("port.busy.desc");   // "The port is in use."
//     }
//
// A file is UTF-8 text of "key=value" lines; docs/formats/resources.md is its description.
// The environment variable KELP_LANGUAGE, such as "zh_CN", chooses the language: with it
// the texts of "errors_zh.res" and "errors_zh_CN.res" beside "errors.res", where they are
// there, take the place of those of the same keys in "errors.res". Without it, or for a
// key that is not translated, the text is the one of the file itself.
//
// thread-safe, as long as no thread changes the environment meanwhile. Throws nothing but
// std::bad_alloc, and then nothing was registered.
#pragma once

#include <string>

#include "kelp/export.h"

/// Registers the texts of the file at `path` and of its files in the language of the
/// process. A key that is known already has the new text from now on, so the last file
/// wins. Result: 1 on success.
///
/// 0, with one error in the log that names the file and, where there is one, the line,
/// when the file is not there, is no regular file, cannot be read, is larger than 16 MiB
/// or holds a line that is none of the format, or when that is true of a file in the
/// process's language (but it is not an error if that is not there). Nothing at all is
/// registered then. A KELP_LANGUAGE that cannot be a language is named in a warning and
/// otherwise ignored.
KELP_API int KelpAddResFileWithAbsolute(const std::string& path);

/// The text registered under `key`, or null. The text is never changed and lives as long
/// as the process does, also when the key has another text later.
KELP_API const char* KelpGetResString(const std::string& key);
