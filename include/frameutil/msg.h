// frameutil/msg.h - one request to another process and its answer; declaring a command.
//
// The asking side:
//
//     FrameUtil::SMsgTarget target{56, 0, 4, 0};   // process type, handle, manager, task
//     AsnCommonResponse response;
//     int code = FrameUtil::SynSendMsg(target, 2167, request, &response, 60);
//     if (code != 0) ...                           // see the table at SynSendMsg
//
// The answering side, once a command, at namespace scope:
//
//     static void OnQuery(AsnType* request, AsnType* response, KelpGnlTask* task);
//     static FrameUtil::TModel_RegisterCmd g_query(
//         2167, [] { return static_cast<AsnType*>(new AsnCommonRequest); },
//         [] { return static_cast<AsnType*>(new AsnCommonResponse); },
//         4, nullptr, OnQuery, false);
//
// Thread rule: thread-safe; one request or response object is used by one call at a time.
#pragma once

#include <cstdint>

#include "frameutil/export.h"
#include "kelp/task.h"

class AsnType;

namespace FrameUtil {

/// Where a request goes.
struct SMsgTarget {
    std::uint16_t procType = 0;    ///< process type
    std::uint16_t procHandle = 0;  ///< instance; 0: the only or the lowest running one
    std::uint8_t taskMgrId = 0;    ///< task manager; 0: the one the command is registered on
    std::uint16_t taskId = 0;      ///< task; 0: one is created for the request
};

/// Sends `request` to `target` as command `cmdCode` and, unless `response` is null, waits
/// up to `timeout` seconds (0 and less: does not wait) for the answer and decodes it.
///
/// Inside a platform task the answer is awaited on that task's own queue. Messages that
/// are not the answer are put back at the queue's head when the wait ends, the latest
/// first, deliberately: the task's normal dispatch sees them next, last arrival first.
/// An answer carries the request's serial number and command code; a message without
/// serial number also counts when its command code is `cmdCode` and it comes from a
/// process of type `target.procType`.
///
/// Result, each failure with one trace line:
///
/// | code | meaning |
/// |---|---|
/// | 0 | success; without `response`: given to the bus, or, inside a task, to the task |
/// | -1 | the application manager is not initialised |
/// | 0x4101f009 | the request does not encode into 100000 octets |
/// | 0x4101f00e | no memory for the message |
/// | 0x4101f00a | the answer does not decode into `response` |
/// | 0x41016903 | without `response`, outside any task: the message could not be sent |
/// | 0x45312d17 | the task has no serial number left |
/// | 0x45312d18 | the task received, but no message |
/// | other | the answer's error code, or why none came: see KelpMsgError in kelp/message.h |
///
/// `request` is never changed; `response` is written by a successful decode only. An
/// answer without message (success all the same) leaves it as it was. Nothing throws.
FRAMEUTIL_API int SynSendMsg(const SMsgTarget& target, unsigned long cmdCode, AsnType& request,
                             AsnType* response, int timeout);

/// Declares a command: its construction registers the handler with the platform's task
/// creator, so that arriving requests of the code are decoded and handed over. Meant for
/// objects of static storage, one a command code; the destructor does nothing, a
/// registration stays for the life of the process.
class FRAMEUTIL_API TModel_RegisterCmd {
  public:
    /// `reqCreator` and `rspCreator` return new objects, which the platform owns (a null
    /// `rspCreator`: the handler gets a null response and the answer's body is empty).
    /// `taskMgrId` is the manager whose workers run `handler`; with `useSharedMgr` it is
    /// the library's shared manager, 200, whatever `taskMgrId` says. `taskCreator` makes
    /// the task a request runs in; null: a plain KelpGnlTask. A code that is registered
    /// already keeps its first registration; a log line names it.
    TModel_RegisterCmd(unsigned long cmdCode, AsnType* (*reqCreator)(), AsnType* (*rspCreator)(),
                       unsigned char taskMgrId, KelpGnlTask* (*taskCreator)(KelpTaskMgr*),
                       void (*handler)(AsnType*, AsnType*, KelpGnlTask*), bool useSharedMgr);
    ~TModel_RegisterCmd() = default;
    TModel_RegisterCmd(const TModel_RegisterCmd&) = delete;
    TModel_RegisterCmd& operator=(const TModel_RegisterCmd&) = delete;
};

}  // namespace FrameUtil
