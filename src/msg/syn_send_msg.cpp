// Design notes. A call shares nothing with others but its thread's encoding buffer, which
// is free again before the call waits: what runs on the thread meanwhile is this call.
// Inside a task the call consumes that task's own queue only, and puts back what was not
// for it however it ends.

#include <time.h>

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "frameutil/log.h"
#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "kelp/message.h"
#include "kelp/secure.h"

namespace FrameUtil {
namespace {

constexpr int kNotInitialised = -1;
constexpr int kEncodeFailed = 0x4101f009;
constexpr int kDecodeFailed = 0x4101f00a;
constexpr int kNoMemory = 0x4101f00e;
constexpr int kSendFailed = 0x41016903;
constexpr int kNoSerial = 0x45312d17;
constexpr int kNullMessage = 0x45312d18;

constexpr std::size_t kMaxEncoded = 100000;

struct FreeMsg {
    void operator()(CmdMSG* msg) const { KelpMsgFree(msg); }
};
using MsgPtr = std::unique_ptr<CmdMSG, FreeMsg>;

/// Messages that were not the answer. They go back to the head of the task's queue one
/// after the other as they arrived, so the latest ends up first: deliberately, the task's
/// normal dispatch sees them in that order.
class SetAside {
  public:
    explicit SetAside(KelpTask& task) : task_(task) {}
    ~SetAside() {
        for (CmdMSG* msg : messages_) {
            task_.EnqueueHead(msg);
        }
    }
    SetAside(const SetAside&) = delete;
    SetAside& operator=(const SetAside&) = delete;

    void Add(MsgPtr msg) {
        messages_.push_back(msg.get());
        static_cast<void>(msg.release());
    }

  private:
    KelpTask& task_;
    std::vector<CmdMSG*> messages_;
};

/// Whole seconds, as the receive takes them; of the monotonic clock, so that a step of
/// the wall clock neither ends the wait nor prolongs it.
long Seconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

/// What a failed decode leaves `response` as: the way it was before.
bool DecodeInto(AsnType& response, const CmdMSG& reply) {
    const std::unique_ptr<AsnType> before = response.Clone();
    if (AsnDecode(KelpMsgBody(&reply), KelpMsgGetBodyLength(&reply), response)) {
        return true;
    }
    response.CopyFrom(*before);
    return false;
}

/// The encoded request in a message; null, with the code in `code`, when there is none.
MsgPtr MakeRequest(const AsnType& request, int& code) {
    thread_local AsnBuffer encoded;
    bool fits = false;
    try {
        fits = AsnEncode(request, encoded, kMaxEncoded);
    } catch (const std::bad_alloc&) {
        encoded = AsnBuffer();
    }
    if (!fits) {
        Trace("[SynSendMsg] AsnEncode failed.");
        code = kEncodeFailed;
        return nullptr;
    }
    MsgPtr msg(KelpMsgAlloc(encoded.size()));
    if (msg == nullptr) {
        Trace("[SynSendMsg] allocate memory failed.");
        code = kNoMemory;
        return nullptr;
    }
    const int error =
        memcpy_s(KelpMsgBody(msg.get()), encoded.size(), encoded.data(), encoded.size());
    if (error != 0) {
        Trace("memcpy_s failed at line 192 errno: %d", error);
    }
    return msg;
}

void FillHeader(CmdMSG& msg, const SMsgTarget& target, std::uint32_t cmd_code) {
    msg.srcDesk = KelpGetDeskId();
    msg.srcProcHandle = KelpGetProcHandle();
    msg.dstProcHandle = target.procHandle;
    msg.srcProcId = static_cast<std::uint16_t>(KelpGetProcId());
    msg.dstProcId = target.procType;
    msg.cmdCode = cmd_code;
    msg.dstTaskId = target.taskId;
    msg.dstTaskMgr = target.taskMgrId;
}

bool IsAnswer(const CmdMSG& msg, const SMsgTarget& target, std::uint32_t cmd_code,
              std::uint32_t serial) {
    if (msg.cmdCode != cmd_code) {
        return false;
    }
    const std::uint32_t carried = KelpMsgGetSn(&msg);
    return carried != 0 ? carried == serial : msg.srcProcId == target.procType;
}

/// Waits in the task's queue for the answer. 0 with it in `answer`, or the code.
int AwaitAnswer(KelpTask& task, const SMsgTarget& target, std::uint32_t cmd_code,
                std::uint32_t serial, int timeout, MsgPtr& answer) {
    SetAside others(task);
    const long deadline = Seconds() + timeout;
    for (;;) {
        const long rest = std::clamp<long>(deadline - Seconds(), 0, std::max(timeout, 0));
        CmdMSG* slot = nullptr;
        const int received = task.KelpSynRecvEx(slot, static_cast<int>(rest));
        MsgPtr msg(slot);  // a failed receive's slot may be freed as well: see kelp/message.h
        if (received == 0) {
            const int code = static_cast<int>(KelpMsgGetErrorCode(slot));
            Trace("[SynSendMsg] Send MSG TO failed, errCode = %d \n", code);
            return code;
        }
        if (msg == nullptr) {
            Trace("[SynSendMsg] the msg pointer is null.");
            return kNullMessage;
        }
        if (IsAnswer(*msg, target, cmd_code, serial)) {
            answer = std::move(msg);
            return 0;
        }
        others.Add(std::move(msg));
    }
}

int CallFromTask(KelpTask& task, const SMsgTarget& target, MsgPtr msg, AsnType* response,
                 int timeout) {
    const std::uint32_t cmd_code = msg->cmdCode;
    msg->srcTaskId = task.GetTaskId();
    msg->srcTaskMgr = task.GetTaskMgr()->GetTaskMgrId();
    const std::uint32_t serial = task.AllocMsgSn();
    if (serial == 0) {
        Trace("[SynSendMsg] applying msgSN failed.");
        return kNoSerial;
    }
    KelpMsgSetSn(msg.get(), serial);
    // What cannot be sent comes back through the queue as an answer with its error code.
    task.KelpCmdSendAnsFrameCB(msg.release());
    task.RevokeMsgSn(serial);
    if (response == nullptr) {
        return 0;
    }
    MsgPtr answer;
    const int code = AwaitAnswer(task, target, cmd_code, serial, timeout, answer);
    if (code != 0) {
        return code;
    }
    if (const auto carried = static_cast<int>(KelpMsgGetErrorCode(answer.get())); carried != 0) {
        Trace("[SynSendMsg] call KelpMsgGetErrorCode() failed. errCode = %d", carried);
        return carried;
    }
    if (!DecodeInto(*response, *answer)) {
        Trace("[SynSendMsg] No.2 Asn Decode failed.");
        return kDecodeFailed;
    }
    return 0;
}

int CallFromOutside(MsgPtr msg, AsnType* response, int timeout) {
    KelpAppMgr* app = KelpAppMgr::Instance();
    if (response == nullptr) {
        if (app->SendMSG(msg.release()) == 0) {
            Trace("[SynSendMsg] send message failed.");
            return kSendFailed;
        }
        return 0;
    }
    msg->kind = KELP_MSG_COMMAND;
    CmdMSG* slot = nullptr;
    const int sent = app->KelpSendSynMsgToMDP(msg.release(), slot, timeout);
    const MsgPtr reply(slot);
    if (sent == 0) {
        const int code = static_cast<int>(KelpMsgGetErrorCode(slot));
        Trace("[SynSendMsg] call KelpSendSynMsgToMDP() failed, errCode = %d.", code);
        return code;
    }
    if (reply == nullptr) {
        return 0;
    }
    if (!DecodeInto(*response, *reply)) {
        Trace("[SynSendMsg]No.1 Asn Decode failed.");
        return kDecodeFailed;
    }
    return 0;
}

}  // namespace

int SynSendMsg(const SMsgTarget& target, unsigned long cmdCode, AsnType& request, AsnType* response,
               int timeout) {
    if (!KelpAppMgr::IsInitialized()) {
        Trace("[SynSendMsg] KelpApp initializtion failed.");
        return kNotInitialised;
    }
    try {
        int code = 0;
        MsgPtr msg = MakeRequest(request, code);
        if (msg == nullptr) {
            return code;
        }
        FillHeader(*msg, target, static_cast<std::uint32_t>(cmdCode));
        KelpTask* task = KelpGetCurrentTask();
        return task != nullptr ? CallFromTask(*task, target, std::move(msg), response, timeout)
                               : CallFromOutside(std::move(msg), response, timeout);
    } catch (const std::bad_alloc&) {
        Trace("[SynSendMsg] allocate memory failed.");
        return kNoMemory;
    }
}

}  // namespace FrameUtil
