// The contents of a file that somebody else wrote.
//
// thread-safe.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

namespace FrameUtil {

/// What a file is and what is in it.
struct FileContents {
    std::string octets;
    mode_t mode = 0;
};

namespace detail {

class Descriptor {
  public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_fd; }

  private:
    const int m_fd;
};

}  // namespace detail

/// Reads the regular file at `path`, and never waits for what another kind of file, a pipe
/// or a terminal, may still bring. Result: 0 or the system's error number, EISDIR or EINVAL
/// for what is not regular, EFBIG above `limit` octets; `file` is unspecified then.
inline int ReadRegularFile(const std::string& path, std::size_t limit, FileContents& file) {
    const detail::Descriptor descriptor(
        ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (descriptor.Get() < 0 || ::fstat(descriptor.Get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    file.mode = status.st_mode;
    file.octets.clear();
    char piece[16384];
    for (;;) {
        const ssize_t count = ::read(descriptor.Get(), piece, sizeof piece);
        if (count == 0) {
            return 0;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return errno;
        }
        if (file.octets.size() + static_cast<std::size_t>(count) > limit) {
            return EFBIG;
        }
        file.octets.append(piece, static_cast<std::size_t>(count));
    }
}

}  // namespace FrameUtil
