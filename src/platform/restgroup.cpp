// Design notes. Readers share the lock. A load talks to the gateway and builds its map
// without it, and holds it for writing only to exchange the maps; the old one is destroyed
// after that. A writer that waits goes before readers that come later, so a busy process
// cannot keep a load from taking effect. Loads at the same time are each complete; the one
// that ends last stays.

#include "frameutil/restgroup.h"

#include "base/error_text.h"
#include "base/locks.h"
#include "base/rest.h"
#include "frameutil/log.h"
#include "kelp/settings.h"
#include "platform/restgroup_body.h"

namespace FrameUtil {
namespace {

class Assignment {
  public:
    /// Exchanges the groups for `fresh`, which then holds the old ones.
    void Swap(RestGroups& fresh) {
        const WriteGuard guard(m_lock);
        TraceInfo("LoadMRBRestGroup OK: old proc size = %d", static_cast<int>(m_groups.size()));
        m_groups.swap(fresh);
        TraceInfo("LoadMRBRestGroup OK: new proc size = %d", static_cast<int>(m_groups.size()));
    }

    /// Adds what matches to `groups`; false when nothing does.
    bool Copy(int proc_id, int handle, RestGroups& groups) {
        const ReadGuard guard(m_lock);
        const auto process = m_groups.find(proc_id);
        if (process == m_groups.end()) {
            return false;
        }
        auto first = process->second.begin();
        auto last = process->second.end();
        if (handle != 0) {
            first = process->second.find(handle);
            last = first == last ? last : std::next(first);
        }
        if (first == last) {
            return false;
        }
        TraceDebug("Got groupnames(%d,%d): ", proc_id, handle);
        for (auto group = first; group != last; ++group) {
            groups[proc_id].insert(*group);
            TraceDebug("Got groupname: %d,%d,%s", proc_id, group->first, group->second.c_str());
        }
        return true;
    }

  private:
    ReadWriteLock m_lock;
    RestGroups m_groups FRAMEUTIL_GUARDED_BY(m_lock);
};

// Never destroyed: handlers may ask while static objects go.
Assignment& TheAssignment() {
    static auto* const assignment = new Assignment;
    return *assignment;
}

int LoadKelpMRBRestGroup(RestGroups& groups) {
    RestRequest request{RestMethod::kGet,
                        ns_kelpsdk_wrap::GetIRBaseURL() + "/rest/mrb/v1/getrestgroupinfo"};
    request.message.lstHeaders.push_back(
        {"XX-Forward-Filter", "filter=group,value=mrbservice,policy=prefer"});
    const RestAnswer answer = Exchange(request);
    if (!answer.Is(200)) {
        LogError(LocationInfo("restgroup", __func__, __LINE__), REST_GROUP_UNAVAILABLE,
                 "LoadKelpMRBRestGroup: strURL: %s, lStatusCode:%d", request.url.c_str(),
                 answer.status);
        return REST_GROUP_UNAVAILABLE;
    }
    if (!ReadRestGroups(answer.body, groups)) {
        return REST_GROUP_UNAVAILABLE;
    }
    TraceInfo("LoadKelpMRBRestGroup OK: proc size = %d", static_cast<int>(groups.size()));
    return 0;
}

}  // namespace

int LoadMRBRestGroup() {
    RestGroups groups;
    const int code = LoadKelpMRBRestGroup(groups);
    if (code == 0) {
        TheAssignment().Swap(groups);
    }
    return code;
}

int GetRestGroupByMRBProcHandle(int procId, int procHandle,
                                std::map<int, std::map<int, std::string>>& groups) {
    if (TheAssignment().Copy(procId, procHandle, groups)) {
        return 0;
    }
    const int code = LoadMRBRestGroup();
    if (code == 0 && TheAssignment().Copy(procId, procHandle, groups)) {
        return 0;
    }
    TraceInfo("GetRestGroupByMRBProcHandle: missing %d,%d", procId, procHandle);
    return code;
}

}  // namespace FrameUtil
