// The run directory: where each process that serves has its socket, named by who it is.
//
//     <procId>.<procHandle>.sock    what others connect to, mode 0600
//     <procId>.<procHandle>.lock    locked while the process lives
#pragma once

#include <sys/un.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/unique_fd.h"

namespace kelp::message {

/// The directory to use: `wanted`, or if that is empty KELP_RUN_DIR, else
/// $OSS_ROOT/var/run, else /tmp/kelp-<uid>.
std::string ChooseRunDir(const std::string& wanted);

/// Makes the directory when it is missing. False, with `why`, when it cannot be used
/// safely: not a directory, another user's, writable by others.
bool PrepareRunDir(const std::string& dir, std::string& why);

/// The socket's address. False when the path does not fit one.
bool SocketAddress(const std::string& dir, std::uint16_t proc_id, std::uint16_t handle,
                   sockaddr_un& address);

/// The handles of the processes of type `proc_id` that have a socket, rising.
std::vector<std::uint16_t> HandlesOf(const std::string& dir, std::uint16_t proc_id);

/// Whether the process at the other end of a connected socket has this process's user.
bool PeerIsOwnUser(int fd, unsigned& peer_uid);

/// A listening socket that nobody else of this identity can have at the same time. What
/// a crashed process left is taken over. The destructor removes the files.
class ListeningSocket {
  public:
    ListeningSocket() = default;
    ~ListeningSocket() { Close(); }
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    /// False, with `why`, when it cannot be had.
    bool Open(const std::string& dir, std::uint16_t proc_id, std::uint16_t handle,
              std::string& why);
    void Close();
    int fd() const { return socket_.get(); }

  private:
    base::UniqueFd lock_;
    base::UniqueFd socket_;
    std::string lock_path_;
    std::string socket_path_;
};

}  // namespace kelp::message
