// Design notes. Readers share the last state that was read and never wait for each other's
// reading: the lock is held to look at and to exchange the pointer. Two threads that find
// the file changed both read it; the later exchange stays. What was read is kept only for a
// file whose identity is that of the descriptor it was read through, so a file renamed into
// place meanwhile is noticed at the next call.

#include "settings/configuration.h"

#include <json/value.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "base/mutex.h"
#include "settings/installation_root.h"
#include "settings/secret_json.h"

namespace kelp::settings {
namespace {

constexpr const char* kDatabases = "databases";  // their reader is another one

std::vector<std::uint64_t> IdentityOf(const struct stat& file) {
    return {file.st_dev,
            file.st_ino,
            static_cast<std::uint64_t>(file.st_size),
            static_cast<std::uint64_t>(file.st_mtim.tv_sec),
            static_cast<std::uint64_t>(file.st_mtim.tv_nsec),
            static_cast<std::uint64_t>(file.st_ctim.tv_sec),
            static_cast<std::uint64_t>(file.st_ctim.tv_nsec)};
}

struct Latest {
    Mutex mutex;
    std::shared_ptr<const Configuration> value KELP_GUARDED_BY(mutex);
};

// Never destroyed: threads may ask while static objects go.
Latest& TheLatest() {
    static auto* const latest = new Latest;
    return *latest;
}

}  // namespace

std::shared_ptr<const Configuration> Configuration::Current() {
    Latest& latest = TheLatest();
    std::string root = InstallationRoot();
    struct stat file {};
    const bool there = !root.empty() && ::stat(ConfigurationPathIn(root).c_str(), &file) == 0;
    {
        MutexLock lock(latest.mutex);
        if (there && latest.value != nullptr && latest.value->root_ == root &&
            latest.value->identity_ == IdentityOf(file)) {
            return latest.value;
        }
    }
    auto fresh = std::make_shared<Configuration>();
    fresh->root_ = std::move(root);
    fresh->Read();
    MutexLock lock(latest.mutex);
    latest.value = fresh;
    return fresh;
}

void Configuration::Read() {
    if (root_.empty()) {
        state_ = State::kNoRoot;
        why_ = kRootIsNotSet;
        return;
    }
    struct stat folder {};
    if (::stat(root_.c_str(), &folder) != 0) {
        state_ = State::kNoFile;
        why_ = root_ + ": " + std::generic_category().message(errno) + ": " + kMakeARoot;
        return;
    }
    SecretJson file;
    const bool sound = file.Read(ConfigurationPathIn(root_), why_);
    if (file.File().st_ino != 0) {
        identity_ = IdentityOf(file.File());
    }
    if (!sound) {
        state_ = file.File().st_ino == 0 ? State::kNoFile : State::kMalformed;
    } else if (!Flatten(file, file.Root(), "")) {
        state_ = State::kMalformed;
        values_.clear();
    } else {
        state_ = State::kSound;
    }
}

// The depth is what the reader allows.
bool Configuration::Flatten(const SecretJson& file, const Json::Value& object,
                            const std::string& prefix) {
    for (auto member = object.begin(); member != object.end(); ++member) {
        const std::string name = member.name();
        if (prefix.empty() && name == kDatabases) {
            continue;
        }
        if (name.empty() || name.find('/') != std::string::npos) {
            why_ = file.Place(*member) + ": the name \"" + name + "\" is empty or has a '/'";
            return false;
        }
        if (member->isObject()) {
            if (!Flatten(file, *member, prefix + name + '/')) {
                return false;
            }
            continue;
        }
        Value value{Value::Kind::kOther, {}, file.Place(*member)};
        if (member->isString()) {
            value.kind = Value::Kind::kText;
            file.Text(*member, value.text);
        } else if (member->type() == Json::intValue || member->type() == Json::uintValue) {
            value.kind = Value::Kind::kInteger;
            value.text = member->asString();
        }
        values_.emplace(prefix + name, std::move(value));
    }
    return true;
}

const Configuration::Value* Configuration::Find(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
}

const std::string* Configuration::Text(std::string_view name) const {
    const Value* value = Find(name);
    return value != nullptr && value->kind == Value::Kind::kText ? &value->text : nullptr;
}

bool Configuration::HasGroup(std::string_view group) const {
    const auto first = values_.lower_bound(group);
    return first != values_.end() && first->first.starts_with(group);
}

}  // namespace kelp::settings
