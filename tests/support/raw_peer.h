// The other end of a bus connection, made octet by octet: it shares no code with the bus,
// so what it sees is what really goes over the line, and it can send what no bus would.
//
//     RawListener server(run_dir, 56, 1);          // poses as process 56.1
//     RawPeer peer = server.Accept();
//     std::string request = peer.ReceiveFrame();   // a message: header, body, trailer
//     peer.SendFrame(RawAnswer(request, body));
//
// one thread. Every wait has a deadline of 30 seconds; "" stands for "it did not come".
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

inline std::uint64_t RawGet(const std::string& octets, std::size_t offset, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width && offset + i < octets.size(); ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(octets[offset + i])} << (8 * i);
    }
    return value;
}

inline void RawPut(std::string& octets, std::size_t offset, std::size_t width,
                   std::uint64_t value) {
    for (std::size_t i = 0; i < width; ++i) {
        octets[offset + i] = static_cast<char>(value >> (8 * i));
    }
}

// Where the header's fields are: offset and width.
struct RawField {
    std::size_t offset;
    std::size_t width;
};
inline constexpr RawField kVersion{0, 1}, kSrcDesk{8, 2}, kDstDesk{10, 2}, kSrcHandle{12, 2},
    kDstHandle{14, 2}, kSrcProc{16, 2}, kDstProc{18, 2}, kCommand{20, 4}, kKind{24, 1},
    kFlags{25, 1}, kSerial{28, 4}, kError{32, 4}, kSrcTask{38, 2}, kDstTask{40, 2},
    kBodyLength{44, 4}, kSrcMgr{48, 1}, kDstMgr{49, 1};

inline std::uint64_t RawGet(const std::string& octets, RawField field) {
    return RawGet(octets, field.offset, field.width);
}
inline void RawPut(std::string& octets, RawField field, std::uint64_t value) {
    RawPut(octets, field.offset, field.width, value);
}

// A request as a client's bus would send it, from process 7.7.
inline std::string RawRequest(std::uint16_t proc, std::uint32_t command, std::uint32_t serial,
                              const std::string& body) {
    std::string message(50, '\0');
    RawPut(message, kVersion, 10);
    RawPut(message, kKind, 6);
    RawPut(message, kSrcProc, 7);
    RawPut(message, kSrcHandle, 7);
    RawPut(message, kDstProc, proc);
    RawPut(message, kCommand, command);
    RawPut(message, kSerial, serial);
    RawPut(message, kBodyLength, body.size() + 2);
    return message + body;
}

// The answer to a received request.
inline std::string RawAnswer(const std::string& request, const std::string& body,
                             std::uint32_t error = 0) {
    std::string message = request.substr(0, 50);
    const std::pair<RawField, RawField> turned[] = {{kSrcDesk, kDstDesk},
                                                    {kSrcHandle, kDstHandle},
                                                    {kSrcProc, kDstProc},
                                                    {kSrcTask, kDstTask},
                                                    {kSrcMgr, kDstMgr}};
    for (const auto& [from, to] : turned) {
        RawPut(message, from, RawGet(request, to));
        RawPut(message, to, RawGet(request, from));
    }
    RawPut(message, kFlags, 1);
    RawPut(message, kError, error);
    RawPut(message, kBodyLength, body.size() + 2);
    return message + body;
}

class RawPeer {
  public:
    RawPeer() = default;
    explicit RawPeer(int fd) : m_fd(fd) {}
    RawPeer(RawPeer&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    RawPeer& operator=(RawPeer&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~RawPeer() { Close(); }

    // Connects to a process's socket; not connected when that fails.
    static RawPeer Connect(const std::string& run_dir, unsigned proc, unsigned handle) {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_un address = Address(run_dir, proc, handle);
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            ::close(fd);
            return RawPeer();
        }
        return RawPeer(fd);
    }

    bool Connected() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    void Close() {
        if (m_fd >= 0) {
            ::close(std::exchange(m_fd, -1));
        }
    }

    // False when the other end has closed.
    bool Send(const std::string& octets) {
        std::size_t sent = 0;
        while (sent < octets.size()) {
            const ssize_t count =
                ::send(m_fd, octets.data() + sent, octets.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }
    bool SendFrame(const std::string& message) {
        std::string length(4, '\0');
        RawPut(length, 0, 4, message.size());
        return Send(length + message);
    }

    // The next message, without its length; "" at the end of the stream.
    std::string ReceiveFrame() {
        const std::string length = Receive(4);
        return length.empty() ? "" : Receive(RawGet(length, 0, 4));
    }
    // Whether the other end closes the connection without sending anything more.
    bool SeesTheEnd() { return Receive(1).empty() && m_ended; }

    static sockaddr_un Address(const std::string& run_dir, unsigned proc, unsigned handle) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path =
            run_dir + "/" + std::to_string(proc) + "." + std::to_string(handle) + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }

  private:
    std::string Receive(std::size_t count) {
        std::string octets(count, '\0');
        std::size_t have = 0;
        if (!Connected()) {
            return "";
        }
        while (have < count) {
            pollfd ready{m_fd, POLLIN, 0};
            if (::poll(&ready, 1, 30000) != 1) {
                return "";
            }
            const ssize_t got = ::recv(m_fd, octets.data() + have, count - have, 0);
            if (got <= 0) {
                m_ended = true;
                return "";
            }
            have += static_cast<std::size_t>(got);
        }
        return octets;
    }

    int m_fd = -1;
    bool m_ended = false;
};

class RawListener {
  public:
    RawListener(const std::string& run_dir, unsigned proc, unsigned handle)
        : m_address(RawPeer::Address(run_dir, proc, handle)),
          m_fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        m_listening =
            ::bind(m_fd, reinterpret_cast<const sockaddr*>(&m_address), sizeof m_address) == 0 &&
            ::listen(m_fd, 16) == 0;
    }
    ~RawListener() {
        ::close(m_fd);
        ::unlink(m_address.sun_path);
    }
    RawListener(const RawListener&) = delete;
    RawListener& operator=(const RawListener&) = delete;

    bool Listening() const { return m_listening; }
    RawPeer Accept() {
        pollfd ready{m_fd, POLLIN, 0};
        return ::poll(&ready, 1, 30000) == 1 ? RawPeer(::accept(m_fd, nullptr, nullptr))
                                             : RawPeer();
    }

  private:
    sockaddr_un m_address;
    int m_fd;
    bool m_listening = false;
};
