// Which files a resource file's texts come from, and what is in them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelp::resource {

/// More than any translation needs; what is larger was named by mistake.
inline constexpr std::size_t kMaxFile = std::size_t{16} << 20;

/// Whether `language` is one: parts of 2 to 8 letters or digits, at most four, with '_'
/// between, so that it can be nothing else than a part of a file's name.
bool IsLanguage(std::string_view language);

/// The files beside `path` with its texts in `language`, the more general first:
/// "a_zh.res", "a_zh_CN.res" for "a.res" and "zh_CN". REQUIRES: IsLanguage(language).
std::vector<std::string> Translations(const std::string& path, std::string_view language);

/// Reads the regular file at `path`, never waiting for what another kind of file may
/// still bring. Result: 0 or the system's error number, EFBIG above kMaxFile.
int ReadFile(const std::string& path, std::string& contents);

}  // namespace kelp::resource
