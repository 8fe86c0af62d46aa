#include "platform/restgroup_body.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "base/error_text.h"
#include "base/json.h"

namespace FrameUtil {
namespace {

constexpr unsigned int kUnusable = 0xb00001a;

LocationInfo Here(int line) {
    return {"restgroup", "LoadKelpMRBRestGroup", line};
}

// The number that a member's name begins with, as strtol reads it. What is no int is -1: it
// must not become another process's number by losing its upper half.
int NumberOf(const std::string& name) {
    errno = 0;
    const long number = std::strtol(name.c_str(), nullptr, 10);
    return errno == ERANGE || number > INT_MAX || number < INT_MIN ? -1 : static_cast<int>(number);
}

// Logs what is wrong with single members, up to a limit: a body can hold a hundred thousand
// of them, and each line of the log is written before the next member is read.
class Complaints {
  public:
    ~Complaints() {
        if (m_more > 0) {
            LogError(Here(__LINE__), kUnusable, "LoadKelpMRBRestGroup: %d more invalid members",
                     m_more);
        }
    }
    Complaints() = default;
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;

    // Whether the next one may be logged.
    bool Count() {
        if (m_logged == kMost) {
            ++m_more;
            return false;
        }
        ++m_logged;
        return true;
    }

  private:
    static constexpr int kMost = 100;
    int m_logged = 0;
    int m_more = 0;
};

std::string GroupName(const Json::Value& value, Complaints& complaints) {
    const bool readable = !value.isArray() && !value.isObject();
    return readable || complaints.Count() ? JsonText(value, Here(__LINE__)) : std::string();
}

void ReadHandles(const Json::Value& handles, int proc_id, RestGroups& groups,
                 Complaints& complaints) {
    for (auto member = handles.begin(); member != handles.end(); ++member) {
        const std::string name = member.name();
        const int handle = NumberOf(name);
        if (handle >= 0) {
            groups[proc_id][handle] = GroupName(*member, complaints);
        } else if (complaints.Count()) {
            LogError(Here(__LINE__), kUnusable, "LoadKelpMRBRestGroup: invalid prochandle %d, %s",
                     handle, name.c_str());
        }
    }
}

}  // namespace

bool ReadRestGroups(const std::string& body, RestGroups& groups) {
    groups.clear();
    Json::Value answer;
    if (!ParseJson(body, answer)) {
        LogError(Here(__LINE__), kUnusable, "LoadKelpMRBRestGroup: parse json fail: %s",
                 body.c_str());
        return false;
    }
    const Json::Value* const map = JsonMember(answer, "groupmap");
    if (map == nullptr || !map->isObject()) {
        LogError(Here(__LINE__), kUnusable, "LoadKelpMRBRestGroup: invalid json rsp: %s",
                 body.c_str());
        return false;
    }
    Complaints complaints;
    for (auto member = map->begin(); member != map->end(); ++member) {
        const std::string name = member.name();
        const int proc_id = NumberOf(name);
        if (proc_id > 0) {
            if (member->isObject()) {
                ReadHandles(*member, proc_id, groups, complaints);
            }
        } else if (complaints.Count()) {
            LogError(Here(__LINE__), kUnusable, "LoadKelpMRBRestGroup: invalid procid %d, %s",
                     proc_id, name.c_str());
        }
    }
    return true;
}

}  // namespace FrameUtil
