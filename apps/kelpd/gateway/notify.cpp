#include "kelpd/gateway/notify.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "support/unique_fd.h"

namespace kelpd {

void NotifySupervisor(std::string_view state) {
    // Nothing changes the environment. NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char* const name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    if (name == nullptr || (*name != '/' && *name != '@') ||
        std::strlen(name) >= sizeof address.sun_path) {
        return;
    }
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, name);
    if (*name == '@') {
        address.sun_path[0] = '\0';  // a name of the kernel's, in no file system
    }
    const app::UniqueFd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(name));
    ::sendto(socket.get(), state.data(), state.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
             reinterpret_cast<const sockaddr*>(&address), size);
}

}  // namespace kelpd
