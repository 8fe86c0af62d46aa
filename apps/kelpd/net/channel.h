// kelpd/net/channel.h - a connected socket that does not block, plain or with TLS on it.
//
//     const Channel::Done done = channel->Read(buffer, sizeof buffer);
//     // kDone: done.count octets; kWantRead, kWantWrite: wait for the socket, call again
//
// The socket is the caller's and outlives the channel.
//
// one thread
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace kelpd {

enum class Io {
    kDone,
    kWantRead,   ///< again when the socket can be read
    kWantWrite,  ///< again when it can be written
    kEnd,        ///< the peer has ended its side
    kFailed,     ///< nothing more can be done with the connection; why() says why
};

class Channel {
  public:
    struct Done {
        Io io = Io::kFailed;
        std::size_t count = 0;  ///< octets, for kDone
    };

    virtual ~Channel() = default;

    virtual Io Handshake() = 0;
    virtual Done Read(char* buffer, std::size_t size) = 0;
    virtual Done Write(const char* octets, std::size_t size) = 0;
    /// Octets have been taken from the socket that Read has not given out yet: the socket need
    /// not become readable for Read to have more.
    virtual bool HasPending() const = 0;
    /// Says that nothing more will be written. kDone, kFailed or what to wait for.
    virtual Io EndWriting() = 0;
    /// The common name of the peer's certificate; "" without one.
    virtual std::string PeerName() const { return {}; }
    /// Why something failed.
    virtual const std::string& why() const = 0;
};

std::unique_ptr<Channel> MakePlainChannel(int socket);

}  // namespace kelpd
