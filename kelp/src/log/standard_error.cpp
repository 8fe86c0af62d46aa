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

void Complain(std::string_view what, std::string_view about, std::string_view why) noexcept {
    char line[1024];
    std::size_t length = 0;
    for (const std::string_view part : {std::string_view("kelp log: "), what, about, why}) {
        length += part.copy(line + length, sizeof line - 1 - length);
    }
    line[length++] = '\n';
    WriteAll(STDERR_FILENO, {line, length});
}

}  // namespace kelp::log
