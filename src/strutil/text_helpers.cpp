#include <algorithm>

#include "frameutil/strutil.h"

namespace FrameUtil {

std::string Trim(const std::string& s) {
    constexpr const char* kWhitespace = " \t\n\r";
    const std::size_t begin = s.find_first_not_of(kWhitespace);
    return begin == std::string::npos
               ? std::string()
               : s.substr(begin, s.find_last_not_of(kWhitespace) - begin + 1);
}

std::vector<std::string> Split(const std::string& text, std::string_view separators,
                               EmptyItems empty) {
    std::vector<std::string> items;
    for (std::size_t begin = 0;;) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        if (end != begin || empty == EmptyItems::kKeep) {
            items.push_back(text.substr(begin, end - begin));
        }
        if (end == text.size()) {
            return items;
        }
        begin = end + 1;
    }
}

std::string EscapeQuotation(const std::string& text) {
    std::string escaped;
    escaped.reserve(text.size() +
                    static_cast<std::size_t>(std::count(text.begin(), text.end(), '\'')));
    for (const char c : text) {
        if (c == '\'') {
            escaped += c;
        }
        escaped += c;
    }
    return escaped;
}

void ClearPasswd(volatile char* p, unsigned long n) noexcept {
    for (unsigned long i = 0; p != nullptr && i < n; ++i) {
        p[i] = '\0';
    }
}

void ClearPasswd(std::string& s) noexcept {
    ClearPasswd(s.data(), s.size());
}

}  // namespace FrameUtil
