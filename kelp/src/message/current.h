// The message that a thread is processing, and the hook that sees it first.
#pragma once

#include "kelp/message.h"

namespace kelp::message {

/// The message the calling thread is processing, or null.
const CmdMSG* CurrentMessage() noexcept;

/// `msg` is about to be freed: the thread processes it no longer.
void ForgetCurrent(const CmdMSG* msg) noexcept;

/// Names `msg` as the message that the thread processes while the scope lasts.
class CurrentMessageScope {
  public:
    explicit CurrentMessageScope(const CmdMSG* msg) noexcept;
    ~CurrentMessageScope();
    CurrentMessageScope(const CurrentMessageScope&) = delete;
    CurrentMessageScope& operator=(const CurrentMessageScope&) = delete;

  private:
    const CmdMSG* outer_;
};

/// Asks the pre-work hook about a message; true where none is installed.
bool PreWorkLetsThrough(CmdMSG* msg);

}  // namespace kelp::message
