#include "support/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace app {
namespace {

struct Descriptor {
    int fd;
    bool owned;
    ~Descriptor() {
        if (owned && fd >= 0) {
            close(fd);
        }
    }
};

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

bool ReadAll(const Descriptor& file, const std::string& path, std::size_t limit_bytes,
             std::string& out, std::string& why) {
    out.clear();
    if (file.fd < 0) {
        why = path + ": " + ErrorText(errno);
        return false;
    }
    char block[65536];
    for (;;) {
        const ssize_t got = read(file.fd, block, sizeof block);
        if (got == 0) {
            return true;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            why = path + ": " + ErrorText(errno);
            out.clear();
            return false;
        }
        if (static_cast<std::size_t>(got) > limit_bytes - out.size()) {
            why = path + ": larger than " + std::to_string(limit_bytes) + " bytes";
            out.clear();
            return false;
        }
        out.append(block, static_cast<std::size_t>(got));
    }
}

}  // namespace

bool ReadFile(const std::string& path, std::size_t limit_bytes, std::string& out,
              std::string& why) {
    const bool standard_input = path == "-";
    const Descriptor file{standard_input ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC),
                          !standard_input};
    return ReadAll(file, path, limit_bytes, out, why);
}

bool ReadRegularFile(const std::string& path, std::size_t limit_bytes, std::string& out,
                     std::string& why) {
    const Descriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY), true};
    struct stat found {};
    if (file.fd >= 0 && fstat(file.fd, &found) == 0 && !S_ISREG(found.st_mode)) {
        out.clear();
        why = path + ": " + (S_ISDIR(found.st_mode) ? ErrorText(EISDIR) : "no regular file");
        return false;
    }
    return ReadAll(file, path, limit_bytes, out, why);
}

}  // namespace app
