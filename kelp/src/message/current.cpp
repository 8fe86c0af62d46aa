#include "message/current.h"

#include <atomic>

namespace kelp::message {
namespace {

thread_local const CmdMSG* t_current = nullptr;
constinit std::atomic<int (*)(CmdMSG*)> g_pre_work{nullptr};

}  // namespace

const CmdMSG* CurrentMessage() noexcept {
    return t_current;
}

void ForgetCurrent(const CmdMSG* msg) noexcept {
    if (t_current == msg) {
        t_current = nullptr;
    }
}

CurrentMessageScope::CurrentMessageScope(const CmdMSG* msg) noexcept : outer_(t_current) {
    t_current = msg;
}

CurrentMessageScope::~CurrentMessageScope() {
    t_current = outer_;
}

bool PreWorkLetsThrough(CmdMSG* msg) {
    const auto pre_work = g_pre_work.load(std::memory_order_acquire);
    return pre_work == nullptr || pre_work(msg) != 0;
}

}  // namespace kelp::message

int SetPreWorkTaskMsgFunc(int (*preWork)(CmdMSG* msg)) noexcept {
    kelp::message::g_pre_work.store(preWork, std::memory_order_release);
    return 0;
}
