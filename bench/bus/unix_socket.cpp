// Blocking reads and writes on a Unix-domain stream socket, one server thread a
// connection. Both sides know the size, so nothing but the payload travels.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "bus/contestant.h"
#include "support/check.h"

namespace bench {

namespace {

constexpr const char* kName = "unix";

int Socket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Require(fd >= 0, kName, "no socket");
    return fd;
}

sockaddr_un Address(const Line& line) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = line.folder + "/unix.sock";
    Require(path.size() < sizeof address.sun_path, kName, "the socket's path is too long");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

bool ReadAll(int fd, std::string& octets) {
    for (std::size_t done = 0; done != octets.size();) {
        const ssize_t got = read(fd, octets.data() + done, octets.size() - done);
        if (got <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(got);
    }
    return true;
}

bool WriteAll(int fd, const std::string& octets) {
    for (std::size_t done = 0; done != octets.size();) {
        const ssize_t put = write(fd, octets.data() + done, octets.size() - done);
        if (put <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(put);
    }
    return true;
}

void Echo(int fd, std::size_t octets) {
    std::string payload(octets, '\0');
    while (ReadAll(fd, payload) && WriteAll(fd, payload)) {
    }
    close(fd);
}

void Serve(const Line& line, void (*ready)()) {
    const int listening = Socket();
    const sockaddr_un address = Address(line);
    Require(bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                listen(listening, 64) == 0,
            kName, "the server does not listen");
    ready();
    for (;;) {
        const int fd = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        Require(fd >= 0, kName, "no connection");
        std::thread(Echo, fd, line.octets).detach();
    }
}

class UnixClient : public Client {
  public:
    explicit UnixClient(const Line& line) : fd_(Socket()) {
        const sockaddr_un address = Address(line);
        Require(connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
                kName, "the client does not connect");
    }
    ~UnixClient() override { close(fd_); }

    void Exchange(const std::string& request, std::string& answer) override {
        answer.resize(request.size());
        Require(WriteAll(fd_, request) && ReadAll(fd_, answer), kName, "the request failed");
    }

  private:
    int fd_;
};

}  // namespace

const Contestant kUnixSocket = {kName, Serve, [](const Line& line) -> std::unique_ptr<Client> {
                                    return std::make_unique<UnixClient>(line);
                                }};

}  // namespace bench
