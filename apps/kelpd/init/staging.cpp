#include "kelpd/init/staging.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "kelpd/status.h"
#include "support/unique_fd.h"

namespace kelpd {
namespace {

namespace fs = std::filesystem;
using app::UniqueFd;

[[noreturn]] void Fail(const std::string& what, ExitStatus status = kFailed) {
    const std::string reason = std::generic_category().message(errno);
    throw Refusal(status, what + ": " + reason);
}

std::string AbsoluteTarget(const std::string& target) {
    if (target.empty()) {
        throw Refusal(kUsage, "the directory has no name");
    }
    std::error_code error;
    fs::path path = fs::absolute(target, error).lexically_normal();
    if (!path.has_filename()) {
        path = path.parent_path();
    }
    const fs::path parent = error ? fs::path() : fs::canonical(path.parent_path(), error);
    if (error) {
        throw Refusal(kUsage, path.parent_path().string() + ": " + error.message() +
                                  ": make the folder that will hold the installation first");
    }
    return (parent / path.filename()).string();
}

void RequireEmpty(const std::string& target) {
    struct stat found {};
    if (::lstat(target.c_str(), &found) != 0) {
        if (errno != ENOENT) {
            Fail(target, kUsage);
        }
        return;
    }
    if (!S_ISDIR(found.st_mode)) {
        throw Refusal(kOccupied, target + " is there and no directory: name another one");
    }
    std::error_code error;
    const bool empty = fs::is_empty(target, error);
    if (error) {
        throw Refusal(kUsage, target + ": " + error.message());
    }
    if (!empty) {
        throw Refusal(kOccupied, target + " is not empty: name a new directory");
    }
}

}  // namespace

Staging::Staging(const std::string& target) : target_(AbsoluteTarget(target)) {
    RequireEmpty(target_);
    const fs::path path(target_);
    folder_ = path.parent_path().string();
    folder_.append("/.").append(path.filename().string()).append(".kelpd-init.XXXXXX");
    if (::mkdtemp(folder_.data()) == nullptr) {
        const std::string name = path.parent_path().string();
        folder_.clear();
        Fail(name + ": cannot write there", kUsage);
    }
}

Staging::~Staging() {
    if (!published_ && !folder_.empty()) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
}

void Staging::MakeFolder(const std::string& path, mode_t mode) {
    std::string made = folder_;
    for (const fs::path& name : fs::path(path)) {
        made.append("/").append(name.string());
        // Not what the caller's umask makes of it: the modes are part of the installation.
        if (::mkdir(made.c_str(), 0700) == 0 ? ::chmod(made.c_str(), 0755) != 0 : errno != EEXIST) {
            Fail(made);
        }
    }
    if (::chmod(made.c_str(), mode) != 0) {
        Fail(made);
    }
}

void Staging::Write(const std::string& path, std::string_view text, mode_t mode) {
    const std::string parent = fs::path(path).parent_path().string();
    if (!fs::exists(folder_ + "/" + parent)) {
        MakeFolder(parent, 0755);
    }
    const std::string name = folder_ + "/" + path;
    const UniqueFd file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file) {
        Fail(name);
    }
    while (!text.empty()) {
        const ssize_t count = ::write(file.get(), text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            Fail(name);
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    if (::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0) {
        Fail(name);
    }
}

void Staging::Publish() {
    if (::chmod(folder_.c_str(), 0755) != 0) {
        Fail(folder_);
    }
    // Replaces an empty directory in one step, and fails for one that is no longer empty.
    if (::rename(folder_.c_str(), target_.c_str()) != 0) {
        if (errno == ENOTEMPTY || errno == EEXIST) {
            throw Refusal(kOccupied, target_ + " is not empty: name a new directory");
        }
        Fail(target_);
    }
    published_ = true;
    const UniqueFd parent(
        ::open(fs::path(target_).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent) {
        ::fsync(parent.get());
    }
}

}  // namespace kelpd
