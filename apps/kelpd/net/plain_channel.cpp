#include <sys/socket.h>

#include <cerrno>
#include <system_error>

#include "kelpd/net/channel.h"

namespace kelpd {
namespace {

class PlainChannel final : public Channel {
  public:
    explicit PlainChannel(int socket) : socket_(socket) {}

    Io Handshake() override { return Io::kDone; }

    Done Read(char* buffer, std::size_t size) override {
        const ssize_t count = ::recv(socket_, buffer, size, MSG_DONTWAIT);
        return count == 0 ? Done{Io::kEnd, 0} : Judge(count, Io::kWantRead);
    }

    Done Write(const char* octets, std::size_t size) override {
        return Judge(::send(socket_, octets, size, MSG_DONTWAIT | MSG_NOSIGNAL), Io::kWantWrite);
    }

    bool HasPending() const override { return false; }

    Io EndWriting() override { return ::shutdown(socket_, SHUT_WR) == 0 ? Io::kDone : Io::kFailed; }

    const std::string& why() const override { return why_; }

  private:
    Done Judge(ssize_t count, Io want) {
        if (count >= 0) {
            return {Io::kDone, static_cast<std::size_t>(count)};
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) {
            return {want, 0};
        }
        why_ = std::generic_category().message(errno);
        return {Io::kFailed, 0};
    }

    const int socket_;
    std::string why_;
};

}  // namespace

std::unique_ptr<Channel> MakePlainChannel(int socket) {
    return std::make_unique<PlainChannel>(socket);
}

}  // namespace kelpd
