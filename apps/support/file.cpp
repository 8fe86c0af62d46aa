#include "support/file.h"

#include <fcntl.h>
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

}  // namespace

bool ReadFile(const std::string& path, std::size_t limit_bytes, std::string& out,
              std::string& why) {
    out.clear();
    const bool standard_input = path == "-";
    const Descriptor file{standard_input ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC),
                          !standard_input};
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

}  // namespace app
