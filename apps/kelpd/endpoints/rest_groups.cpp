#include <sys/stat.h>

#include <chrono>
#include <limits>
#include <string>

#include "kelp/log.h"
#include "kelpd/endpoints/endpoints.h"
#include "kelpd/status.h"
#include "support/file.h"
#include "support/json.h"
#include "support/mutex.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpd {
namespace {

using Clock = std::chrono::steady_clock;

// Asking the file system at every request would cost more than the answer.
constexpr std::chrono::seconds kLookEvery(1);
constexpr std::int64_t kMost = std::numeric_limits<int>::max();

// "LINE: what is wrong", or nothing.
std::string FaultIn(const Json::Value& document, std::string_view text) {
    const auto fault = [&](const Json::Value& at, const std::string& what) {
        return std::to_string(app::JsonLine(at, text)) + ": " + what;
    };
    const Json::Value* groups = app::JsonMember(document, "groupmap");
    if (groups == nullptr || !groups->isObject()) {
        return fault(groups == nullptr ? document : *groups,
                     "no object with an object \"groupmap\"");
    }
    for (const std::string& process : groups->getMemberNames()) {
        const std::string where = "process '" + app::ShowText(process) + "'";
        const Json::Value& handles = (*groups)[process];
        if (!app::ParseInteger(process, 1, kMost)) {
            return fault(handles, where + " is no positive number");
        }
        if (!handles.isObject()) {
            return fault(handles, where + " is no object");
        }
        for (const std::string& handle : handles.getMemberNames()) {
            const Json::Value& name = handles[handle];
            if (!app::ParseInteger(handle, 0, kMost) || !name.isString()) {
                return fault(name, where + ": '" + app::ShowText(handle) +
                                       "' is no number with a group's name");
            }
        }
    }
    return {};
}

// What tells one state of a file from another.
struct Version {
    timespec changed{};
    off_t size = -1;
    ino_t number = 0;

    bool operator==(const Version& other) const {
        return changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec &&
               size == other.size && number == other.number;
    }
};

Version VersionOf(const std::string& file) {
    struct stat found {};
    if (::stat(file.c_str(), &found) != 0) {
        return {};
    }
    return {found.st_mtim, found.st_size, found.st_ino};
}

class GroupsFile {
  public:
    explicit GroupsFile(const std::string& file) : file_(file) {
        const app::Lock lock(mutex_);
        const std::string why = Load();
        if (!why.empty()) {
            throw Refusal(kConfiguration, why);
        }
    }

    std::shared_ptr<const std::string> Text() {
        const app::Lock lock(mutex_);
        const Clock::time_point now = Clock::now();
        if (now >= look_at_) {
            look_at_ = now + kLookEvery;
            if (!(VersionOf(file_) == version_)) {
                const std::string why = Load();
                if (!why.empty()) {
                    LogProcess::Warn("the REST groups stay as they were: " + why,
                                     LocationInfo("kelpd", "rest_groups", 0));
                }
            }
        }
        return text_;
    }

  private:
    // What is wrong, or nothing.
    std::string Load() APP_REQUIRES(mutex_) {
        version_ = VersionOf(file_);
        std::string text;
        std::string why;
        if (!app::ReadRegularFile(file_, app::kJsonLimitBytes, text, why)) {
            return why;
        }
        const auto document = app::ParseJson(text, &why);
        if (!document) {
            return file_ + ": " + why;
        }
        if (const std::string fault = FaultIn(*document, text); !fault.empty()) {
            return file_ + ":" + fault;
        }
        text_ = std::make_shared<const std::string>(std::move(text));
        return {};
    }

    const std::string file_;
    app::Mutex mutex_;
    Version version_ APP_GUARDED_BY(mutex_);
    Clock::time_point look_at_ APP_GUARDED_BY(mutex_){};
    std::shared_ptr<const std::string> text_ APP_GUARDED_BY(mutex_);
};

}  // namespace

Handler RestGroups(const std::string& file) {
    return [groups = std::make_shared<GroupsFile>(file)](const Request& /*request*/,
                                                         Responder responder) {
        Response response;
        response.body = groups->Text();
        responder.Send(std::move(response));
    };
}

}  // namespace kelpd
