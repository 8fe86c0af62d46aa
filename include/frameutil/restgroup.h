// frameutil/restgroup.h - which REST groups a process serves through the platform's router.
//
//     std::map<int, std::map<int, std::string>> groups;
//     if (FrameUtil::GetRestGroupByMRBProcHandle(3001, 0, groups) == 0) {
//         for (const auto& [handle, name] : groups[3001]) Join(name);
//     }
//
// The assignment is one for the process: loaded from the platform's gateway by Init(), and
// again when somebody asks for what it does not have.
//
// Thread rule: thread-safe. Nothing here throws but std::bad_alloc.
#pragma once

#include <map>
#include <string>

#include "frameutil/export.h"

namespace FrameUtil {

/// What LoadMRBRestGroup() returns when it fails; the log says why.
inline constexpr int REST_GROUP_UNAVAILABLE = 0xb00001a;

/// Loads the assignment anew: GET "/rest/mrb/v1/getrestgroupinfo" at the gateway (see
/// ns_kelpsdk_wrap::GetIRBaseURL() in kelp/settings.h), whose answer is
///
///     {"groupmap": {"3001": {"0": "NE_GROUP", "1": "NE_GROUP_2"}}}
///
/// by process identifier and process handle. Names are read as strtol reads them, base 10:
/// "12x" is 12. A process identifier that is not above 0, a handle below 0, and either beyond
/// an int (told as -1) are logged and left out. A group that is a list or an object is logged
/// and becomes "". Of the left out and the unreadable the first hundred of a load are logged,
/// and then how many more there are.
///
/// Result: 0, or REST_GROUP_UNAVAILABLE and the assignment is as it was. Waits for the
/// gateway, at most 60 seconds, without holding up those who ask.
FRAMEUTIL_API int LoadMRBRestGroup();

/// Adds the groups of the process `procId` to `groups`: the one of its handle `procHandle`,
/// or those of all its handles when `procHandle` is 0. An entry that `groups` holds already
/// for the same handle is kept as it is.
///
/// What is not there is looked for once more after LoadMRBRestGroup(). It is not an error if
/// it is not there then either: the result is 0 and `groups` unchanged. Otherwise the result
/// is 0, or what LoadMRBRestGroup() returned, with `groups` unchanged.
FRAMEUTIL_API int GetRestGroupByMRBProcHandle(int procId, int procHandle,
                                              std::map<int, std::map<int, std::string>>& groups);

}  // namespace FrameUtil
