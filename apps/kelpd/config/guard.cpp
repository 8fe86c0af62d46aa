#include "kelpd/config/guard.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "kelpd/status.h"
#include "support/unique_fd.h"

namespace kelpd {
namespace {

std::string UserName(uid_t uid) {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found);
    return found == nullptr ? "user " + std::to_string(uid) : std::string(found->pw_name);
}

std::string Octal(mode_t mode) {
    return {'0', static_cast<char>('0' + (mode >> 6 & 7)), static_cast<char>('0' + (mode >> 3 & 7)),
            static_cast<char>('0' + (mode & 7))};
}

std::string ErrorText() {
    return std::generic_category().message(errno);
}

}  // namespace

void RequireOwnFolder(const std::string& folder) {
    struct stat found {};
    if (::stat(folder.c_str(), &found) != 0) {
        throw Refusal(kConfiguration, folder + ": " + ErrorText() +
                                          ": run 'kelpd init DIR' to make an installation root");
    }
    if (!S_ISDIR(found.st_mode)) {
        throw Refusal(kConfiguration, folder +
                                          " is no directory: run 'kelpd init DIR' to make "
                                          "an installation root");
    }
    if (found.st_uid != ::geteuid()) {
        throw Refusal(kForeignRoot, folder + " belongs to " + UserName(found.st_uid) +
                                        ": run kelpd as that user");
    }
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw Refusal(kForeignRoot, folder + " may be written to by others (mode " +
                                        Octal(found.st_mode) + "): run 'chmod go-w " + folder +
                                        "'");
    }
}

void RequireOwnKey(const std::string& file) {
    const app::UniqueFd key(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat found {};
    if (!key || ::fstat(key.get(), &found) != 0) {
        throw Refusal(kKeys, "cannot read the key " + file + ": " + ErrorText());
    }
    if (!S_ISREG(found.st_mode)) {
        throw Refusal(kKeys, "cannot read the key " + file + ": no regular file");
    }
    if (found.st_uid != ::geteuid()) {
        throw Refusal(kKeys, "the key " + file + " belongs to " + UserName(found.st_uid) +
                                 ": run 'chown " + UserName(::geteuid()) + " " + file + "'");
    }
    if ((found.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw Refusal(kKeys, "the key " + file + " is open to others (mode " +
                                 Octal(found.st_mode) + "): run 'chmod 600 " + file + "'");
    }
}

}  // namespace kelpd
