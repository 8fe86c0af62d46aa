#include "log/standard_error.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace kelp::log {

bool WriteAll(int descriptor, std::string_view bytes) noexcept {
    const int kept = errno;
    int patience = 10;  // waits for a descriptor that somebody made non-blocking
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written < 0 && errno == EAGAIN && patience-- > 0) {
            pollfd wait{descriptor, POLLOUT, 0};
            ::poll(&wait, 1, 100);
        } else if (written == 0 || errno != EINTR) {
            break;
        }
    }
    errno = kept;
    return bytes.empty();
}

StandardError& StandardError::operator<<(std::string_view bytes) noexcept {
    if (bytes.size() > sizeof m_bytes - m_length) {
        Flush();
    }
    if (bytes.size() > sizeof m_bytes) {
        WriteAll(STDERR_FILENO, bytes);
    } else {
        m_length += bytes.copy(m_bytes + m_length, bytes.size());
    }
    return *this;
}

void StandardError::Flush() noexcept {
    WriteAll(STDERR_FILENO, {m_bytes, m_length});
    m_length = 0;
}

void Complain(std::initializer_list<std::string_view> parts) noexcept {
    std::size_t room = 1000;
    StandardError line;
    line << "kelp log: ";
    for (const std::string_view part : parts) {
        line << part.substr(0, room);
        room -= part.size() < room ? part.size() : room;
    }
    line << "\n";
}

}  // namespace kelp::log
