#include "resource/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/unique_fd.h"

namespace kelp::resource {

namespace {

constexpr int kMostParts = 4;

bool IsLanguagePart(std::string_view part) {
    const auto is_plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return part.size() >= 2 && part.size() <= 8 && std::all_of(part.begin(), part.end(), is_plain);
}

// Where the extension of the file's name begins, the name's end when it has none.
std::size_t ExtensionAt(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos || dot <= name ? path.size() : dot;
}

}  // namespace

bool IsLanguage(std::string_view language) {
    for (int parts = 1; parts <= kMostParts; ++parts) {
        const std::size_t end = std::min(language.find('_'), language.size());
        if (!IsLanguagePart(language.substr(0, end))) {
            return false;
        }
        if (end == language.size()) {
            return true;
        }
        language.remove_prefix(end + 1);
    }
    return false;
}

std::vector<std::string> Translations(const std::string& path, std::string_view language) {
    std::vector<std::string> files;
    const std::size_t extension = ExtensionAt(path);
    for (std::size_t end = 0; end < language.size();) {
        end = std::min(language.find('_', end + 1), language.size());
        std::string file = path;
        std::string suffix(1, '_');
        suffix += language.substr(0, end);
        file.insert(extension, suffix);
        files.push_back(std::move(file));
    }
    return files;
}

int ReadFile(const std::string& path, std::string& contents) {
    contents.clear();
    const base::UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    char piece[16384];
    for (;;) {
        const ssize_t count = ::read(file.get(), piece, sizeof piece);
        if (count == 0) {
            return 0;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        const int error = count < 0 ? errno : 0;
        if (error != 0 || contents.size() + static_cast<std::size_t>(count) > kMaxFile) {
            contents.clear();
            return error != 0 ? error : EFBIG;
        }
        contents.append(piece, static_cast<std::size_t>(count));
    }
}

}  // namespace kelp::resource
