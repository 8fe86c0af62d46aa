#include "message/run_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace kelp::message {
namespace {

constexpr int kBacklog = 511;

std::string FailureOf(const std::string& what) {
    return what + ": " + std::generic_category().message(errno);
}

std::string Stem(std::uint16_t proc_id, std::uint16_t handle) {
    return std::to_string(proc_id) + "." + std::to_string(handle);
}

/// Opens and locks the file; a file that its former owner removed meanwhile is tried anew.
base::UniqueFd LockFile(const std::string& path) {
    for (;;) {
        base::UniqueFd fd(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!fd || ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
            return {};
        }
        struct stat held;
        struct stat named;
        if (::fstat(fd.get(), &held) == 0 && ::stat(path.c_str(), &named) == 0 &&
            held.st_ino == named.st_ino && held.st_dev == named.st_dev) {
            return fd;
        }
    }
}

}  // namespace

std::string ChooseRunDir(const std::string& wanted) {
    if (!wanted.empty()) {
        return wanted;
    }
    // NOLINTBEGIN(concurrency-mt-unsafe): the environment is never changed here
    if (const char* dir = std::getenv("KELP_RUN_DIR"); dir != nullptr && *dir != '\0') {
        return dir;
    }
    if (const char* root = std::getenv("OSS_ROOT"); root != nullptr && *root != '\0') {
        return std::string(root) + "/var/run";
    }
    // NOLINTEND(concurrency-mt-unsafe)
    return "/tmp/kelp-" + std::to_string(::geteuid());
}

bool PrepareRunDir(const std::string& dir, std::string& why) {
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::path(dir).parent_path();
    if (!parent.empty()) {
        std::filesystem::create_directories(parent, error);
    }
    if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) {
        why = FailureOf("the run directory " + dir + " cannot be made");
        return false;
    }
    struct stat found;
    if (::lstat(dir.c_str(), &found) != 0) {
        why = FailureOf("the run directory " + dir + " cannot be read");
        return false;
    }
    if (!S_ISDIR(found.st_mode)) {
        why = "the run directory " + dir + " is not a directory";
        return false;
    }
    if (found.st_uid != ::geteuid() || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        why = "the run directory " + dir + " must belong to this user and be writable by no other";
        return false;
    }
    return true;
}

bool SocketAddress(const std::string& dir, std::uint16_t proc_id, std::uint16_t handle,
                   sockaddr_un& address) {
    const std::string path = dir + "/" + Stem(proc_id, handle) + ".sock";
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::vector<std::uint16_t> HandlesOf(const std::string& dir, std::uint16_t proc_id) {
    std::vector<std::uint16_t> handles;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(dir.c_str()), ::closedir);
    if (open == nullptr) {
        return handles;
    }
    const std::string prefix = std::to_string(proc_id) + ".";
    constexpr std::string_view kSuffix = ".sock";
    // NOLINTNEXTLINE(concurrency-mt-unsafe): each caller reads its own stream
    while (const dirent* entry = ::readdir(open.get())) {
        std::string_view name = entry->d_name;
        if (name.size() <= prefix.size() + kSuffix.size() || !name.starts_with(prefix) ||
            !name.ends_with(kSuffix)) {
            continue;
        }
        name.remove_prefix(prefix.size());
        name.remove_suffix(kSuffix.size());
        std::uint16_t handle = 0;
        const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), handle);
        if (error == std::errc() && stop == name.data() + name.size()) {
            handles.push_back(handle);
        }
    }
    std::sort(handles.begin(), handles.end());
    return handles;
}

bool PeerIsOwnUser(int fd, unsigned& peer_uid) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        peer_uid = 0;
        return false;
    }
    peer_uid = peer.uid;
    return peer.uid == ::geteuid();
}

bool ListeningSocket::Open(const std::string& dir, std::uint16_t proc_id, std::uint16_t handle,
                           std::string& why) {
    sockaddr_un address;
    if (!SocketAddress(dir, proc_id, handle, address)) {
        why = "the run directory " + dir + " has a path too long for a socket in it";
        return false;
    }
    const std::string lock_path = dir + "/" + Stem(proc_id, handle) + ".lock";
    base::UniqueFd lock = LockFile(lock_path);
    if (!lock) {
        why = errno == EWOULDBLOCK
                  ? "process " + Stem(proc_id, handle) + " is already running in " + dir
                  : FailureOf("the lock " + lock_path + " cannot be had");
        return false;
    }
    // The lock is ours, so a socket that is still there belongs to nobody alive.
    ::unlink(address.sun_path);
    base::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    // The mode is set on the unbound socket: there is no moment at which others may connect.
    if (!socket || ::fchmod(socket.get(), 0600) != 0 ||
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(address.sun_path, 0600) != 0 || ::listen(socket.get(), kBacklog) != 0) {
        why = FailureOf(std::string("the socket ") + address.sun_path + " cannot be had");
        ::unlink(lock_path.c_str());
        return false;
    }
    lock_ = std::move(lock);
    socket_ = std::move(socket);
    lock_path_ = lock_path;
    socket_path_ = address.sun_path;
    return true;
}

void ListeningSocket::Close() {
    if (!socket_) {
        return;
    }
    ::unlink(socket_path_.c_str());
    socket_.Close();
    ::unlink(lock_path_.c_str());
    lock_.Close();
}

}  // namespace kelp::message
