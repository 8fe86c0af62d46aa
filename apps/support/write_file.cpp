#include "support/write_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace app {
namespace {

bool Refuse(const std::string& path, int error, std::string& why) {
    why = path + ": " + std::generic_category().message(error);
    return false;
}

// The permissions of a file that open() makes.
mode_t UsualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The file that `path` leads to over symbolic links; `path` itself when it is not there.
std::string Resolved(const std::string& path) {
    char* const real = realpath(path.c_str(), nullptr);
    if (real == nullptr) {
        return path;
    }
    std::string resolved = real;
    free(real);
    return resolved;
}

bool WriteThrough(const std::string& path, std::string_view octets, std::string& why) {
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        return Refuse(path, errno, why);
    }
    const bool written = WriteAll(fd, octets);
    const int error = errno;
    if (close(fd) != 0 && written) {
        return Refuse(path, errno, why);
    }
    return written || Refuse(path, error, why);
}

// Fills the new file and gives it `target`'s name; 0 or a system error number.
int FillAndRename(int fd, const std::string& made, const std::string& target, mode_t mode,
                  std::string_view octets) {
    int error = 0;
    if (!WriteAll(fd, octets) || fchmod(fd, mode) != 0 || fsync(fd) != 0) {
        error = errno;
    }
    if (close(fd) != 0 && error == 0) {
        error = errno;
    }
    if (error == 0 && rename(made.c_str(), target.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(made.c_str());
    }
    return error;
}

}  // namespace

bool WriteAll(int fd, std::string_view octets) {
    while (!octets.empty()) {
        const ssize_t written = write(fd, octets.data(), octets.size());
        if (written >= 0) {
            octets.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool WriteFile(const std::string& path, std::string_view octets, std::string& why) {
    struct stat there {};
    const bool exists = stat(path.c_str(), &there) == 0;
    if (!exists && errno != ENOENT) {
        return Refuse(path, errno, why);
    }
    if (exists && !S_ISREG(there.st_mode)) {
        return WriteThrough(path, octets, why);
    }
    if (exists && access(path.c_str(), W_OK) != 0) {
        return Refuse(path, errno, why);  // renaming over it would get round its permissions
    }
    const std::string target = Resolved(path);
    std::string made = target + ".XXXXXX";
    const int fd = mkostemp(made.data(), O_CLOEXEC);
    if (fd < 0) {
        return Refuse(path, errno, why);
    }
    const mode_t mode = exists ? there.st_mode & 07777 : UsualMode();
    const int error = FillAndRename(fd, made, target, mode, octets);
    return error == 0 || Refuse(path, error, why);
}

}  // namespace app
