#include "task/execute.h"

#include <cxxabi.h>

#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "kelp/asn1.h"
#include "kelp/log.h"
#include "message/current.h"

namespace kelp::task {
namespace {

const LocationInfo kWhere("task", "", 0);
constexpr std::size_t kKeptOctets = std::size_t{1} << 20;

/// The one answer to a request: sent when this goes, with the error code that stands then
/// or with the response.
class Reply {
  public:
    Reply(Core& core, const CmdMSG& request) : core_(core), request_(request) {}
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;
    ~Reply() {
        if (answer_ != nullptr) {
            core_.Send(std::move(answer_));
        } else {
            core_.Refuse(request_, code_);
        }
    }

    void Fail(std::uint32_t code) { code_ = code; }

    void Succeed(const AsnType* response) {
        if (!ExpectsAnswer(request_)) {
            return;
        }
        // The worker's own buffer: its memory is there from the answers before.
        thread_local AsnBuffer encoded;
        if (response == nullptr) {
            encoded.Clear();
        } else if (!AsnEncode(*response, encoded,
                              core_.options().maxFrameOctets - KELP_MSG_HEADER)) {
            LogProcess::Error(KELP_MSG_BAD_ANSWER,
                              "[task] the response of command " + std::to_string(request_.cmdCode) +
                                  " does not encode",
                              kWhere);
            code_ = KELP_MSG_BAD_ANSWER;
            return;
        }
        answer_.reset(KelpMsgAllocAnswer(&request_, encoded.size()));
        if (answer_ == nullptr) {
            code_ = KELP_MSG_NO_MEMORY;
        } else if (encoded.size() > 0) {
            std::memcpy(KelpMsgBody(answer_.get()), encoded.data(), encoded.size());
        }
        if (encoded.size() > kKeptOctets) {
            encoded = AsnBuffer();
        }
    }

  private:
    Core& core_;
    const CmdMSG& request_;
    std::uint32_t code_ = KELP_MSG_HANDLER_FAILED;
    message::MsgPtr answer_;
};

void LogThrown(const std::string& what, const char* text) {
    LogProcess::Error(KELP_MSG_HANDLER_FAILED, "[task] " + what + " threw" + text, kWhere);
}

/// Runs `run`; what it throws is logged. A thread that is being ended is let go.
template <class Run>
void Guarded(const std::string& what, Run&& run) {
    try {
        run();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::exception& failure) {
        LogThrown(what + " (" + failure.what() + ")", "");
    } catch (...) {
        LogThrown(what, "");
    }
}

std::string HandlerOf(const CmdMSG& msg) {
    return "the handler of command " + std::to_string(msg.cmdCode);
}

void RunHandler(KelpTask& task, const CmdMSG& msg, const KelpTaskRegister& registration,
                Reply& reply) {
    std::unique_ptr<AsnType> request;
    if (registration.reqCreator != nullptr) {
        request.reset(registration.reqCreator());
        std::string why = "no request object";
        if (request == nullptr ||
            !AsnDecode(KelpMsgBody(&msg), KelpMsgGetBodyLength(&msg), *request, &why)) {
            LogProcess::Error(KELP_MSG_BAD_BODY,
                              "[task] the body of command " + std::to_string(msg.cmdCode) +
                                  " from process " + std::to_string(msg.srcProcId) + "." +
                                  std::to_string(msg.srcProcHandle) + " does not decode: " + why,
                              kWhere);
            reply.Fail(KELP_MSG_BAD_BODY);
            return;
        }
    }
    std::unique_ptr<AsnType> response;
    if (registration.rspCreator != nullptr) {
        response.reset(registration.rspCreator());
        if (response == nullptr) {
            LogProcess::Error(
                KELP_MSG_BAD_ANSWER,
                "[task] no response object for command " + std::to_string(msg.cmdCode), kWhere);
            reply.Fail(KELP_MSG_BAD_ANSWER);
            return;
        }
    }
    registration.handler(request.get(), response.get(), static_cast<KelpGnlTask*>(&task));
    reply.Succeed(response.get());
}

}  // namespace

void ExecuteCommand(Core& core, KelpTask& task, message::MsgPtr msg,
                    const KelpTaskRegister& registration, bool ask_hook) {
    const message::CurrentMessageScope current(msg.get());
    Reply reply(core, *msg);
    try {
        if (ask_hook && !message::PreWorkLetsThrough(msg.get())) {
            reply.Fail(KELP_MSG_REJECTED);
            return;
        }
        RunHandler(task, *msg, registration, reply);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::exception& failure) {
        LogThrown(HandlerOf(*msg), (std::string(": ") + failure.what()).c_str());
    } catch (...) {
        LogThrown(HandlerOf(*msg), "");
    }
}

void RunTask(Core& core, KelpTask& task, message::MsgPtr msg, long timer) {
    const std::string name = std::string("task ") + task.GetTaskName();
    if (timer != 0) {
        Guarded(name, [&] { task.KelpTaskTimeInterval(timer); });
        return;
    }
    if (msg == nullptr) {
        return;
    }
    const message::CurrentMessageScope current(msg.get());
    const bool is_request = (msg->flags & KELP_MSG_REPLY) == 0;
    bool let_through = true;
    Guarded("the pre-work hook",
            [&] { let_through = !is_request || message::PreWorkLetsThrough(msg.get()); });
    if (!let_through) {
        core.Refuse(*msg, KELP_MSG_REJECTED);
        return;
    }
    Guarded(name, [&] { task.KelpTaskMessage(msg.release()); });
}

}  // namespace kelp::task
