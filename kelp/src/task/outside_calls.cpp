#include "task/outside_calls.h"

#include <algorithm>

namespace kelp::task {

std::uint32_t OutsideCalls::Call(message::MsgPtr msg, message::MsgPtr& reply, int timeout_seconds) {
    Waiting call(bus_.poller());
    call.serial = bus_.NextSerial();
    call.cmd_code = msg->cmdCode;
    call.proc_id = msg->dstProcId;
    msg->serial = call.serial;
    msg->srcTaskMgr = 0;
    msg->srcTaskId = 0;
    const std::int64_t deadline =
        clock_.After(std::max<std::int64_t>(timeout_seconds, 0) * base::kSecond);
    {
        MutexLock lock(mutex_);
        if (stopped_) {
            return KELP_MSG_STOPPED;
        }
        calls_.push_back(&call);
    }
    std::uint32_t code = KELP_MSG_NO_MEMORY;
    try {
        code = bus_.Send(std::move(msg));
    } catch (const std::bad_alloc&) {
    }
    MutexLock lock(mutex_);
    while (code == KELP_MSG_OK && call.answer == nullptr) {
        const std::int64_t now = clock_.Now();
        if (stopped_) {
            code = KELP_MSG_STOPPED;
        } else if (now >= deadline) {
            code = KELP_MSG_TIMEOUT;
        } else {
            call.point.Wait(mutex_, clock_.Slice(deadline, now));
        }
    }
    Leave(call);
    reply = std::move(call.answer);
    return code;
}

void OutsideCalls::Leave(const Waiting& call) {
    calls_.erase(std::find(calls_.begin(), calls_.end(), &call));
    if (stopped_) {
        left_.NotifyAll();
    }
}

bool OutsideCalls::TakeAnswer(message::MsgPtr& answer) {
    MutexLock lock(mutex_);
    for (Waiting* call : calls_) {
        const bool same_command = call->cmd_code == answer->cmdCode && call->answer == nullptr;
        const bool same_request = answer->serial != 0 ? answer->serial == call->serial
                                                      : answer->srcProcId == call->proc_id;
        if (same_command && same_request) {
            call->answer = std::move(answer);
            call->point.WakeOne();
            return true;
        }
    }
    return false;
}

void OutsideCalls::Stop() {
    MutexLock lock(mutex_);
    stopped_ = true;
    while (!calls_.empty()) {
        for (Waiting* call : calls_) {
            call->point.WakeAll();
        }
        left_.WaitUntil(mutex_, base::RealPointAfter(10 * base::kMillisecond));
    }
}

}  // namespace kelp::task
